#pragma once

#include "document/ToviNodeArray.h"

#include <QList>
#include <QString>

#include <memory>

// One node of the classification tree. The document itself is the root node. A node owns
// its children; its indexes are the photo indexes that belong to it alone.
class ToviNode {
public:
    static const QString kUnfilledTitle;  // "【未記入】": the node of a missing value

    ToviNode() = default;
    explicit ToviNode(const QString& title) : title(title) {}
    // Copies the shape of the tree (titles and valid flags), not the photo indexes.
    ToviNode(const ToviNode& other);
    const ToviNode& operator=(const ToviNode& other);
    virtual ~ToviNode();

    virtual std::unique_ptr<ToviNode> Clone() const;
    // Deletes every child (depth first) and empties the indexes; the title stays.
    virtual void RemoveAllItems();

    void Title(const QString& text) { title = text; }
    const QString& Title() const { return title; }
    void Valid(bool flag) { valid = flag; }
    bool IsValid() const { return valid; }

    ToviNode* Parent() const { return parent; }
    // Sets the parent and returns the previous one.
    ToviNode* Parent(ToviNode* newParent);
    ToviNodeArray& Items() { return children; }
    const ToviNodeArray& Items() const { return children; }

    // Adopts child: before a "【未記入】" child when there is one, else at the end. Returns
    // its position.
    int Add(std::unique_ptr<ToviNode> child);
    void AddIndex(int photoIndex) { indexes.append(photoIndex); }
    ToviNode* GetNode(int position);
    int GetChildNodeCount() const { return static_cast<int>(children.size()); }
    int GetImageCount() const { return static_cast<int>(indexes.size()); }
    const QList<int>& Indexes() const { return indexes; }
    bool HasData(int photoIndex) const { return indexes.contains(photoIndex); }
    // Every node beneath, at any depth.
    unsigned long DescendantCount() const;
    // Appends this node's indexes, then each child's, depth first; true when out isn't empty.
    bool GetAllUnder(QList<int>& out) const;
    // The titles from the root down, each followed by separator (empty titles left out).
    QString GetFullTitlePath(const QString& separator) const;
    // The number of ancestors: 0 on the root.
    int Level() const;

private:
    ToviNode* parent = nullptr;
    ToviNodeArray children;
    bool valid = false;
    QString title;
    QList<int> indexes;
};

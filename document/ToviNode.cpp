#include "document/ToviNode.h"

#include "platform/ToviCheck.h"

const QString ToviNode::kUnfilledTitle = QStringLiteral("【未記入】");

ToviNode::ToviNode(const ToviNode& other) {
    *this = other;
}

const ToviNode& ToviNode::operator=(const ToviNode& other) {
    if (this == &other) {
        return *this;
    }
    valid = other.valid;
    title = other.title;
    parent = nullptr;
    RemoveAllItems();
    children.reserve(other.children.size());
    for (const ToviNode* child : other.children) {
        std::unique_ptr<ToviNode> copy = child->Clone();
        copy->parent = this;
        children.append(std::move(copy));
    }
    return *this;
}

ToviNode::~ToviNode() = default;

std::unique_ptr<ToviNode> ToviNode::Clone() const {
    return std::make_unique<ToviNode>(*this);
}

void ToviNode::RemoveAllItems() {
    for (ToviNode* child : children) {
        child->RemoveAllItems();
    }
    children.clear();
    indexes.clear();
}

ToviNode* ToviNode::Parent(ToviNode* newParent) {
    ToviNode* previous = parent;
    parent = newParent;
    return previous;
}

int ToviNode::Add(std::unique_ptr<ToviNode> child) {
    child->parent = this;
    for (qsizetype i = 0; i < children.size(); ++i) {
        if (children[i]->title == kUnfilledTitle) {
            children.insert(i, std::move(child));
            return static_cast<int>(i);
        }
    }
    children.append(std::move(child));
    return static_cast<int>(children.size() - 1);
}

ToviNode* ToviNode::GetNode(int position) {
    ToviCheckIndex(position, children.size(), "ToviNode::GetNode");
    return children[position];
}

unsigned long ToviNode::DescendantCount() const {
    unsigned long count = 0;
    QList<const ToviNode*> pending{this};
    while (!pending.isEmpty()) {
        const ToviNode* node = pending.takeLast();
        count += static_cast<unsigned long>(node->children.size());
        for (const ToviNode* child : node->children) {
            pending.append(child);
        }
    }
    return count;
}

bool ToviNode::GetAllUnder(QList<int>& out) const {
    out.append(indexes);
    for (const ToviNode* child : children) {
        child->GetAllUnder(out);
    }
    return !out.isEmpty();
}

QString ToviNode::GetFullTitlePath(const QString& separator) const {
    QString path;
    for (const ToviNode* node = this; node; node = node->parent) {
        if (!node->title.isEmpty()) {
            path.prepend(node->title + separator);
        }
    }
    return path;
}

int ToviNode::Level() const {
    int level = 0;
    for (const ToviNode* node = parent; node; node = node->parent) {
        ++level;
    }
    return level;
}

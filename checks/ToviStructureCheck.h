#pragma once

#include "checks/ToviDeliveryCheck.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

class DoxDocument;
class DoxIterator;
class ToviItemDef;

// The elements of PHOTO.XML against the element tree of the delivery's generation, as the
// item definitions describe it: elements out of order, a single element written twice, a
// required element missing, and elements the generation does not define. PHOTO.XML is read a
// second time, streamed, one 写真情報 at a time as the photographs are checked, so that the
// file is never held whole; findings inside a 写真情報 go to its photograph, those outside
// it, or inside one the load left out, are about no photograph. A missing element of data
// count "0" is left to ToviLoadFaultCheck, which reports the photograph it cost.
class ToviStructureCheck : public ToviDeliveryCheck {
public:
    ToviStructureCheck();
    ~ToviStructureCheck() override;

    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;
    void Finish(ToviCheckContext& context, ToviFindingSink& sink) override;

    // Findings kept for the end of the run (those about no photograph), and the findings of
    // one element of the file; past either, one finding counts the rest.
    static constexpr int kHeldFindings = 1000;
    static constexpr int kFindingsPerElement = 20;

private:
    // One element of the generation's tree.
    struct Node {
        QByteArray tag;  // UTF-8, as the cursor compares tags
        QString title;
        int count = 0;  // Definition::DataCount
        std::vector<int> children;
    };
    // Where the findings of the element being checked go, and how many it had.
    struct Target {
        int index = -1;  // photograph index; -1: held for Finish
        ToviFindingSink* sink = nullptr;
        int count = 0;
        int suppressed = 0;
        const char* firstSuppressed = nullptr;
        QString where;  // put before the messages of a 写真情報 that has no photograph
    };
    struct Level;

    void BuildTree(const ToviItemDef& def);
    // Reads the next child of the root and checks it; false at the end of the file.
    bool StepTopLevel(ToviCheckContext& context, ToviFindingSink& sink);
    // Checks the element the cursor stands on against node, and the elements beneath it; the
    // cursor ends where it began.
    void CheckElement(int node, Target& target);
    // The node the element under the cursor stands for among the level's children, with
    // what is wrong about its place; -1 for an element the level does not define.
    int Match(Level& level, Target& target);
    // Required children of the level that never occurred.
    void EndLevel(const Level& level, Target& target);
    void Report(Target& target, const char* code, const QString& item, const QString& message);
    // The finding counting what Report left out for this element, if any.
    void Flush(Target& target);
    void Pass(Target& target, ToviCheckFinding finding);
    // The photograph index of the 写真情報 at ordinal (1-based), -1 for none.
    int IndexOf(const ToviCheckContext& context, int ordinal) const;
    void Close();

    std::vector<Node> nodes;  // 0 is the root element
    int photoNode = -1;       // 写真情報
    int freeNode = -1;        // ソフトメーカ用TAG: its content is the maker's own
    QString section;          // the generation, for the messages
    int severity = 0;         // ToviCheckFinding::Severity

    std::unique_ptr<DoxDocument> xml;
    std::unique_ptr<DoxIterator> cursor;
    std::unique_ptr<Level> top;  // the root's children
    bool started = false;        // the cursor stands on a child of the root
    bool ended = true;           // no more children of the root
    int ordinal = 0;             // 写真情報 elements met
    int lastIndex = -1;          // the last photograph whose 写真情報 was checked

    std::vector<ToviCheckFinding> held;
    int heldDropped = 0;
    const char* firstHeldDropped = nullptr;
};

#include "checks/ToviStructureCheck.h"

#include "checks/ToviCheckContext.h"
#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "platform/DoxDocument.h"
#include "platform/MibFile.h"

#include <QFileInfo>

#include <algorithm>
#include <iterator>

namespace {

const char kOrder[] = "structure.order";
const char kMultiplicity[] = "structure.multiplicity";
const char kUnknown[] = "structure.unknown";
const char kUnread[] = "structure.unread";
const char kUnreadable[] = "structure.unreadable";

// Sections of the item definitions whose element tree is copied from the DTD text itself:
// MLIT PHOTO05.DTD, of which two public copies agree element for element (one of them
// following the appendix of the R5.3 edition of デジタル写真管理情報基準). The other sections
// are reasoned reconstructions, so what they find is a warning, not an error.
const char* const kVerifiedSections[] = {"国交省-20"};

// The element whose content is free for the maker of the writing program (any elements).
const char kFreeElement[] = "ソフトメーカ用TAG";

// Tag names from the file are cut to this many characters in the messages.
constexpr qsizetype kLongestName = 64;

bool AtMostOnce(int count) {
    return count == Definition::CountZero || count == Definition::CountOne ||
           count == Definition::CountZeroOrOne;
}

// Required here; a missing element of data count "0" is the load's to report.
bool Required(int count) {
    return count == Definition::CountOne || count == Definition::CountOneOrMore;
}

}  // namespace

// The children of one element as they are met: the position reached in the tree's list, how
// often the element there has occurred in a row, and which positions have occurred at all (a
// level of more than 64 children, which no generation has, leaves the rest unchecked for
// absence).
struct ToviStructureCheck::Level {
    int node = 0;
    int pos = -1;
    int seen = 0;
    quint64 met = 0;
    void Meet(int j) {
        if (j < 64) {
            met |= quint64(1) << j;
        }
    }
    bool Met(int j) const { return j >= 64 || (met >> j & 1) != 0; }
};

ToviStructureCheck::ToviStructureCheck() = default;
ToviStructureCheck::~ToviStructureCheck() = default;

QList<const char*> ToviStructureCheck::Codes() const {
    return {kOrder, kMultiplicity, kUnknown, kUnread, kUnreadable};
}

void ToviStructureCheck::BuildTree(const ToviItemDef& def) {
    nodes.assign(
        1,
        Node{
            QByteArrayLiteral("photodata"), QStringLiteral("photodata"), Definition::CountOne, {}});
    photoNode = -1;
    freeNode = -1;
    // The list is the tree in document order: Child opens a level under the element, Parent
    // is the last element of its level.
    std::vector<int> open{0};
    for (int i = 0; i < def.GetCount(); ++i) {
        const Definition& d = def.GetDef(i);
        const int node = static_cast<int>(nodes.size());
        nodes.push_back(Node{d.titleUtf8, d.title, d.count, {}});
        nodes[static_cast<size_t>(open.back())].children.push_back(node);
        if (photoNode < 0 && d.readType == Definition::ReadPhotoItem && open.size() == 1) {
            photoNode = node;
        }
        if (d.title == QLatin1String(kFreeElement)) {
            freeNode = node;
        }
        if (d.operation == Definition::StepChild) {
            open.push_back(node);
        } else if (d.operation == Definition::StepParent && open.size() > 1) {
            open.pop_back();
        }
    }
}

void ToviStructureCheck::Close() {
    cursor.reset();
    xml.reset();
    top.reset();
    ended = true;
}

void ToviStructureCheck::Begin(ToviCheckContext& context) {
    Close();
    held.clear();
    heldDropped = 0;
    firstHeldDropped = nullptr;
    started = false;
    ordinal = 0;
    lastIndex = -1;
    const ToviItemDef* def = context.Document().GetItemDef();
    if (!def || def->IsEmpty()) {
        return;
    }
    BuildTree(*def);
    section = def->NewType();
    const bool verified =
        std::any_of(std::begin(kVerifiedSections), std::end(kVerifiedSections),
                    [&](const char* name) { return section == QString::fromUtf8(name); });
    severity = verified ? ToviCheckFinding::Error : ToviCheckFinding::Warning;

    const QString path = MibResolveCase(context.PhotoFolder(), QStringLiteral("PHOTO.XML"));
    xml = std::make_unique<DoxDocument>();
    cursor = std::make_unique<DoxIterator>(xml.get());
    // Only an ordinary file is opened: what stands there now may not be what was loaded.
    if (!QFileInfo(path).isFile() || !xml->Initiate() || !xml->LoadStreamed(path) ||
        !cursor->Root()) {
        Close();
        ToviCheckFinding finding;
        finding.code = kUnreadable;
        finding.severity = ToviCheckFinding::Warning;
        finding.file = QStringLiteral("PHOTO.XML");
        finding.message = QStringLiteral(
            "PHOTO.XML をもう一度読めないため、要素の順序・数・名前を確かめていません");
        held.push_back(std::move(finding));
        return;
    }
    top = std::make_unique<Level>();
    ended = false;
}

int ToviStructureCheck::IndexOf(const ToviCheckContext& context, int ordinal) const {
    const ToviData::LoadFaults& faults = context.Document().GetLoadFaults();
    // A document the walker did not fill (made in memory): photographs in file order.
    const int index = faults.photoBlocks == 0 ? ordinal - 1 : faults.IndexOfOrdinal(ordinal);
    return index < context.PhotoCount() ? index : -1;
}

void ToviStructureCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    while (lastIndex < index && StepTopLevel(context, sink)) {
    }
}

void ToviStructureCheck::Finish(ToviCheckContext& context, ToviFindingSink& sink) {
    while (StepTopLevel(context, sink)) {
    }
    const ToviData::LoadFaults& faults = context.Document().GetLoadFaults();
    if (faults.photoBlocks > 0 && ordinal > faults.photoBlocks) {
        ToviCheckFinding finding;
        finding.code = kUnread;
        finding.severity = ToviCheckFinding::Error;
        finding.item = nodes[static_cast<size_t>(photoNode)].title;
        finding.message = QStringLiteral(
                              "%1番目から後の写真情報 %2 件は、その前にある要素のため読み込まれて"
                              "いません")
                              .arg(faults.photoBlocks + 1)
                              .arg(ordinal - faults.photoBlocks);
        sink.Add(std::move(finding));
    }
    for (ToviCheckFinding& finding : held) {
        sink.Add(std::move(finding));
    }
    held.clear();
    if (heldDropped > 0) {
        ToviCheckFinding finding;
        finding.code = firstHeldDropped;
        finding.severity = static_cast<ToviCheckFinding::Severity>(severity);
        finding.message =
            QStringLiteral("写真に結び付かない要素の構成の問題が、ほかに %1 件あります")
                .arg(heldDropped);
        sink.Add(std::move(finding));
    }
    held.shrink_to_fit();
}

bool ToviStructureCheck::StepTopLevel(ToviCheckContext& context, ToviFindingSink& sink) {
    if (ended) {
        return false;
    }
    const bool moved = started ? cursor->NextSibling() : cursor->Child();
    started = true;
    Target target;
    if (!moved) {
        EndLevel(*top, target);
        Flush(target);
        Close();
        return false;
    }
    if (photoNode >= 0 && cursor->IsTag(nodes[static_cast<size_t>(photoNode)].tag)) {
        target.index = IndexOf(context, ++ordinal);
        if (target.index >= 0) {
            target.sink = &sink;
        } else {
            target.where =
                QStringLiteral("%1番目の写真情報（読み込まれていない写真）：").arg(ordinal);
        }
    }
    const int node = Match(*top, target);
    if (node >= 0) {
        CheckElement(node, target);
    }
    Flush(target);
    if (target.index >= 0) {
        lastIndex = target.index;
    }
    return true;
}

int ToviStructureCheck::Match(Level& level, Target& target) {
    const Node& parent = nodes[static_cast<size_t>(level.node)];
    const std::vector<int>& children = parent.children;
    const int size = static_cast<int>(children.size());
    for (int j = std::max(level.pos, 0); j < size; ++j) {
        const Node& child = nodes[static_cast<size_t>(children[static_cast<size_t>(j)])];
        if (!cursor->IsTag(child.tag)) {
            continue;
        }
        if (j == level.pos) {
            // Reported once for a run, however long.
            if (++level.seen == 2 && AtMostOnce(child.count)) {
                Report(target, kMultiplicity, child.title,
                       QStringLiteral("「%1」の中に要素「%2」が2つ以上あります（1つだけ置きます）")
                           .arg(parent.title, child.title));
            }
        } else {
            level.pos = j;
            level.seen = 1;
            level.Meet(j);
        }
        return children[static_cast<size_t>(j)];
    }
    for (int j = 0; j < level.pos; ++j) {
        const Node& child = nodes[static_cast<size_t>(children[static_cast<size_t>(j)])];
        if (cursor->IsTag(child.tag)) {
            level.Meet(j);
            const QString& after =
                nodes[static_cast<size_t>(children[static_cast<size_t>(level.pos)])].title;
            Report(target, kOrder, child.title,
                   QStringLiteral("「%1」の中で、要素「%2」が「%3」の後にあります（「%3」より前に"
                                  "置きます）")
                       .arg(parent.title, child.title, after));
            return children[static_cast<size_t>(j)];
        }
    }
    const QString name = cursor->GetTagName().left(kLongestName);
    Report(target, kUnknown, name,
           QStringLiteral("「%1」の中の要素「%2」は、この基準（%3）に定義されていません")
               .arg(parent.title, name, section));
    return -1;
}

void ToviStructureCheck::EndLevel(const Level& level, Target& target) {
    const Node& parent = nodes[static_cast<size_t>(level.node)];
    const int size = static_cast<int>(parent.children.size());
    for (int k = 0; k < size; ++k) {
        const Node& child = nodes[static_cast<size_t>(parent.children[static_cast<size_t>(k)])];
        if (!level.Met(k) && Required(child.count)) {
            Report(target, kMultiplicity, child.title,
                   QStringLiteral("「%1」の中に必須の要素「%2」がありません")
                       .arg(parent.title, child.title));
        }
    }
}

void ToviStructureCheck::CheckElement(int node, Target& target) {
    const Node& element = nodes[static_cast<size_t>(node)];
    if (node == freeNode) {
        return;
    }
    Level level;
    level.node = node;
    if (!cursor->Child()) {
        EndLevel(level, target);
        return;
    }
    // Only elements of the tree are entered, so that the walk goes no deeper than the tree
    // however deep the file nests.
    do {
        const int child = element.children.empty() ? -1 : Match(level, target);
        if (element.children.empty()) {
            const QString name = cursor->GetTagName().left(kLongestName);
            Report(target, kUnknown, name,
                   QStringLiteral("値の要素「%1」の中に要素「%2」があります")
                       .arg(element.title, name));
        } else if (child >= 0) {
            CheckElement(child, target);
        }
    } while (cursor->NextSibling());
    cursor->Parent();
    EndLevel(level, target);
}

void ToviStructureCheck::Report(Target& target, const char* code, const QString& item,
                                const QString& message) {
    if (target.count >= kFindingsPerElement) {
        if (target.suppressed++ == 0) {
            target.firstSuppressed = code;
        }
        return;
    }
    ++target.count;
    ToviCheckFinding finding;
    finding.code = code;
    finding.severity = static_cast<ToviCheckFinding::Severity>(severity);
    finding.index = target.index;
    finding.item = item;
    finding.message = target.where + message;
    Pass(target, std::move(finding));
}

void ToviStructureCheck::Flush(Target& target) {
    if (target.suppressed == 0) {
        return;
    }
    ToviCheckFinding finding;
    finding.code = target.firstSuppressed;
    finding.severity = static_cast<ToviCheckFinding::Severity>(severity);
    finding.index = target.index;
    finding.message =
        target.where + QStringLiteral("同じ要素の中に、要素の構成の問題がほかに %1 件あります")
                           .arg(target.suppressed);
    target.suppressed = 0;
    Pass(target, std::move(finding));
}

void ToviStructureCheck::Pass(Target& target, ToviCheckFinding finding) {
    if (target.sink) {
        target.sink->Add(std::move(finding));
    } else if (static_cast<int>(held.size()) < kHeldFindings) {
        held.push_back(std::move(finding));
    } else if (heldDropped++ == 0) {
        firstHeldDropped = finding.code;
    }
}

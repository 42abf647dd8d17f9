#include "loading/ToviEnouDataFactory.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "platform/DoxDocument.h"
#include "platform/MibFile.h"

#include <QFileInfo>

#include <cstring>

namespace {

// From a Child definition to the Parent that closes its level, counting nested levels.
int SkipBalancedBlock(const ToviItemDef* def, int i) {
    int depth = 0;
    for (;; ++i) {
        const Definition& d = def->GetDef(i);  // past the end: unbalanced READITEM.XML
        if (d.operation == Definition::StepChild) {
            ++depth;
        } else if (d.operation == Definition::StepParent) {
            --depth;
        }
        if (depth <= 0) {
            return i;
        }
    }
}

// From a definition to the next Parent, without counting levels (a repeating block holds
// no further level).
int SkipToParent(const ToviItemDef* def, int i) {
    while (def->GetDef(i).operation != Definition::StepParent) {
        ++i;
    }
    return i;
}

bool IsRepeating(const Definition& d) {
    return d.count == Definition::CountZeroOrMore || d.count == Definition::CountOneOrMore;
}

bool IsOptional(const Definition& d) {
    return d.count == Definition::CountZeroOrOne || d.count == Definition::CountZeroOrMore;
}

}  // namespace

QString ToviEnouDataFactory::GetErrorTypeText(const ToviData& document) const {
    const QString& folder = SrcPath();
    switch (document.GetErrorType()) {
        case ReadErrNoItemFile:
            return QStringLiteral(
                       "項目定義ファイル READITEM.XML がプログラムのフォルダ %1 にありません")
                .arg(document.GetItemDef()->ProgramPath());
        case ReadErrUnknownPhotoXml:
            if (!QFileInfo(folder).isDir()) {
                return QStringLiteral("フォルダ %1 がありません").arg(folder);
            }
            if (!MibIsFileExist(MibResolveCase(folder, QStringLiteral("PHOTO.XML")))) {
                return QStringLiteral("フォルダ %1 に PHOTO.XML がありません").arg(folder);
            }
            return QStringLiteral(
                       "PHOTO.XML を開けないか、その文書型宣言 (DOCTYPE) が発注者区分 %1 の"
                       "基準のどれにも当たりません")
                .arg(static_cast<int>(XmlType()));
        case ReadErrDefinition:
            return QStringLiteral("項目定義ファイル READITEM.XML を読み込めません");
        default:
            return QString();
    }
}

std::unique_ptr<ToviData> ToviEnouDataFactory::OnNewDocumentInstance(
    ToviHostDocument* hostDocument) {
    return std::make_unique<ToviData>(hostDocument, SrcPath(), XmlType());
}

bool ToviEnouDataFactory::OnLoad(ToviLoadCallback callback, void* arg) {
    loadError.clear();
    const QString xmlPath = MibResolveCase(SrcPath(), QStringLiteral("PHOTO.XML"));
    ToviData* document = GetDocument();
    if (!document) {
        loadError = QStringLiteral("文書が作られていません");
        return false;
    }
    document->Title(xmlPath);
    ToviPhotoArray* photos = document->GetPhotoDataArray();
    // Create always makes a new document, so these are expected to be empty already.
    photos->clear();
    document->GetMngItemPhoto()->clear();

    if (!MibIsFileExist(xmlPath)) {
        loadError = QStringLiteral("%1 がありません").arg(xmlPath);
        return false;
    }
    const qint64 fileSize = QFileInfo(xmlPath).size();
    if (fileSize > kLargestFile) {
        loadError = QStringLiteral("PHOTO.XML が大きすぎるため読み込みません (%1 MB、上限 1024 MB)")
                        .arg(fileSize >> 20);
        return false;
    }
    // What the document may take: 8 bytes for each byte of the file and 8 MB, which with
    // the slices being parsed (some 30 MB) and the program itself stays under 8 times the
    // file and 64 MB.
    budget = 8 * fileSize + (8 << 20);
    used = 0;
    refused = false;
    DoxDocument xml;
    QStringList errors;
    if (!xml.Initiate() || !xml.LoadStreamed(xmlPath, &errors)) {
        loadError =
            QStringLiteral("PHOTO.XML を読み込めません: %1").arg(errors.join(QLatin1Char(' ')));
        return false;
    }
    DoxIterator it(&xml);
    it.Root();
    lastValues.assign(static_cast<size_t>(document->GetItemDef()->GetCount()), LastValue());
    source = &xml;
    faults = ToviData::LoadFaults();
    const bool walked = Walk(document->GetItemDef(), it, callback, arg);
    source = nullptr;
    lastValues = std::vector<LastValue>();
    scratch = QByteArray();
    if (refused) {
        loadError = QStringLiteral(
                        "PHOTO.XML の写真 %1枚目で、必要なメモリがファイルの大きさに見合う量 "
                        "(%2 MB) を超えたため読み込みを中止しました")
                        .arg(photos->size())
                        .arg(budget >> 20);
        return false;
    }
    if (!walked) {
        return false;
    }
    // The file is read as the walk goes: XML broken past where the walk stopped shows here.
    if (!xml.FinishStream(&errors)) {
        loadError =
            QStringLiteral("PHOTO.XML を読み込めません: %1").arg(errors.join(QLatin1Char(' ')));
        return false;
    }
    document->SetLoadFaults(faults);
    if (photos->isEmpty()) {
        document->SetErrorType(ReadErrNoPhotos);
    }
    return true;
}

QString ToviEnouDataFactory::ValueOf(int i, const DoxIterator& it) {
    const QByteArrayView utf8 = it.TextUtf8(scratch);
    if (utf8.isEmpty()) {
        return QString();
    }
    // The file is decoded ahead of the walk, so a value holding a replacement is always
    // counted by the time it is read.
    if (source->InvalidSequenceCount() > 0 && utf8.contains(QByteArrayView("\xEF\xBF\xBD"))) {
        ++faults.undecodableValues;
    }
    if (utf8.data() == scratch.constData()) {
        used += 2 * utf8.size() + 48;
        return QString::fromUtf8(utf8);  // gathered text has no lasting place to compare with
    }
    LastValue& last = lastValues[static_cast<size_t>(i)];
    if (last.generation == it.Generation() && last.size == utf8.size() &&
        std::memcmp(last.data, utf8.data(), static_cast<size_t>(utf8.size())) == 0) {
        return last.text;
    }
    // A new text: its UTF-16 form (at most two bytes for each byte of UTF-8), header and
    // allocation.
    used += 2 * utf8.size() + 48;
    last.generation = it.Generation();
    last.data = utf8.data();
    last.size = utf8.size();
    last.text = QString::fromUtf8(utf8);
    return last.text;
}

QString ToviEnouDataFactory::SerialOf(const ToviItemArray& items, int serialDef) {
    for (const ToviItem& item : items) {
        if (item.GetDefIndex() == serialDef) {
            return item.Value();
        }
    }
    return QString();
}

void ToviEnouDataFactory::RecordDropped(int ordinal, int index, const QString& serial,
                                        const QString& missing, const QString& block, int count) {
    if (block.isEmpty()) {
        faults.droppedPhotoCount += count;
        faults.droppedOrdinals.push_back(ordinal);  // the walk goes forward: stays ascending
        used += static_cast<qint64>(sizeof(int));
    } else {
        faults.droppedBlockCount += count;
    }
    if (faults.dropped.size() < ToviData::LoadFaults::kDroppedKept) {
        faults.dropped.append({ordinal, index, serial, missing, block, count});
        // The entry and its list place; the texts are shared with the values read.
        used += static_cast<qint64>(sizeof(ToviData::LoadFaults::Dropped) + 48);
    }
}

void ToviEnouDataFactory::StoreElement(const ToviItemDef* def, int i, ToviItemArray& items,
                                       DoxIterator& it) {
    const Definition& d = def->GetDef(i);
    if (d.grade == Definition::GradeNone) {
        return;  // passed by the caller's move, not stored
    }
    if (!IsRepeating(d)) {
        items.append(ToviItem(i, ValueOf(i, it)));
        return;
    }
    // A run of the same tag; the cursor ends on the first element past it (or on the last of
    // the run when nothing follows).
    for (;;) {
        items.append(ToviItem(i, ValueOf(i, it)));
        if (!it.NextSibling() || !it.IsTag(d.titleUtf8)) {
            break;
        }
    }
}

// The top-level walk: management items before and after the photograph block. Its
// handling of an absent optional element moves the cursor all the same, taking the next
// element with it; the block walkers are the careful ones. Both are intended.
bool ToviEnouDataFactory::Walk(ToviItemDef* def, DoxIterator& it, ToviLoadCallback callback,
                               void* arg) {
    ToviData* document = GetDocument();
    ToviItemArray& mngItems = *document->GetMngItemPhoto();
    bool matched = false;
    int skipped = 0;
    int i = 0;
    while (i < def->GetCount()) {
        const Definition& d = def->GetDef(i);
        bool move = true;
        if (it.IsTag(d.titleUtf8)) {
            matched = true;
            if (d.readType == Definition::ReadPhotoItem) {
                // Photographs short of an element of data count "0" are left out and listed
                // in the load faults by the block walker; the others load all the same.
                static_cast<void>(
                    LoadPhotoItem(def, document->GetPhotoDataArray(), it, i, callback, arg));
                if (refused) {
                    return false;
                }
                ++i;
                continue;
            }
            if (d.blockPlural) {
                blockDrops = 0;
                blockMissing.clear();
                if (!LoadBlockPuralData(def, mngItems, it, i, callback, arg)) {
                    // The occurrences short of an element are left out; the others stay.
                    faults.incompleteManagement = true;
                    RecordDropped(0, -1, QString(), blockMissing, d.title, blockDrops);
                }
                ++i;
                continue;
            }
            StoreElement(def, i, mngItems, it);
        } else if (!matched) {
            // Down from the root to the first element the list names.
            if (!it.Next()) {
                loadError = QStringLiteral("PHOTO.XML に読み込める要素がありません");
                return false;
            }
            continue;
        } else if (d.readType == Definition::ReadPhotoItem &&
                   d.operation == Definition::StepChild) {
            // No photograph where the photographs stand: the definitions of the photograph
            // block describe nothing at this level, so they are passed over, and the delivery
            // is one without photographs rather than one short of an element of them.
            i = SkipBalancedBlock(def, i);
            move = false;
        } else if (d.count == Definition::CountZero) {
            loadError = QStringLiteral("PHOTO.XML に必須の要素「%1」がありません").arg(d.title);
            return false;
        } else if (d.operation == Definition::StepChild) {
            if (IsOptional(d)) {
                i = SkipBalancedBlock(def, i);
            } else {
                ++skipped;  // its Parent later must not move the cursor
            }
            move = false;
        } else if (d.grade != Definition::GradeNone) {
            mngItems.append(ToviItem(i, QString()));
        }
        if (move) {
            if (d.operation == Definition::StepChild) {
                if (!it.Child()) {
                    // An empty group element: nothing beneath it to read. Stepping into it
                    // would leave the cursor a level too high for the rest of the file.
                    i = SkipBalancedBlock(def, i);
                    it.NextSibling();
                }
            } else {
                if (d.operation == Definition::StepParent) {
                    if (skipped > 0) {
                        --skipped;
                    } else {
                        it.Parent();
                    }
                }
                it.NextSibling();
            }
        }
        ++i;
    }
    return true;
}

bool ToviEnouDataFactory::LoadPhotoItem(ToviItemDef* def, ToviPhotoArray* photos, DoxIterator& it,
                                        int& index, ToviLoadCallback callback, void* arg) {
    int end = index + 1;
    while (end < def->GetCount() && def->GetDef(end).readType != Definition::ReadMngItem) {
        ++end;
    }
    const QByteArray& photoTag = def->GetDef(index).titleUtf8;
    ToviData* document = GetDocument();
    int photoCount = 0;
    bool siblingOk = true;
    bool allComplete = true;
    int i = index;
    const int serialDef = def->GetIndexFromTitle(QStringLiteral("シリアル番号"));
    ToviItemArray items;
    for (;;) {
        const DoxIterator::Place start = it.Position();
        const int ordinal = ++faults.photoBlocks;
        int skipped = 0;
        int depth = 0;
        QString missing;  // the first absent element of data count "0"
        // Occurrences of repeating blocks left out, and the first of their absent elements.
        int lostBlocks = 0;
        QString lostBlockMissing;
        QString lostBlock;
        i = index;
        items.clear();
        while (i < end) {
            const Definition& d = def->GetDef(i);
            const bool present = it.IsTag(d.titleUtf8);
            if (present && d.blockPlural) {
                int at = i;
                blockDrops = 0;
                blockMissing.clear();
                if (!LoadBlockPuralData(def, items, it, at, callback, arg)) {
                    if (lostBlocks == 0) {
                        lostBlockMissing = blockMissing;
                        lostBlock = d.title;
                    }
                    lostBlocks += blockDrops;
                }
                i = at + 1;
                continue;
            }
            // An absent element of data count "0" (the strict form) loses the photograph; it
            // is passed over as carefully as an optional one, so that the walk reaches the
            // end of this photograph and goes on with the next.
            if (!present && d.count == Definition::CountZero && missing.isEmpty()) {
                missing = d.title;
            }
            bool move = true;
            if (present) {
                StoreElement(def, i, items, it);
            } else if (d.count != Definition::CountZero && !IsOptional(d)) {
                if (d.operation == Definition::StepChild) {
                    ++skipped;
                    move = false;
                } else if (d.grade != Definition::GradeNone) {
                    items.append(ToviItem(i, QString()));
                }
            } else if (d.operation == Definition::StepChild) {
                i = SkipBalancedBlock(def, i);
                move = false;
            } else if (d.grade == Definition::GradeLinked) {
                items.append(ToviItem(i, QString()));
                move = false;
            } else if (d.grade != Definition::GradeNone) {
                items.append(ToviItem(i, QString()));
                move = d.operation == Definition::StepParent;
            }
            if (move) {
                if (d.operation == Definition::StepChild) {
                    if (it.Child()) {
                        ++depth;
                    } else {
                        // An empty group element (legal where all its children are
                        // optional): pass over its definitions and the element itself.
                        i = SkipBalancedBlock(def, i);
                        siblingOk = it.NextSibling();
                    }
                } else {
                    if (d.operation == Definition::StepParent) {
                        if (skipped == 0) {
                            --depth;
                            it.Parent();
                        } else {
                            --skipped;
                        }
                    }
                    siblingOk = it.NextSibling();
                }
            }
            ++i;
        }
        if (missing.isEmpty()) {
            photos->append(std::make_unique<ToviPhoto>(document, items));
            // The photograph, its place in the array (which grows by doubling), its item list
            // and the allocator's share of each.
            used +=
                static_cast<qint64>(sizeof(ToviPhoto) + 96 +
                                    sizeof(ToviItem) * static_cast<size_t>(items.capacity()) + 48);
            if (lostBlocks > 0) {
                RecordDropped(ordinal, static_cast<int>(photos->size()) - 1,
                              SerialOf(items, serialDef), lostBlockMissing, lostBlock, lostBlocks);
                allComplete = false;
            }
        } else {
            // Only this photograph is lost: the values it had are not kept (their texts were
            // counted as they were read and stay counted), the next 写真情報 comes next.
            RecordDropped(ordinal, -1, SerialOf(items, serialDef), missing, QString(), 1);
            allComplete = false;
        }
        if (used > budget) {
            refused = true;
            return false;
        }
        // Counted by 写真情報 element, left out or not, so that the progress keeps moving
        // through a file whose photographs are all short of an element.
        ++photoCount;
        if (photoCount % 50 == 0) {
            // The result is ignored: a load can't be cancelled.
            OnProgress(callback, QStringLiteral("写真データの読み込み　%1枚完了").arg(photoCount),
                       arg);
        }
        // Back to the level of the photograph element. A list with more Parents than
        // Childs would leave depth below 0; that must not loop.
        while (depth > 0) {
            it.Parent();
            siblingOk = it.NextSibling();
            --depth;
        }
        items.clear();
        if (!it.IsTag(photoTag) || !siblingOk) {
            break;
        }
        if (it.Position() == start) {
            break;  // a list that never moves the cursor would read the same photograph forever
        }
    }
    index = i - 1;
    return allComplete;
}

bool ToviEnouDataFactory::LoadBlockPuralData(ToviItemDef* def, ToviItemArray& items,
                                             DoxIterator& it, int& index, ToviLoadCallback, void*) {
    const int end = SkipToParent(def, index + 1) + 1;
    bool siblingOk = true;
    bool complete = true;
    int i = index;
    for (;;) {
        const DoxIterator::Place start = it.Position();
        const qsizetype mark = items.size();
        bool occurrenceComplete = true;
        i = index;
        while (i < end) {
            const Definition& d = def->GetDef(i);
            const bool present = it.IsTag(d.titleUtf8);
            if (!present && d.count == Definition::CountZero) {
                // This occurrence is lost; passed over as in the photograph block.
                if (occurrenceComplete && blockMissing.isEmpty()) {
                    blockMissing = d.title;
                }
                occurrenceComplete = false;
            }
            bool move = true;
            if (present) {
                StoreElement(def, i, items, it);
            } else if (d.count != Definition::CountZero && !IsOptional(d)) {
                if (d.operation == Definition::StepChild) {
                    move = false;
                } else if (d.grade != Definition::GradeNone) {
                    items.append(ToviItem(i, QString()));
                }
            } else if (d.operation == Definition::StepChild) {
                i = SkipToParent(def, i);
                move = false;
            } else if (d.grade == Definition::GradeLinked) {
                items.append(ToviItem(i, QString()));
                move = false;
            } else if (d.grade != Definition::GradeNone) {
                items.append(ToviItem(i, QString()));
                move = d.operation == Definition::StepParent;
            }
            if (move) {
                if (d.operation == Definition::StepChild) {
                    it.Child();
                } else {
                    if (d.operation == Definition::StepParent) {
                        it.Parent();
                    }
                    siblingOk = it.NextSibling();
                }
            }
            ++i;
        }
        if (!occurrenceComplete) {
            items.remove(mark, items.size() - mark);
            ++blockDrops;
            complete = false;
        }
        // The block ends when the element after it is reached, not when its own tag stops.
        const Definition& after = def->GetDef(i);  // a block at the very end: invalid list
        if (it.IsTag(after.titleUtf8) || !siblingOk) {
            break;
        }
        if (it.Position() == start) {
            break;  // an unknown element after the block: nothing more can be read here
        }
    }
    index = i - 1;
    return complete;
}

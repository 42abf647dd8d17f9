// The classification tree and the selection of ToviData.

#include "document/ToviData.h"

#include "document/ToviPhoto.h"
#include "extraction/ToviSortCondition.h"
#include "platform/ToviCheck.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

namespace {

// The child of parent titled text, made and added when there is none yet.
ToviNode* ChildTitled(ToviNode* parent, const QString& text) {
    for (ToviNode* child : parent->Items()) {
        if (child->Title() == text) {
            return child;
        }
    }
    return parent->GetNode(parent->Add(std::make_unique<ToviNode>(text)));
}

QList<int> LevelIndexes(const ToviItemDef& def, const QStringList& titles) {
    QList<int> levels;
    for (const QString& title : titles) {
        const int index = def.GetIndexFromTitle(title);
        if (index >= 0) {
            levels.append(index);  // levels this delivery doesn't define drop out
        }
    }
    return levels;
}

}  // namespace

void ToviData::BuildTreeNode(int treeType) {
    if (treeType == ToviPhotoCtrlVisualSetting::TreeKousyu ||
        treeType == ToviPhotoCtrlVisualSetting::TreeKousyuOnly) {
        BuildTreeNodeForKousyu(treeType);
    } else {
        BuildTreeNodeForSatsueikasyo();
    }
    // Node pointers died with the old tree: find the selected photograph again.
    selectedNode = nullptr;
    ToviNode* holder = selectedPhoto != -1 ? GetNode(selectedPhoto, this) : nullptr;
    selectedNode = holder ? holder : this;
    if (hostDocument) {
        RebuildCurrentArray(selectedNode);
    }
    UpdateHasComment();
}

void ToviData::BuildTreeNodeForKousyu(int treeType) {
    static const QStringList kWithClass{QStringLiteral("写真-大分類"), QStringLiteral("写真区分"),
                                        QStringLiteral("工種"), QStringLiteral("種別"),
                                        QStringLiteral("細別")};
    static const QStringList kWorkOnly{QStringLiteral("工種"), QStringLiteral("種別"),
                                       QStringLiteral("細別")};
    const QList<int> levels = LevelIndexes(
        itemDef, treeType == ToviPhotoCtrlVisualSetting::TreeKousyu ? kWithClass : kWorkOnly);
    RemoveAllItems();
    QStringList values;
    for (qsizetype k = 0; k < photoData.size(); ++k) {
        // The first value of each level the photograph has an item for: fewer entries than
        // levels when some are missing altogether.
        photoData[k]->GetTitleFromIndex(levels, values);
        const qsizetype n = values.size();
        ToviNode* node = nullptr;
        for (qsizetype j = 0; j < n; ++j) {
            QString text = values[j];
            if (text.isEmpty()) {
                bool laterValue = false;
                for (qsizetype m = j + 1; m < n && !laterValue; ++m) {
                    laterValue = !values[m].isEmpty();
                }
                if (!laterValue) {
                    // Missing values at the bottom of a path make no nodes.
                    (node ? node : this)->AddIndex(static_cast<int>(k));
                    break;
                }
                text = kUnfilledTitle;
            }
            node = ChildTitled(node ? node : this, text);
            if (j == n - 1) {
                node->AddIndex(static_cast<int>(k));
            }
        }
    }
}

void ToviData::BuildTreeNodeForSatsueikasyo() {
    const QList<int> levels = LevelIndexes(itemDef, {QStringLiteral("撮影箇所")});
    RemoveAllItems();
    QStringList values;
    for (qsizetype k = 0; k < photoData.size(); ++k) {
        // Several shooting places: the photograph stands under the first.
        photoData[k]->GetTitleFromIndex(levels, values);
        if (values.isEmpty()) {
            continue;
        }
        const QString& text = values.first().isEmpty() ? kUnfilledTitle : values.first();
        ChildTitled(this, text)->AddIndex(static_cast<int>(k));
    }
}

ToviNode* ToviData::GetNode(int photoIndex, ToviNode* from) {
    if (!from) {
        return nullptr;
    }
    if (from->HasData(photoIndex)) {
        return from;
    }
    for (ToviNode* child : from->Items()) {
        if (ToviNode* found = GetNode(photoIndex, child)) {
            return found;
        }
    }
    return nullptr;
}

void ToviData::RebuildCurrentArray(ToviNode* node) {
    QList<int> all;
    if (node) {
        node->GetAllUnder(all);
    }
    curPhotos.Assign(all);
    ExtractionProcess();
    if (sortCondition && sortCondition->IsExecSort()) {
        Sort();
    }
}

ToviNode* ToviData::SetSelected(ToviNode* node, bool force) {
    ToviNode* previous = selectedNode;
    if (node == selectedNode && !force) {
        return previous;
    }
    selectedNode = node;
    if (!hostDocument) {
        return previous;  // without views the current array stays as it was
    }
    RebuildCurrentArray(node);
    Broadcast(nullptr, HintSelectionChanged);
    UpdateHasComment();
    return previous;
}

void ToviData::SetSelected(int label) {
    selectedLabel = label;
    if (label < 0) {
        curPhotos.RemoveAll();
    } else {
        // A label shows every photograph carrying it: no node, no extraction.
        CollectionLabel(static_cast<unsigned long>(label), curPhotos);
        if (sortCondition && sortCondition->IsExecSort()) {
            Sort();
        }
    }
    Broadcast(nullptr, HintSelectionChanged);
    UpdateHasComment();
}

void ToviData::SetSelected() {
    ToviNode* node = selectedPhoto != -1 ? GetNode(selectedPhoto, this) : nullptr;
    if (node) {
        SetSelected(node, false);
        return;
    }
    SetSelected(this, false);
    PhotoSelectSetting(curPhotos.GetAt(0));  // an empty current array is a failure here
}

bool ToviData::PhotoSelectSetting(int index) {
    if (index < 0) {
        return false;
    }
    if (index == selectedPhoto) {
        return true;
    }
    if (ToviPhoto* previous = GetPhotoActualPhotoArray(selectedPhoto)) {
        previous->Select(false);
    }
    ToviCheckIndex(index, photoData.size(), "ToviData::PhotoSelectSetting");
    photoData[index]->Select(true);
    selectedPhoto = index;
    Broadcast(nullptr, HintPhotoSelected);
    return true;
}

ToviPhoto* ToviData::GetSelectedPhoto() const {
    return GetPhotoActualPhotoArray(selectedPhoto);
}

int ToviData::GetSelectCurIndex() const {
    return selectedPhoto == -1 ? -1 : curPhotos.Position(selectedPhoto);
}

void ToviData::GetIndexSelected(int& pos) const {
    if (curPhotos.IsEmpty()) {
        return;
    }
    pos = -1;
    for (int i = 0; i < curPhotos.GetSize(); ++i) {
        const ToviPhoto* photo = GetPhoto(i);
        if (photo && photo->IsSelected()) {
            pos = i;
            return;
        }
    }
}

#include "document/ToviData.h"

#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviSortCondition.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "platform/MibFile.h"
#include "platform/ToviCheck.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QSet>

#include <algorithm>

ToviData::ToviData(ToviHostDocument* hostDocument, const QString& path, PhotoXMLType type)
    : rootPath(path), pathResolver(path), hostDocument(hostDocument) {
    visualSetting.reset(OnCreateVisualSettings());
    sortCondition.reset(OnCreateSortCondition());
    labelManager = std::make_unique<ToviLabelManager>();
    itemManager = std::make_unique<ToviItemManager>();
    errorType = itemDef.Load(path, type);
    imageCheck = std::make_unique<ToviImageCheckCommon>();
}

ToviData::~ToviData() {
    imageCheck.reset();
    // The settings objects save themselves as they go, in this order.
    labelManager.reset();
    itemManager.reset();
    visualSetting.reset();
    sortCondition.reset();
}

ToviSortCondition* ToviData::OnCreateSortCondition() {
    return new ToviSortCondition();
}

int ToviData::LoadFaults::IndexOfOrdinal(int ordinal) const {
    if (ordinal < 1 || ordinal > photoBlocks) {
        return -1;
    }
    const auto below = std::lower_bound(droppedOrdinals.begin(), droppedOrdinals.end(), ordinal);
    if (below != droppedOrdinals.end() && *below == ordinal) {
        return -1;
    }
    return ordinal - 1 - static_cast<int>(below - droppedOrdinals.begin());
}

void ToviData::RootPath(const QString& path) {
    rootPath = MibNormalDir(path);
    pathResolver.SetRoot(rootPath);
}

void ToviData::MakePath() {
    for (ToviPhoto* photo : photoData) {
        photo->MakePath();
    }
}

ToviPhoto* ToviData::GetPhoto(int pos) const {
    if (pos < 0 || pos >= curPhotos.GetSize()) {
        return nullptr;
    }
    return GetPhotoActualPhotoArray(curPhotos.GetAt(pos));
}

ToviPhoto* ToviData::GetPhotoActualPhotoArray(int index) const {
    if (index < 0 || index >= photoData.size()) {
        return nullptr;
    }
    return photoData[index];
}

ToviPhoto* ToviData::PhotoAt(int index) const {
    ToviCheckIndex(index, photoData.size(), "ToviData::PhotoAt");
    return photoData[index];
}

int ToviData::GetPhotoIndex(int pos) const {
    if (curPhotos.IsEmpty()) {
        return -1;
    }
    return curPhotos.GetAt(pos);
}

int ToviData::GetIndexPhotoArray(int pos) const {
    if (pos < 0 || pos >= curPhotos.GetSize()) {
        return -1;
    }
    return curPhotos.GetAt(pos);
}

int ToviData::IsLabeled() const {
    for (const ToviPhoto* photo : photoData) {
        for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
            if (photo->IsLabelPasted(label)) {
                return 1;
            }
        }
    }
    return 0;
}

bool ToviData::GetPhotoItemValue(const QString& title, QStringList& values) {
    const int defIndex = itemDef.GetIndexFromTitle(title);
    if (defIndex < 0) {
        return false;
    }
    QSet<QString> seen(values.cbegin(), values.cend());
    bool metEmpty = false;
    QStringList photoValues;
    for (const ToviPhoto* photo : photoData) {
        photo->GetTitleFromIndex(defIndex, photoValues);
        for (const QString& value : photoValues) {
            if (value.isEmpty()) {
                metEmpty = true;
            } else if (!seen.contains(value)) {
                seen.insert(value);
                values.append(value);
            }
        }
    }
    return metEmpty;
}

void ToviData::UpdatePhotoInf(QWidget* sender) {
    Broadcast(sender, HintPhotoInfoChanged);
}

void ToviData::Broadcast(QWidget* sender, UpdateHint hint, QObject* object) const {
    if (hostDocument) {
        hostDocument->UpdateAllViews(sender, hint, object);
    }
}

void ToviPhotoArrayFactory::ClearAway(ToviPhotoArray& photos) {
    photos.clear();
}

const ToviPathTitles& ToviData::GetPathTitles(bool standAlone) const {
    std::optional<ToviPathTitles>& cached = pathTitles[standAlone ? 1 : 0];
    if (cached) {
        return *cached;
    }
    ToviPathTitles& titles = cached.emplace();
    const bool mlit = itemDef.GetXMLType() == PhotoXMLMlit;
    static const QStringList kRelativeMlit{QStringLiteral("参考図1"), QStringLiteral("参考図2"),
                                           QStringLiteral("参考図3"),
                                           QStringLiteral("参考図ファイル名")};
    static const QStringList kRelativeOther{QStringLiteral("参考図ファイル名")};
    static const QStringList kFullMlit{
        QStringLiteral("参考図ファイルパス1"), QStringLiteral("参考図ファイルパス2"),
        QStringLiteral("参考図ファイルパス3"), QStringLiteral("参考図ファイルパス")};
    static const QStringList kFullOther{QStringLiteral("参考図ファイルパス")};
    const QStringList& names =
        standAlone ? (mlit ? kRelativeMlit : kRelativeOther) : (mlit ? kFullMlit : kFullOther);
    for (const QString& name : names) {
        const int index = itemDef.GetIndexFromTitle(name);
        if (index >= 0) {
            titles.drawings.append(index);
        }
    }
    titles.photo = itemDef.GetIndexFromTitle(standAlone ? QStringLiteral("写真ファイル名")
                                                        : QStringLiteral("写真ファイルパス"));
    return titles;
}

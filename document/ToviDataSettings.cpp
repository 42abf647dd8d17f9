#include "document/ToviData.h"

#include "extraction/ToviSortCondition.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <iterator>

namespace {

// The facts of the image file offered to the information list, in the order offered, with
// whether a new kind of delivery shows them.
struct FixedItem {
    const char* title;
    bool shownByDefault;
};

constexpr FixedItem kFileItems[] = {
    {"ファイルサイズ", true}, {"幅×高さ", true},      {"総画素数", true},
    {"作成日時", false},      {"最終更新日時", true}, {"読み取り専用", false},
};

// "作者名" finds no Exif row by title (the look-up says "作成者"); it is offered all the same.
constexpr FixedItem kExifItems[] = {
    {"幅×高さ(Exif)", true},
    {"総画素数(Exif)", true},
    {"撮影日時", true},
    {"緯度", true},
    {"経度", true},
    {"高度", false},
    {"ファイル変更日時", false},
    {"ディジタルデータの作成日時", false},
    {"画像入力機器のメーカー名", true},
    {"画像入力機器のモデル名", true},
    {"使用ソフトウェア名", true},
    {"作者名", false},
    {"撮影著作権者/編集著作権者", false},
    {"Exifバージョン", false},
    {"露出時間", false},
    {"シャッタースピード", false},
    {"絞り値", false},
    {"露光補正値", false},
    {"レンズ最少F値", false},
    {"測光方式", false},
    {"フラッシュ", false},
    {"レンズの焦点距離", false},
    {"Fナンバー", false},
};

// The delivery items a new kind of delivery shows.
const QStringList& ItemsShownByDefault() {
    static const QStringList titles = {
        QStringLiteral("写真ファイル日本語名"), QStringLiteral("写真タイトル"),
        QStringLiteral("工種区分予備"),         QStringLiteral("撮影箇所"),
        QStringLiteral("撮影年月日"),           QStringLiteral("施工管理値"),
        QStringLiteral("請負者説明文"),
    };
    return titles;
}

const QString kControlValue = QStringLiteral("施工管理値");

// At most this many characters of EditCheckTypes are parsed.
constexpr qsizetype kEditCheckTypesMax = 19;

// atoi of a piece (leading blanks, a sign, digits, then anything) cut to its low eight bits.
int LowByteOfNumber(QStringView piece) {
    qsizetype i = 0;
    while (i < piece.size() && (piece[i] == u' ' || (piece[i] >= u'\t' && piece[i] <= u'\r'))) {
        ++i;
    }
    bool negative = false;
    if (i < piece.size() && (piece[i] == u'-' || piece[i] == u'+')) {
        negative = piece[i] == u'-';
        ++i;
    }
    // Only the low eight bits are kept, so the digits can be summed modulo 256 without ever
    // overflowing.
    unsigned int value = 0;
    for (; i < piece.size() && piece[i] >= u'0' && piece[i] <= u'9'; ++i) {
        value = (value * 10 + (piece[i].unicode() - u'0')) & 0xFFu;
    }
    if (negative) {
        value = (0u - value) & 0xFFu;
    }
    return static_cast<int>(value);
}

}  // namespace

ToviPhotoCtrlVisualSetting* ToviData::OnCreateVisualSettings() {
    return new ToviPhotoCtrlVisualSetting();
}

QList<int> ToviData::ParseEditCheckTypes(const QString& types) {
    QList<int> cameraTypes;
    const QStringView text = QStringView(types).left(kEditCheckTypesMax);
    for (QStringView piece : text.split(u',', Qt::SkipEmptyParts)) {
        cameraTypes.append(LowByteOfNumber(piece));
    }
    return cameraTypes;
}

void ToviData::SetVisualSetting(const ToviPhotoCtrlVisualSetting& setting, bool force) {
    const bool changed = force || visualSetting->IsChangeEditCheckTerm(setting);
    *visualSetting = setting;
    // The item manager owns the entries: whatever list the argument carried is replaced.
    visualSetting->SetItemShowSettings(itemManager->GetItemShowSettings());
    if (changed) {
        OnEditCheckTermsChanged(ParseEditCheckTypes(visualSetting->GetEditCheckTypes()));
    }
}

void ToviData::OnEditCheckTermsChanged(const QList<int>& cameraTypes) {
    imageCheck->SetCheckCameraType(cameraTypes);
    Initialize_CheckEditJPEG();
}

void ToviData::SetManager(const ToviLabelManager& labels, const ToviItemManager& items,
                          bool withItems) {
    *labelManager = labels;
    if (withItems) {
        *itemManager = items;
    }
}

void ToviData::Initialize() {
    itemManager = std::make_unique<ToviItemManager>();
}

bool ToviData::Load() {
    labelManager->Load();
    visualSetting->Load();
    sortCondition->Load();

    // A new kind of delivery starts from the default flags and ignores the saved hidden list,
    // which the Save below then overwrites.
    const bool sameKind = itemDef.TypeIsCorresponding();
    QStringList hidden;
    if (sameKind) {
        itemManager->Load(hidden);
    }
    const auto shown = [&](const QString& title, bool shownByDefault) {
        return sameKind ? !hidden.contains(title, Qt::CaseInsensitive) : shownByDefault;
    };

    ToviItemShowSettings list;
    const int definitionCount = itemDef.GetCount();
    for (int index = 0; index < definitionCount; ++index) {
        const Definition& definition = itemDef.GetDef(index);
        if (definition.show != Definition::ShowMainList || definition.title.isEmpty()) {
            continue;
        }
        const bool defaultShown = ItemsShownByDefault().contains(definition.title);
        if (!sameKind && definition.title == kControlValue) {
            visualSetting->SetVisibleControlValue(true);
        }
        list.Add(definition.title, shown(definition.title, defaultShown), index,
                 static_cast<Definition::Grade>(definition.grade), InfoTypeItem);
    }
    for (const FixedItem& item : kFileItems) {
        const QString title = QString::fromUtf8(item.title);
        list.Add(title, shown(title, item.shownByDefault), definitionCount,
                 Definition::GradeOptional, InfoTypeFile);
    }
    for (const FixedItem& item : kExifItems) {
        const QString title = QString::fromUtf8(item.title);
        list.Add(title, shown(title, item.shownByDefault), definitionCount,
                 Definition::GradeOptional, InfoTypeExif);
    }

    if (!list.isEmpty()) {
        visualSetting->SetItemShowSettings(list);
        itemManager->SetItemShowSettings(list);
        itemManager->Save();
    }
    return true;
}

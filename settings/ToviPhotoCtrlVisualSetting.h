#pragma once

#include "settings/ToviItemShowSettings.h"

#include <QString>

// How the viewer shows a document: the tree kind, the display mode, the caption item, the side
// panels and the tamper-check set-up. The document owns one, panels and dialogs hold copies.
// Kept in the profile section "VisualSetting"; every object writes itself back when it ends,
// so the copy that ends last decides what the next start reads.
class ToviPhotoCtrlVisualSetting {
public:
    // The enumerations carry numbers only: the values are what the rest of the program compares
    // against, and a stored value outside them is kept as it stands (hence the int base).

    // Whether a cell shows the information list beside the photograph.
    enum ImageTextArrange : int { TextArrangeHidden = 0, TextArrangeBeside = 1 };
    // The classification tree: 0 by work type with the photo class above it, 1 by shooting
    // place, 2 by work type alone.
    enum TreeType : int { TreeKousyu = 0, TreeSatsueikasyo = 1, TreeKousyuOnly = 2 };
    // The display mode: pages of 1, 2, 3, 4 or 6 photographs, the thumbnail list or the
    // management list.
    enum DivideType : int {
        Divide1 = 0,
        Divide2 = 1,
        Divide3 = 2,
        Divide4 = 3,
        Divide6 = 4,
        DivideThumbList = 5,
        DivideManagementList = 6,
    };
    // The caption item of a photograph: 0 file name, 1 Japanese file name, 2 title.
    enum TitleShowType : int { TitleFileName = 0, TitleJapaneseName = 1, TitlePhotoTitle = 2 };

    static const QString VisualSettingSection_;  // "VisualSetting"
    static const QString TextArrangeEntry_;      // "TextArrange"
    static const QString TreeTypeEntry_;         // "TreeType"
    static const QString DivideTypeEntry_;       // "DivideType"
    static const QString TitleShowTypeEntry_;    // "TitleShowType"
    static const QString DoEditCheck_;           // "DoEditCheck"
    static const QString VisibleDetail_;         // "VisibleDetail"
    static const QString VisibleProperty_;       // "VisibleProperty"
    static const QString VisibleComment_;        // "VisibleComment"
    static const QString VisibleControlValue_;   // "VisibleControlValue"
    static const QString EditCheckTypes_;        // "EditCheckTypes"
    static const QString EditCheckType_;         // "EditCheckType": never read or written

    ToviPhotoCtrlVisualSetting() = default;
    ToviPhotoCtrlVisualSetting(const ToviPhotoCtrlVisualSetting& other) = default;
    ToviPhotoCtrlVisualSetting& operator=(const ToviPhotoCtrlVisualSetting& other) = default;
    // Saves unconditionally, copies included.
    virtual ~ToviPhotoCtrlVisualSetting();

    ImageTextArrange GetImageTextArrange() const { return imageTextArrange; }
    void SetImageTextArrange(ImageTextArrange arrange) { imageTextArrange = arrange; }
    // The document's item manager owns the list; this copy follows it.
    ToviItemShowSettings& GetItemShowSettings() { return itemShowSettings; }
    const ToviItemShowSettings& GetItemShowSettings() const { return itemShowSettings; }
    void SetItemShowSettings(const ToviItemShowSettings& settings) { itemShowSettings = settings; }
    TreeType GetTreeType() const { return treeType; }
    void SetTreeType(TreeType type) { treeType = type; }
    DivideType GetDivType() const { return divType; }
    void SetDivType(DivideType type) { divType = type; }
    TitleShowType GetTitleShowType() const { return titleShowType; }
    void SetTitleShowType(TitleShowType type) { titleShowType = type; }
    bool GetDoEditCheck() const { return doEditCheck; }
    void SetDoEditCheck(bool on) { doEditCheck = on; }
    bool GetVisibleDetail() const { return visibleDetail; }
    void SetVisibleDetail(bool on) { visibleDetail = on; }
    bool GetVisibleProperty() const { return visibleProperty; }
    void SetVisibleProperty(bool on) { visibleProperty = on; }
    bool GetVisibleComment() const { return visibleComment; }
    void SetVisibleComment(bool on) { visibleComment = on; }
    bool GetVisibleControlValue() const { return visibleControlValue; }
    void SetVisibleControlValue(bool on) { visibleControlValue = on; }
    // The tamper-check camera types, decimal numbers joined by "," in chain order ("2,1").
    const QString& GetEditCheckTypes() const { return editCheckTypes; }
    void SetEditCheckTypes(const QString& types) { editCheckTypes = types; }

    // Photographs per page row and column, and per page; 0 in the two list modes. A mode
    // outside the table counts like the six-photograph page.
    unsigned long GetRowCount() const;
    unsigned long GetColCount() const;
    unsigned long GetCountOfSet() const;
    bool IsPreviewStyle() const;
    bool IsThumbListStyle() const;
    bool IsManagementListStyle() const;

    // Whether going from this setting to other means the tamper states must be redone: the
    // check is switched on or off, or it is on and the types differ. With the check off on both
    // sides the types don't matter.
    bool IsChangeEditCheckTerm(const ToviPhotoCtrlVisualSetting& other) const;

    // Takes every entry that was saved (stored as value + 100; anything below 100 means
    // unsaved and leaves the field). An empty EditCheckTypes reads as "1". Always true.
    bool Load();
    // Writes the ten entries in Load's order; false at the first refused write.
    bool Save() const;

private:
    ImageTextArrange imageTextArrange = TextArrangeBeside;
    ToviItemShowSettings itemShowSettings;
    TreeType treeType = TreeKousyu;
    DivideType divType = DivideThumbList;
    TitleShowType titleShowType = TitlePhotoTitle;
    bool doEditCheck = false;
    bool visibleDetail = true;
    bool visibleProperty = true;
    bool visibleComment = true;
    bool visibleControlValue = true;
    QString editCheckTypes = QStringLiteral("1");
};

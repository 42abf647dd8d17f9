#pragma once

#include "extraction/ToviSortCondition.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviItemManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QDialog>

class QAbstractButton;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class ToviColorButton;

// 設定: label names, the display mode and captions, the sort, the information-list items and
// the tamper check. Works on copies of the four settings objects; the host reads them back
// after OK. Like every settings object the copies write themselves to the profile store when
// the dialog object goes: the edited values after OK, the values they came in with after
// Cancel.
class ToviSetUpDlg : public QDialog {
    Q_OBJECT
public:
    // The title of a photograph's item whose display also shows the control-value table.
    static const QString ControlValueTitle_;  // "施工管理値"
    // The longest label name, in Shift_JIS bytes.
    static constexpr int kLabelNameMax = 32;

    ToviSetUpDlg(const ToviLabelManager& labels, const ToviPhotoCtrlVisualSetting& visual,
                 const ToviSortCondition& sort, const ToviItemManager& items,
                 QWidget* parent = nullptr);
    ~ToviSetUpDlg() override;

    const ToviLabelManager& GetLabelMngr() const { return labelMngr; }
    const ToviPhotoCtrlVisualSetting& GetVisualSetting() const { return visualSetting; }
    const ToviSortCondition& GetSortCondition() const { return sortCondition; }
    const ToviItemManager& GetItemManager() const { return itemManager; }

    // The object name of a control by its number (1050 to 1147).
    static QString ControlName(int id);
    // The sort keys offered, in order.
    static QStringList SortKeys();

public slots:
    void accept() override;

private:
    void CreateControls();
    void InitLabelSec();
    void InitItemSec();
    void InitVisualSettingSec();
    void InitSortConditionSec();
    void OnViewTypeChange();
    void OnShowPhotoInfoList();
    void OnBnClickedExecSortRadio();
    void OnBnClickedUnexecSortRadio();
    void OnBnClickedChkDoEditCheck();
    void OnBtnClickSelectType();
    void OnBnClickedItemChangeButton();
    // The first label-name edit whose text can't be kept (too long, or not writable in
    // Shift_JIS), or null; message gets the warning to show.
    QLineEdit* GetErrorLabelNameEdit(QString* message) const;
    void UpdateLabelManager();
    void UpdateVisualSetting();
    void UpdateItemManager();
    void UpdateSortCondition();
    void SetDirection(int id);

    ToviLabelManager labelMngr;
    ToviPhotoCtrlVisualSetting visualSetting;
    ToviSortCondition sortCondition;
    ToviItemManager itemManager;

    QLabel* viewPreview = nullptr;
    QLabel* infoPreview = nullptr;
    QListWidget* itemList = nullptr;
    QPushButton* itemButton = nullptr;
    ToviColorButton* colorButtons[6] = {};
    QLineEdit* labelNames[6] = {};
    QButtonGroup* titleRadio = nullptr;
    QButtonGroup* sortRadio = nullptr;
    QComboBox* sortKey = nullptr;
    QButtonGroup* directionRadio = nullptr;
    QButtonGroup* viewRadio = nullptr;
    QButtonGroup* infoRadio = nullptr;
    QButtonGroup* commentRadio = nullptr;
    QCheckBox* doEditCheckBox = nullptr;
    QPushButton* selectTypeButton = nullptr;
    bool doEditCheck = false;
    QString editCheckTypes;
    QPushButton* okButton = nullptr;
    QPushButton* cancelButton = nullptr;
};

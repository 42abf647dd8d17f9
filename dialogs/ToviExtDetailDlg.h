#pragma once

#include "extraction/ToviExtractionConditions.h"

#include <QDialog>

#include <array>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QRadioButton;
class ToviData;
class ToviItemDef;

// 詳細設定: the modal companion of the extraction window for the three management item
// conditions, the date range and the choice of かつ or または. The caller fills conditions
// (the five checks of the extraction window are not read here) and reads them back after OK.
// A condition that is off comes back with an empty title; OK is refused, with the input left
// as it is, for an item without a text or a date range whose start is after its end.
class ToviExtDetailDlg : public QDialog {
    Q_OBJECT
public:
    static const QString ErrorCaption_;    // "設定エラー"
    static const QString NoTextMessage_;   // an item condition without a text
    static const QString BadDateMessage_;  // a date range whose start is after its end

    explicit ToviExtDetailDlg(QWidget* parent = nullptr);

    // The document whose definitions and values fill the lists; set before the window opens.
    void SetData(ToviData* document);

    // The fields in and out: itemOn, itemTitle, itemText, dateOn, dateKind, dateFrom, dateTo
    // and orMode.
    ToviExtractionConditions conditions;

    QCheckBox* ItemCheck(int row) const { return rows[row].check; }
    QComboBox* ItemList(int row) const { return rows[row].items; }
    QComboBox* ValueList(int row) const { return rows[row].values; }
    QCheckBox* DateCheck() const { return dateCheck; }
    QDateEdit* DateFrom() const { return fromEdit; }
    QDateEdit* DateTo() const { return toEdit; }

    // Fills the lists and shows the fields; runs once, when the window is first shown.
    void OnInitDialog();
    void accept() override;

    // A date as the conditions hold it, "%04d-%02d-%02d".
    static QString FormatDate(const QDate& date);
    // The date of such a text: the year before the first "-", the month in the two characters
    // after it, the day in the last two. Invalid when there is no second "-" or no such date.
    static QDate ParseDate(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Row {
        QCheckBox* check = nullptr;
        QComboBox* items = nullptr;
        QComboBox* values = nullptr;
    };

    void FillItemList(int row);
    void FillValueList(int row, const QString& title);
    void OnItemCheck(int row);
    void OnItemChanged(int row);
    void OnDateCheck();
    void EnableDate(bool enable);

    std::array<Row, ToviExtractionConditions::kItemCount> rows;
    QCheckBox* dateCheck;
    QRadioButton* shotDateRadio;
    QRadioButton* fileDateRadio;
    QDateEdit* fromEdit;
    QDateEdit* toEdit;
    QRadioButton* andRadio;
    QRadioButton* orRadio;
    ToviData* data = nullptr;
    const ToviItemDef* itemDef = nullptr;
    bool initialized = false;
};

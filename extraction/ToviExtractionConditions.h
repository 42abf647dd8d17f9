#pragma once

#include <QString>

#include <array>

// The conditions of an extraction, as the extraction window or the command line sets them.
// Conditions are evaluated in the order of the fields.
struct ToviExtractionConditions {
    static constexpr int kItemCount = 3;

    bool keyPhoto = false;       // 代表写真
    bool ngPhoto = false;        // NG写真
    bool notcheckPhoto = false;  // 未検査写真
    bool notExifinfo = false;    // Exif情報非保有写真
    bool neceNotwrite = false;   // 必須項目未入力写真
    std::array<bool, kItemCount> itemOn{};
    std::array<QString, kItemCount> itemTitle;
    std::array<QString, kItemCount> itemText;  // or the marker "【未記入】" for an empty value
    bool dateOn = false;
    int dateKind = 0;  // 0 撮影年月日, 1 ファイル更新日
    QString dateFrom;  // "YYYY-MM-DD"
    QString dateTo;
    int orMode = 0;  // 0 かつ (AND), otherwise または (OR)

    // True when at least one condition is switched on.
    bool AnyOn() const {
        bool any = keyPhoto || ngPhoto || notcheckPhoto || notExifinfo || neceNotwrite || dateOn;
        for (bool on : itemOn) {
            any = any || on;
        }
        return any;
    }
};

// What holds the conditions for a document: the extraction window in the viewer, a plain
// holder on the command line. The document reads the conditions and tells it when an
// extraction was cancelled.
class ToviExtractionSource {
public:
    // 0 only turns the window's button off; 1 also detaches and resets the window.
    enum CancelExt { CancelButtonOnly = 0, CancelAndReset = 1 };

    virtual ~ToviExtractionSource() = default;
    virtual const ToviExtractionConditions& Conditions() const = 0;
    virtual void CancelExtraction(CancelExt value) = 0;
};

// A source that only holds conditions (command line, tests).
class ToviExtractionHolder : public ToviExtractionSource {
public:
    ToviExtractionConditions conditions;
    int cancelCount = 0;
    const ToviExtractionConditions& Conditions() const override { return conditions; }
    void CancelExtraction(CancelExt) override { ++cancelCount; }
};

#pragma once

#include "checks/ToviDeliveryCheck.h"

#include <QDate>
#include <QHash>
#include <QSet>
#include <QString>

#include <optional>

class ToviItemArray;

// The checks of the values PHOTO.XML gives its photographs. An empty or missing value passes
// here: whether an element must be there is the required-items check's question.

// 撮影年月日: written CCYY-MM-DD, a real day, within the work period of the index file.
class ToviDateCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

private:
    QSet<int> dates;  // definition indexes
    std::optional<QDate> start, end;
};

// 代表写真 and 提出頻度写真: 0 or 1.
class ToviFlagCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

private:
    QSet<int> flags;
};

// シリアル番号: digits only, each number once, rising through the file.
class ToviSerialCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

private:
    QSet<int> serials;
    QHash<QString, int> firstWith;  // number without leading zeros -> first photograph
    QString previous;               // the last number read
};

// Characters outside JIS X 0208 in any item of the delivery: 機種依存文字 (the NEC and IBM
// extension rows of code page 932), 外字 (its user-defined area), half-width katakana and
// characters code page 932 has no form for. ASCII passes.
class ToviTextCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;
    // The management items (基礎情報), which belong to no photograph.
    void Finish(ToviCheckContext& context, ToviFindingSink& sink) override;

    enum CharKind : unsigned char { Jis = 0, Vendor, UserDefined, HalfWidthKana, NoCp932 };
    // What kind a character is (a code point, so that characters beyond the BMP count too).
    static CharKind Classify(char32_t c);

private:
    void CheckItems(const ToviCheckContext& context, const ToviItemArray& items, int index,
                    ToviFindingSink& sink);
    // Kinds found so far: a delivery uses few distinct characters.
    QHash<char32_t, CharKind> known;
};

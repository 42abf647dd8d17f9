#pragma once

#include "checks/ToviDeliveryCheck.h"

// The checks of the values PHOTO.XML gives its photographs. An empty or missing value passes
// here: whether an element must be there is the required-items check's question.

// 撮影年月日: written CCYY-MM-DD, a real day, within the work period of the index file.
class ToviDateCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;
};

// 代表写真 and 提出頻度写真: 0 or 1.
class ToviFlagCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;
};

// シリアル番号: digits only, each number once, rising through the file.
class ToviSerialCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;
};

// Characters outside JIS X 0208 in any item of the delivery: 機種依存文字 (the NEC and IBM
// extension rows of code page 932), 外字 (its user-defined area), half-width katakana and
// characters code page 932 has no form for. ASCII passes.
class ToviTextCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;

    enum CharKind : unsigned char { Jis = 0, Vendor, UserDefined, HalfWidthKana, NoCp932 };
    // What kind a character is (a code point, so that characters beyond the BMP count too).
    static CharKind Classify(char32_t c);
};

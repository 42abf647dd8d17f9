#include "checks/ToviValueChecks.h"

#include "checks/ToviCheckContext.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "platform/Cp932.h"

#include <QDate>
#include <QHash>
#include <QSet>

namespace {

const char kDateFormat[] = "date.format";
const char kDateInvalid[] = "date.invalid";
const char kDateOutside[] = "date.outside-period";
const char kFlagNotBinary[] = "flag.not-binary";
const char kSerialNotDigits[] = "serial.not-digits";
const char kSerialDuplicate[] = "serial.duplicate";
const char kSerialOrder[] = "serial.order";
const char kTextNonJis[] = "text.non-jis";

bool IsAsciiDigits(const QString& text) {
    if (text.isEmpty()) {
        return false;
    }
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return false;
        }
    }
    return true;
}

// Definition indexes of titles, as a set for the item walk.
QSet<int> Definitions(const ToviCheckContext& context, std::initializer_list<const char*> titles) {
    QSet<int> set;
    for (const char* title : titles) {
        for (const int index : context.DefinitionsTitled(QString::fromUtf8(title))) {
            set.insert(index);
        }
    }
    return set;
}

// A serial's number without its leading zeros, so that "007" and "7" are one number and
// numbers of any length compare by length first.
QString Normalized(const QString& digits) {
    qsizetype zeros = 0;
    while (zeros + 1 < digits.size() && digits[zeros] == QLatin1Char('0')) {
        ++zeros;
    }
    return digits.mid(zeros);
}

int CompareNumbers(const QString& a, const QString& b) {
    if (a.size() != b.size()) {
        return a.size() < b.size() ? -1 : 1;
    }
    return a.compare(b);
}

}  // namespace

// ---- 撮影年月日 -------------------------------------------------------------------------------

QList<const char*> ToviDateCheck::Codes() const {
    return {kDateFormat, kDateInvalid, kDateOutside};
}

void ToviDateCheck::Begin(ToviCheckContext& context) {
    dates = Definitions(context, {"撮影年月日"});
    start.reset();
    end.reset();
    if (const auto& period = context.WorkPeriod()) {
        start = period->start;
        end = period->end;
    }
}

void ToviDateCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    if (dates.isEmpty()) {
        return;
    }
    const QString item = QStringLiteral("撮影年月日");
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const QString& value = it.Value();
        if (!dates.contains(it.GetDefIndex()) || value.isEmpty()) {
            continue;
        }
        const bool shaped = value.size() == 10 && value[4] == QLatin1Char('-') &&
                            value[7] == QLatin1Char('-') && IsAsciiDigits(value.left(4)) &&
                            IsAsciiDigits(value.mid(5, 2)) && IsAsciiDigits(value.mid(8, 2));
        if (!shaped) {
            sink.Add(ToviCheckFinding::Of(kDateFormat, ToviCheckFinding::Error, index, item,
                                          QStringLiteral("撮影年月日「%1」が CCYY-MM-DD の形 (例 "
                                                         "2024-04-01) で書かれていません")
                                              .arg(value)));
            continue;
        }
        const QDate date = QDate::fromString(value, Qt::ISODate);
        if (!date.isValid()) {
            sink.Add(ToviCheckFinding::Of(
                kDateInvalid, ToviCheckFinding::Error, index, item,
                QStringLiteral("撮影年月日「%1」は暦にない日付です").arg(value)));
            continue;
        }
        if (start && (date < *start || date > *end)) {
            sink.Add(ToviCheckFinding::Of(
                kDateOutside, ToviCheckFinding::Warning, index, item,
                QStringLiteral("撮影年月日 %1 が工期 (%2 ～ %3) の外です")
                    .arg(value, start->toString(Qt::ISODate), end->toString(Qt::ISODate))));
        }
    }
}

// ---- 代表写真, 提出頻度写真 -------------------------------------------------------------------

QList<const char*> ToviFlagCheck::Codes() const {
    return {kFlagNotBinary};
}

void ToviFlagCheck::Begin(ToviCheckContext& context) {
    flags = Definitions(context, {"代表写真", "提出頻度写真"});
}

void ToviFlagCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    if (flags.isEmpty()) {
        return;
    }
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const QString& value = it.Value();
        if (!flags.contains(it.GetDefIndex()) || value.isEmpty() || value == QLatin1String("0") ||
            value == QLatin1String("1")) {
            continue;
        }
        const QString title = context.DefinitionTitle(it.GetDefIndex());
        sink.Add(ToviCheckFinding::Of(
            kFlagNotBinary, ToviCheckFinding::Error, index, title,
            QStringLiteral("%1は 0 か 1 で書きます (「%2」と書かれています)").arg(title, value)));
    }
}

// ---- シリアル番号 -----------------------------------------------------------------------------

QList<const char*> ToviSerialCheck::Codes() const {
    return {kSerialNotDigits, kSerialDuplicate, kSerialOrder};
}

void ToviSerialCheck::Begin(ToviCheckContext& context) {
    serials = Definitions(context, {"シリアル番号"});
    firstWith.clear();
    firstWith.reserve(context.PhotoCount());
    previous.clear();
}

void ToviSerialCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    if (serials.isEmpty()) {
        return;
    }
    const QString item = QStringLiteral("シリアル番号");
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const QString& value = it.Value();
        if (!serials.contains(it.GetDefIndex()) || value.isEmpty()) {
            continue;
        }
        if (!IsAsciiDigits(value)) {
            sink.Add(ToviCheckFinding::Of(
                kSerialNotDigits, ToviCheckFinding::Error, index, item,
                QStringLiteral("シリアル番号「%1」が半角数字だけで書かれていません").arg(value)));
            continue;
        }
        const QString number = Normalized(value);
        const auto at = firstWith.constFind(number);
        if (at != firstWith.cend()) {
            // A repeated number is said once, as a repeat; its order follows from it.
            sink.Add(ToviCheckFinding::Of(
                kSerialDuplicate, ToviCheckFinding::Error, index, item,
                QStringLiteral("シリアル番号 %1 は写真 %2 と重複しています").arg(value).arg(*at)));
        } else if (firstWith.insert(number, index);
                   !previous.isEmpty() && CompareNumbers(number, previous) < 0) {
            sink.Add(ToviCheckFinding::Of(
                kSerialOrder, ToviCheckFinding::Error, index, item,
                QStringLiteral("シリアル番号 %1 が前の写真の番号 %2 より小さく、"
                               "昇順になっていません")
                    .arg(value, previous)));
        }
        previous = number;
    }
}

// ---- JIS X 0208 -------------------------------------------------------------------------------

QList<const char*> ToviTextCheck::Codes() const {
    return {kTextNonJis};
}

ToviTextCheck::CharKind ToviTextCheck::Classify(char32_t c) {
    if (c < 0x80) {
        return Jis;  // ASCII stands beside JIS X 0208 in every delivery
    }
    bool ok = false;
    const QByteArray bytes = Cp932::FromUnicode(QString::fromUcs4(&c, 1), &ok);
    if (!ok || bytes.isEmpty()) {
        return NoCp932;
    }
    if (bytes.size() == 1) {
        const auto byte = static_cast<unsigned char>(bytes[0]);
        return byte >= 0xA1 && byte <= 0xDF ? HalfWidthKana : NoCp932;
    }
    const unsigned code =
        (static_cast<unsigned char>(bytes[0]) << 8) | static_cast<unsigned char>(bytes[1]);
    if ((code >= 0x8740 && code <= 0x879C) || (code >= 0xED40 && code <= 0xEEFC) ||
        (code >= 0xFA40 && code <= 0xFC4B)) {
        return Vendor;
    }
    if (code >= 0xF040 && code <= 0xF9FC) {
        return UserDefined;
    }
    return Jis;
}

namespace {

// The characters of one value that are not JIS X 0208, each once, by kind; classifications
// are kept across the run, since a delivery uses few distinct characters.
struct Offenders {
    QString vendor, userDefined, halfWidth, other;
    bool Any() const {
        return !vendor.isEmpty() || !userDefined.isEmpty() || !halfWidth.isEmpty() ||
               !other.isEmpty();
    }
    QString Message(const QString& item) const {
        QStringList parts;
        if (!vendor.isEmpty()) {
            parts << QStringLiteral("機種依存文字「%1」").arg(vendor);
        }
        if (!userDefined.isEmpty()) {
            parts << QStringLiteral("外字「%1」").arg(userDefined);
        }
        if (!halfWidth.isEmpty()) {
            parts << QStringLiteral("半角カナ「%1」").arg(halfWidth);
        }
        if (!other.isEmpty()) {
            parts << QStringLiteral("JIS X 0208 にない文字「%1」").arg(other);
        }
        return QStringLiteral("%1に %2 が使われています")
            .arg(item, parts.join(QStringLiteral("、")));
    }
};

void Gather(const QString& value, QHash<char32_t, ToviTextCheck::CharKind>& known, Offenders& out) {
    for (const char32_t c : value.toUcs4()) {
        if (c < 0x80) {
            continue;
        }
        auto it = known.find(c);
        if (it == known.end()) {
            it = known.insert(c, ToviTextCheck::Classify(c));
        }
        QString* list = nullptr;
        switch (*it) {
            case ToviTextCheck::Jis:
                continue;
            case ToviTextCheck::Vendor:
                list = &out.vendor;
                break;
            case ToviTextCheck::UserDefined:
                list = &out.userDefined;
                break;
            case ToviTextCheck::HalfWidthKana:
                list = &out.halfWidth;
                break;
            case ToviTextCheck::NoCp932:
                list = &out.other;
                break;
        }
        const QString text = QString::fromUcs4(&c, 1);
        if (!list->contains(text)) {
            list->append(text);
        }
    }
}

bool AllAscii(const QString& value) {
    for (const QChar c : value) {
        if (c.unicode() >= 0x80) {
            return false;
        }
    }
    return true;
}

}  // namespace

void ToviTextCheck::Begin(ToviCheckContext&) {
    known.clear();
}

void ToviTextCheck::CheckItems(const ToviCheckContext& context, const ToviItemArray& items,
                               int index, ToviFindingSink& sink) {
    for (const ToviItem& it : items) {
        if (AllAscii(it.Value())) {
            continue;
        }
        Offenders found;
        Gather(it.Value(), known, found);
        if (found.Any()) {
            const QString title = context.DefinitionTitle(it.GetDefIndex());
            sink.Add(ToviCheckFinding::Of(kTextNonJis, ToviCheckFinding::Error, index, title,
                                          found.Message(title)));
        }
    }
}

void ToviTextCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    CheckItems(context, context.Photo(index).GetItems(), index, sink);
}

void ToviTextCheck::Finish(ToviCheckContext& context, ToviFindingSink& sink) {
    CheckItems(context, *context.Document().GetMngItemPhoto(), -1, sink);
}

#include "imagefacts/ToviControlValueParser.h"

#include <array>

namespace ToviControlValueParser {

namespace {

constexpr int kKindCount = 3;
constexpr int kFormCount = 6;

struct Word {
    QString base;
    // Longest and blank-ended first, so that the one taken off leaves the value alone.
    std::array<QString, kFormCount> forms;
};

using Words = std::array<Word, kKindCount>;

Word MakeWord(const QString& base) {
    const QString blank = QStringLiteral(" ");
    const QString value = QStringLiteral("値");
    const QString size = QStringLiteral("寸法");
    return {
        base,
        {base + value + blank, base + size + blank, base + blank, base + value, base + size, base}};
}

// Built on first use and kept: the parser runs for every photograph shown.
const Words& TheWords() {
    static const Words words = {MakeWord(QStringLiteral("設計")), MakeWord(QStringLiteral("実測")),
                                MakeWord(QStringLiteral("差"))};
    return words;
}

bool IsTrimmed(QChar c) {
    // White space is the ASCII set only, so that a full-width space typed into a value
    // survives trimming.
    switch (c.unicode()) {
        case u' ':
        case u'\t':
        case u'\n':
        case u'\r':
        case u'\v':
        case u'\f':
            return true;
        default:
            return false;
    }
}

}  // namespace

QString Trim(const QString& text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && IsTrimmed(text[begin])) {
        ++begin;
    }
    while (end > begin && IsTrimmed(text[end - 1])) {
        --end;
    }
    return begin == 0 && end == text.size() ? text : text.mid(begin, end - begin);
}

QString TrimLeft(const QString& text) {
    qsizetype begin = 0;
    while (begin < text.size() && IsTrimmed(text[begin])) {
        ++begin;
    }
    return begin == 0 ? text : text.mid(begin);
}

void Split(const QString& text, const QString& separator, QStringList& out) {
    out.clear();
    if (separator.isEmpty()) {
        if (!text.isEmpty()) {
            out.append(text);
        }
        return;
    }
    qsizetype from = 0;
    for (qsizetype at = text.indexOf(separator); at >= 0; at = text.indexOf(separator, from)) {
        out.append(text.mid(from, at - from));
        from = at + separator.size();
    }
    if (from < text.size()) {
        out.append(text.mid(from));
    }
}

Kind KindOf(const QString& token) {
    // Every word's shortest form is the word alone, so a token of a kind is one that starts
    // with its word.
    const Words& words = TheWords();
    for (int kind = 0; kind < kKindCount; ++kind) {
        if (token.startsWith(words[static_cast<size_t>(kind)].base)) {
            return static_cast<Kind>(kind);
        }
    }
    return Kind::None;
}

bool IsDesign(const QString& token) {
    return token.startsWith(TheWords()[0].base);
}

bool IsActual(const QString& token) {
    return token.startsWith(TheWords()[1].base);
}

bool IsDifference(const QString& token) {
    return token.startsWith(TheWords()[2].base);
}

bool AssignTokens(const QStringList& entries, ToviControlValue& value) {
    if (entries.size() > kKindCount) {
        return false;
    }
    const Words& words = TheWords();
    // A word anywhere in two entries makes the part ambiguous, even where it could be read
    // (差 inside a design value next to a difference entry): the part then fails, as intended.
    for (const Word& word : words) {
        int holders = 0;
        for (const QString& entry : entries) {
            if (entry.contains(word.base) && ++holders > 1) {
                return false;
            }
        }
    }
    for (const QString& entry : entries) {
        const Kind kind = KindOf(entry);
        if (kind == Kind::None) {
            return false;
        }
        const Word& word = words[static_cast<size_t>(kind)];
        QString rest;
        for (const QString& form : word.forms) {
            if (entry.startsWith(form)) {
                rest = Trim(entry.mid(form.size()));
                break;
            }
        }
        switch (kind) {
            case Kind::Design:
                value.SetDesign(rest);
                break;
            case Kind::Actual:
                value.SetActual(rest);
                break;
            case Kind::Difference:
                value.SetDifference(rest);
                break;
            case Kind::None:
                break;
        }
    }
    return true;
}

}  // namespace ToviControlValueParser

std::unique_ptr<ToviControlValue> ParseControlValue(const QString& part) {
    using namespace ToviControlValueParser;
    if (part.isEmpty()) {
        return nullptr;
    }
    auto value = std::make_unique<ToviControlValue>();
    // Only the ASCII colon separates: a full-width one is part of the name.
    const qsizetype colon = part.indexOf(QLatin1Char(':'));
    if (colon < 0) {
        value->SetName(Trim(part));
        return value;
    }
    value->SetName(Trim(part.left(colon)));

    static const QString dot = QStringLiteral("・");
    QStringList tokens;
    Split(Trim(part.mid(colon + 1)), dot, tokens);
    QStringList entries;
    for (const QString& token : tokens) {
        const QString left = TrimLeft(token);
        if (KindOf(left) != Kind::None) {
            entries.append(left);
        } else if (entries.isEmpty()) {
            return nullptr;
        } else {
            // A value that holds "・" itself (設計寸法 1・2): the token continues the entry.
            entries.last() += dot + token;
        }
    }
    if (!AssignTokens(entries, *value)) {
        return nullptr;
    }
    return value;
}

void ParseControlValues(const QString& source, ToviControlValues& out) {
    out.clear();
    if (source.isEmpty()) {
        return;
    }
    QStringList parts;
    ToviControlValueParser::Split(source, QStringLiteral("、"), parts);
    for (const QString& part : parts) {
        if (std::unique_ptr<ToviControlValue> value = ParseControlValue(part)) {
            out.push_back(std::move(value));
        } else {
            out.SetInvalid();
        }
    }
}

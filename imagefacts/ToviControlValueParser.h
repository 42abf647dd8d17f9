#pragma once

#include "imagefacts/ToviControlValue.h"
#include "imagefacts/ToviControlValues.h"

#include <QString>
#include <QStringList>

#include <memory>

// Parses a whole 施工管理値 text: parts separated by "、", each "name:設計値 …・実測値 …・差 …".
// out is emptied first; a part that does not parse is left out and makes out invalid. out's
// validity is not reset: a fresh object is expected.
void ParseControlValues(const QString& source, ToviControlValues& out);
// One part; null when it does not parse.
std::unique_ptr<ToviControlValue> ParseControlValue(const QString& part);

namespace ToviControlValueParser {

enum class Kind { None = -1, Design = 0, Actual = 1, Difference = 2 };

// out is emptied, then receives every stretch before a separator, empty or not, and the
// stretch after the last one when it is not empty.
void Split(const QString& text, const QString& separator, QStringList& out);
// The kind whose word a token (already trimmed on the left) starts with, tried in the order
// design, actual, difference; None for a token without one.
Kind KindOf(const QString& token);
bool IsDesign(const QString& token);
bool IsActual(const QString& token);
bool IsDifference(const QString& token);
// Stores each entry, its word taken off, in the field of its kind. False when an entry has
// no word, when there are more than three, or when a word appears in two entries.
bool AssignTokens(const QStringList& entries, ToviControlValue& value);
// Trims blanks, tabs and line ends; a full-width space stays.
QString Trim(const QString& text);
QString TrimLeft(const QString& text);

}  // namespace ToviControlValueParser

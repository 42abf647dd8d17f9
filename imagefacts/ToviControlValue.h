#pragma once

#include <QString>

// One measurement of a 施工管理値 text: its name and the design, measured and difference
// values, each kept as the text wrote it.
class ToviControlValue {
public:
    ToviControlValue() = default;
    ToviControlValue(const QString& name, const QString& design, const QString& actual,
                     const QString& difference)
        : name(name), design(design), actual(actual), difference(difference) {}
    virtual ~ToviControlValue() = default;

    const QString& Name() const { return name; }
    const QString& Design() const { return design; }
    const QString& Actual() const { return actual; }
    const QString& Difference() const { return difference; }
    void SetName(const QString& text) { name = text; }
    void SetDesign(const QString& text) { design = text; }
    void SetActual(const QString& text) { actual = text; }
    void SetDifference(const QString& text) { difference = text; }

    // All four texts empty.
    bool IsBlank() const {
        return name.isEmpty() && design.isEmpty() && actual.isEmpty() && difference.isEmpty();
    }
    // A name with no value beside it: what a text without ":" becomes.
    bool IsNameOnly() const {
        return !name.isEmpty() && design.isEmpty() && actual.isEmpty() && difference.isEmpty();
    }

private:
    QString name;
    QString design;
    QString actual;
    QString difference;
};

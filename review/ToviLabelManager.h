#pragma once

#include "review/ToviLabelAttribute.h"

#include <QString>

#include <array>

// The label vocabulary: six fixed slots (0 OK, 1 to 3 NG, 4 comment, 5 free label) with
// their names and colours. The names persist in the profile section "Label"; colours are
// the built-in ones unless a host sets them. Every manager writes its names when it goes.
class ToviLabelManager {
public:
    static const QString LabelSection_;  // "Label"
    static const QString LabelEntry_;    // "Label", numbered from 1: "Label1" to "Label6"

    // The built-in vocabulary.
    ToviLabelManager();
    // Copies GetMaxCount() slots from source.
    explicit ToviLabelManager(const ToviLabelAttribute* source);
    ToviLabelManager(const ToviLabelManager& other);
    ToviLabelManager& operator=(const ToviLabelManager& other);
    virtual ~ToviLabelManager();

    // Writes the six names; the argument is not read.
    virtual void Save(const QString& ignored = QString()) const;
    // Takes each stored name that is neither empty nor "_未定義_"; the argument is not read.
    virtual void Load(const QString& ignored = QString());

    // Back to the built-in names and colours.
    void Initialize();
    // Copies GetMaxCount() slots from source.
    void SetLabelAttribute(const ToviLabelAttribute* source);
    // index must be below GetMaxCount(); anything else throws std::out_of_range.
    ToviLabelAttribute& GetLabelAttribute(unsigned long index);
    const ToviLabelAttribute& GetLabelAttribute(unsigned long index) const;
    // The first of the six slots, in slot order.
    const ToviLabelAttribute* GetLabelAttribute() const { return labels.data(); }

    static int GetMaxCount() { return kCount; }
    // The built-in name and colour of a slot below GetMaxCount().
    static ToviLabelAttribute DefaultAttribute(unsigned long index);

private:
    static constexpr int kCount = 6;

    std::array<ToviLabelAttribute, kCount> labels;
};

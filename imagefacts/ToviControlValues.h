#pragma once

#include "imagefacts/ToviControlValue.h"

#include <memory>
#include <vector>

// A parsed 施工管理値 text: the values of the parts that parsed, in text order, and whether
// every part did. The values are owned.
class ToviControlValues : public std::vector<std::unique_ptr<ToviControlValue>> {
public:
    ToviControlValues() = default;
    ToviControlValues(const ToviControlValues&) = delete;
    ToviControlValues& operator=(const ToviControlValues&) = delete;
    ToviControlValues(ToviControlValues&&) = default;
    ToviControlValues& operator=(ToviControlValues&&) = default;
    virtual ~ToviControlValues() = default;

    // False once a part of the text failed to parse; the parts that did are still here.
    bool IsValid() const { return valid; }
    void SetInvalid() { valid = false; }

private:
    bool valid = true;
};

#pragma once

#include <utility>

// A member that a copy of its owner does not take over: a cache, a loaded image, a group
// that belongs to the object it was read for. With it the owner's copy operations can stay
// defaulted, so a member added later is copied without anyone having to remember it.
//
// A copy-constructed value starts empty. On assignment, Policy::Empty empties the target
// (what it held belonged to the object it was); Policy::Keep leaves the target as it was.
enum class ToviCopyPolicy { Empty, Keep };

template <typename T, ToviCopyPolicy Policy = ToviCopyPolicy::Empty>
class ToviNotCopied {
public:
    ToviNotCopied() = default;
    ToviNotCopied(const ToviNotCopied&) {}
    ToviNotCopied& operator=(const ToviNotCopied& other) {
        if (Policy == ToviCopyPolicy::Empty && this != &other) {
            value = T();
        }
        return *this;
    }
    ~ToviNotCopied() = default;

    T& operator*() { return value; }
    const T& operator*() const { return value; }
    T* operator->() { return &value; }
    const T* operator->() const { return &value; }

private:
    T value{};
};

#pragma once

#include <QtGlobal>

#include <stdexcept>
#include <string>

// The one way the library reports an index outside an array: std::out_of_range, never
// caught inside the library.
[[noreturn]] inline void ToviThrowOutOfRange(const char* where) {
    throw std::out_of_range(std::string(where) + ": index out of range");
}

inline void ToviCheckIndex(qsizetype index, qsizetype size, const char* where) {
    if (index < 0 || index >= size) {
        ToviThrowOutOfRange(where);
    }
}

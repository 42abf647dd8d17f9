// 施工管理値 text in (UTF-8 bytes): the whole parse and the values it yields.
#include "imagefacts/ToviControlValueParser.h"

#include <QString>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    ToviControlValues values;
    ParseControlValues(text, values);
    return 0;
}

#include "platform/Cp932.h"

#include <iconv.h>

#include <cerrno>
#include <cstring>

namespace {

const iconv_t kNoDescriptor = reinterpret_cast<iconv_t>(-1);

// The two code page 932 directions are opened once per thread and kept: sorting and label
// checks convert one short text at a time, and opening a descriptor costs far more than the
// conversion itself. Other encodings are rare and get a descriptor per call.
class Descriptor {
public:
    Descriptor(const char* from, const char* to) {
        if (IsCp932(from, to)) {
            thread_local Cache cache;
            cd = std::strcmp(from, "CP932") == 0 ? cache.toUtf8 : cache.fromUtf8;
            // A reused descriptor may hold the shift state of a conversion that stopped early.
            if (cd != kNoDescriptor) {
                iconv(cd, nullptr, nullptr, nullptr, nullptr);
            }
        } else {
            cd = iconv_open(to, from);
            owned = true;
        }
    }
    ~Descriptor() {
        if (owned && cd != kNoDescriptor) {
            iconv_close(cd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    iconv_t Get() const { return cd; }

private:
    struct Cache {
        iconv_t toUtf8 = iconv_open("UTF-8", "CP932");
        iconv_t fromUtf8 = iconv_open("CP932", "UTF-8");
        ~Cache() {
            for (iconv_t d : {toUtf8, fromUtf8}) {
                if (d != kNoDescriptor) {
                    iconv_close(d);
                }
            }
        }
    };

    static bool IsCp932(const char* from, const char* to) {
        return (std::strcmp(from, "CP932") == 0 && std::strcmp(to, "UTF-8") == 0) ||
               (std::strcmp(from, "UTF-8") == 0 && std::strcmp(to, "CP932") == 0);
    }

    iconv_t cd = kNoDescriptor;
    bool owned = false;
};

bool IsAscii(const QString& text) {
    for (QChar c : text) {
        if (c.unicode() >= 0x80) {
            return false;
        }
    }
    return true;
}

// One conversion through iconv. With substitute set, an invalid or unconvertible input
// sequence is replaced (by replacement, in the target encoding) and skipped; otherwise it
// ends the conversion with false.
bool Convert(const char* from, const char* to, const QByteArray& in, QByteArray& out,
             bool substitute, const QByteArray& replacement, int inputUnit, bool* clean) {
    const Descriptor descriptor(from, to);
    iconv_t cd = descriptor.Get();
    if (cd == kNoDescriptor) {
        return false;
    }
    if (clean) {
        *clean = true;
    }
    QByteArray result;
    result.resize(in.size() * 2 + 16);
    char* inPtr = const_cast<char*>(in.constData());
    size_t inLeft = static_cast<size_t>(in.size());
    char* outPtr = result.data();
    size_t outLeft = static_cast<size_t>(result.size());
    bool ok = true;
    while (inLeft > 0) {
        size_t r = iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft);
        if (r != static_cast<size_t>(-1)) {
            break;
        }
        if (errno == E2BIG) {
            const qsizetype used = outPtr - result.data();
            result.resize(result.size() * 2);
            outPtr = result.data() + used;
            outLeft = static_cast<size_t>(result.size() - used);
            continue;
        }
        // EILSEQ or EINVAL (a sequence cut off at the end)
        if (clean) {
            *clean = false;
        }
        if (!substitute) {
            ok = false;
            break;
        }
        const size_t skip = std::min(inLeft, static_cast<size_t>(inputUnit));
        inPtr += skip;
        inLeft -= skip;
        if (outLeft < static_cast<size_t>(replacement.size())) {
            const qsizetype used = outPtr - result.data();
            result.resize(result.size() * 2 + replacement.size());
            outPtr = result.data() + used;
            outLeft = static_cast<size_t>(result.size() - used);
        }
        std::memcpy(outPtr, replacement.constData(), static_cast<size_t>(replacement.size()));
        outPtr += replacement.size();
        outLeft -= static_cast<size_t>(replacement.size());
    }
    if (ok) {
        // flush any shift state
        iconv(cd, nullptr, nullptr, &outPtr, &outLeft);
        result.resize(outPtr - result.data());
        out = std::move(result);
    }
    return ok;
}

}  // namespace

QString Cp932::ToUnicode(const QByteArray& bytes, bool* ok) {
    // Plain ASCII is the same in both; skip iconv for it.
    bool ascii = true;
    for (char c : bytes) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii) {
        if (ok) {
            *ok = true;
        }
        return QString::fromLatin1(bytes);
    }
    QByteArray utf8;
    Convert("CP932", "UTF-8", bytes, utf8, true, QByteArray("\xEF\xBF\xBD"), 1, ok);
    return QString::fromUtf8(utf8);
}

QByteArray Cp932::FromUnicode(const QString& text, bool* ok) {
    // Code page 932 is ASCII in its lower half, so ASCII text (dates, numbers, file names)
    // needs no conversion.
    if (IsAscii(text)) {
        if (ok) {
            *ok = true;
        }
        return text.toLatin1();
    }
    const QByteArray utf8 = text.toUtf8();
    QByteArray out;
    if (Convert("UTF-8", "CP932", utf8, out, false, {}, 1, nullptr)) {
        if (ok) {
            *ok = true;
        }
        return out;
    }
    // Some character has no CP932 form: go one character at a time and put '?' for those.
    out.clear();
    qsizetype pos = 0;
    while (pos < utf8.size()) {
        const unsigned char lead = static_cast<unsigned char>(utf8[pos]);
        const int len = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        QByteArray one;
        if (Convert("UTF-8", "CP932", utf8.mid(pos, len), one, false, {}, 1, nullptr)) {
            out += one;
        } else {
            out += '?';
        }
        pos += len;
    }
    if (ok) {
        *ok = false;
    }
    return out;
}

int Cp932::ByteLength(const QString& text) {
    return static_cast<int>(FromUnicode(text).size());
}

int Cp932::Compare(const QString& a, const QString& b) {
    const QByteArray x = FromUnicode(a);
    const QByteArray y = FromUnicode(b);
    const int n = std::memcmp(x.constData(), y.constData(),
                              static_cast<size_t>(std::min(x.size(), y.size())));
    if (n != 0) {
        return n;
    }
    return x.size() < y.size() ? -1 : (x.size() > y.size() ? 1 : 0);
}

bool Cp932::ToUtf8(const QByteArray& bytes, const char* encoding, QByteArray& out) {
    return Convert(encoding, "UTF-8", bytes, out, false, {}, 1, nullptr);
}

bool Cp932::FromUtf8(const QByteArray& utf8, const char* encoding, QByteArray& out) {
    return Convert("UTF-8", encoding, utf8, out, false, {}, 1, nullptr);
}

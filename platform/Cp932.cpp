#include "platform/Cp932.h"

#include <QList>
#include <QtEndian>

#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {

const iconv_t kNoDescriptor = reinterpret_cast<iconv_t>(-1);

// Appends the UTF-8 form of a code point of the basic plane.
inline char* PutUtf8(char* out, char16_t c) {
    if (c < 0x80) {
        *out++ = static_cast<char>(c);
    } else if (c < 0x800) {
        *out++ = static_cast<char>(0xC0 | (c >> 6));
        *out++ = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        *out++ = static_cast<char>(0xE0 | (c >> 12));
        *out++ = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        *out++ = static_cast<char>(0x80 | (c & 0x3F));
    }
    return out;
}

// Code page 932 to Unicode, as a table built once from iconv's own mapping at first use.
// Converting a whole file through it is several times faster than iconv, which goes one
// character at a time through UCS-4, and lets an invalid byte become U+FFFD in place.
class DecodeTable {
public:
    static constexpr char16_t kInvalid = 0xFFFF;
    static constexpr char16_t kLead = 0xFFFE;  // in single: the first byte of a pair

    static const DecodeTable& Instance() {
        static const DecodeTable table;
        return table;
    }

    char16_t Single(unsigned char byte) const { return single[byte]; }
    char16_t Pair(unsigned char lead, unsigned char trail) const {
        if (trail < kTrailLow || trail > kTrailHigh) {
            return kInvalid;
        }
        const int row = LeadRow(lead);
        return row < 0 ? kInvalid : pairs[static_cast<size_t>(row * kTrails + trail - kTrailLow)];
    }

private:
    static constexpr int kTrailLow = 0x40;
    static constexpr int kTrailHigh = 0xFC;
    static constexpr int kTrails = kTrailHigh - kTrailLow + 1;
    static constexpr int kRows = (0x9F - 0x81 + 1) + (0xFC - 0xE0 + 1);

    // Lead bytes 0x81-0x9F and 0xE0-0xFC, as rows 0-30 and 31-59.
    static int LeadRow(unsigned char lead) {
        if (lead >= 0x81 && lead <= 0x9F) {
            return lead - 0x81;
        }
        if (lead >= 0xE0 && lead <= 0xFC) {
            return lead - 0xE0 + 0x1F;
        }
        return -1;
    }

    DecodeTable() : pairs(static_cast<size_t>(kRows * kTrails), kInvalid) {
        iconv_t cd = iconv_open("UTF-16LE", "CP932");
        const auto convert = [cd](const char* bytes, size_t length) -> char16_t {
            iconv(cd, nullptr, nullptr, nullptr, nullptr);
            char in[2] = {bytes[0], length > 1 ? bytes[1] : '\0'};
            unsigned char out[8] = {};
            char* inPtr = in;
            size_t inLeft = length;
            char* outPtr = reinterpret_cast<char*>(out);
            size_t outLeft = sizeof out;
            if (iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1) ||
                inLeft != 0 || sizeof out - outLeft != 2) {
                return kInvalid;
            }
            return static_cast<char16_t>(out[0] | (out[1] << 8));
        };
        for (int b = 0; b < 0x100; ++b) {
            if (b < 0x80) {
                single[b] = static_cast<char16_t>(b);
            } else if (LeadRow(static_cast<unsigned char>(b)) >= 0) {
                single[b] = kLead;
            } else {
                single[b] = kInvalid;
            }
        }
        if (cd == kNoDescriptor) {
            return;  // no CP932 in this C library: every non-ASCII byte reads as invalid
        }
        for (int b = 0x80; b < 0x100; ++b) {
            if (single[b] != kLead) {
                const char byte = static_cast<char>(b);
                single[b] = convert(&byte, 1);
            }
        }
        for (int lead = 0x81; lead <= 0xFC; ++lead) {
            const int row = LeadRow(static_cast<unsigned char>(lead));
            if (row < 0) {
                continue;
            }
            for (int trail = kTrailLow; trail <= kTrailHigh; ++trail) {
                const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
                pairs[static_cast<size_t>(row * kTrails + trail - kTrailLow)] = convert(pair, 2);
            }
        }
        iconv_close(cd);
        MakeUtf8Forms();
    }

public:
    // The UTF-8 form of a pair as its bytes in order from the lowest, with the byte count in
    // the highest byte; 0 for an invalid pair. Lets the decoder store a character at once.
    uint32_t PairUtf8(unsigned char lead, unsigned char trail) const {
        if (trail < kTrailLow || trail > kTrailHigh) {
            return 0;
        }
        const int row = LeadRow(lead);
        return row < 0 ? 0 : pairsUtf8[static_cast<size_t>(row * kTrails + trail - kTrailLow)];
    }

private:
    void MakeUtf8Forms() {
        pairsUtf8.resize(pairs.size());
        for (size_t i = 0; i < pairs.size(); ++i) {
            if (pairs[i] == kInvalid) {
                continue;
            }
            char bytes[4] = {};
            const auto length = static_cast<uint32_t>(PutUtf8(bytes, pairs[i]) - bytes);
            pairsUtf8[i] = static_cast<unsigned char>(bytes[0]) |
                           static_cast<uint32_t>(static_cast<unsigned char>(bytes[1])) << 8 |
                           static_cast<uint32_t>(static_cast<unsigned char>(bytes[2])) << 16 |
                           length << 24;
        }
    }

    char16_t single[256] = {};
    std::vector<char16_t> pairs;
    std::vector<uint32_t> pairsUtf8;
};

// Decodes CP932 bytes through the table. Sink(char16_t) receives each character, U+FFFD
// for each invalid byte or pair (a lead byte whose trail is invalid loses only itself, so
// an ASCII trail such as '<' survives). Answers how many replacements were made.
// With consumed given, a lead byte at the very end is left for the next piece of input and
// consumed tells how far the decoding went.
template <typename Sink>
qsizetype DecodeCp932(const char* data, qsizetype size, Sink&& sink,
                      qsizetype* consumed = nullptr) {
    const DecodeTable& table = DecodeTable::Instance();
    qsizetype invalid = 0;
    const auto* p = reinterpret_cast<const unsigned char*>(data);
    const auto* end = p + size;
    while (p < end) {
        const unsigned char b = *p;
        if (b < 0x80) {
            sink(static_cast<char16_t>(b));
            ++p;
            continue;
        }
        char16_t c = table.Single(b);
        if (c == DecodeTable::kLead && consumed && p + 1 == end) {
            break;
        }
        if (c == DecodeTable::kLead) {
            c = p + 1 < end ? table.Pair(b, p[1]) : DecodeTable::kInvalid;
            if (c != DecodeTable::kInvalid) {
                sink(c);
                p += 2;
                continue;
            }
        }
        if (c == DecodeTable::kInvalid) {
            ++invalid;
            c = 0xFFFD;
        }
        sink(c);
        ++p;
    }
    if (consumed) {
        *consumed = reinterpret_cast<const char*>(p) - data;
    }
    return invalid;
}

// The descriptor to code page 932 is opened once per thread and kept: sorting and label
// checks convert one short text at a time, and opening a descriptor costs far more than the
// conversion itself. Other encodings are rare and get a descriptor per call.
class Descriptor {
public:
    Descriptor(const char* from, const char* to) {
        if (IsCp932(from, to)) {
            thread_local Cache cache;
            cd = cache.fromUtf8;
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
        iconv_t fromUtf8 = iconv_open("CP932", "UTF-8");
        ~Cache() {
            if (fromUtf8 != kNoDescriptor) {
                iconv_close(fromUtf8);
            }
        }
    };

    static bool IsCp932(const char* from, const char* to) {
        return std::strcmp(from, "UTF-8") == 0 && std::strcmp(to, "CP932") == 0;
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
    QString text(bytes.size(), Qt::Uninitialized);
    char16_t* out = reinterpret_cast<char16_t*>(text.data());
    char16_t* const start = out;
    const qsizetype invalid =
        DecodeCp932(bytes.constData(), bytes.size(), [&out](char16_t c) { *out++ = c; });
    text.truncate(out - start);
    if (ok) {
        *ok = invalid == 0;
    }
    return text;
}

qsizetype Cp932::DecodeToUtf8(const char* data, qsizetype size, QByteArray& out,
                              qsizetype* consumed) {
    const DecodeTable& table = DecodeTable::Instance();
    const qsizetype start = out.size();
    // A byte never becomes more than three bytes of UTF-8 (a single-byte katakana does); one
    // byte more lets a pair's form be stored as four bytes at once.
    out.resize(start + size * 3 + 1);
    char* put = out.data() + start;
    char* const first = put;
    qsizetype invalid = 0;
    const auto* p = reinterpret_cast<const unsigned char*>(data);
    const auto* const end = p + size;
    while (p < end) {
        const unsigned char b = *p;
        if (b < 0x80) {
            *put++ = static_cast<char>(b);
            ++p;
            continue;
        }
        if (p + 1 < end) {
            if (const uint32_t form = table.PairUtf8(b, p[1])) {
                const uint32_t ordered = qToLittleEndian(form);  // the bytes in order
                std::memcpy(put, &ordered, 4);
                put += form >> 24;
                p += 2;
                continue;
            }
        }
        char16_t c = table.Single(b);
        if (c == DecodeTable::kLead) {
            if (consumed && p + 1 == end) {
                break;  // its trail comes with the next piece
            }
            c = DecodeTable::kInvalid;
        }
        if (c == DecodeTable::kInvalid) {
            ++invalid;
            c = 0xFFFD;
        }
        put = PutUtf8(put, c);
        ++p;
    }
    if (consumed) {
        *consumed = reinterpret_cast<const char*>(p) - data;
    }
    out.resize(start + (put - first));
    return invalid;
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

QString Cp932::Unencodable(const QString& text) {
    bool ok = true;
    FromUnicode(text, &ok);
    if (ok) {
        return QString();
    }
    QString found;
    const QList<uint> points = text.toUcs4();
    for (const uint point : points) {
        const char32_t c = point;
        const QString one = QString::fromUcs4(&c, 1);
        bool single = true;
        FromUnicode(one, &single);
        if (!single && !found.contains(one)) {
            found += one;
        }
    }
    return found;
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
    if (std::strcmp(encoding, "CP932") == 0) {
        QByteArray utf8;
        if (DecodeToUtf8(bytes.constData(), bytes.size(), utf8) != 0) {
            return false;
        }
        out = std::move(utf8);
        return true;
    }
    return Convert(encoding, "UTF-8", bytes, out, false, {}, 1, nullptr);
}

bool Cp932::FromUtf8(const QByteArray& utf8, const char* encoding, QByteArray& out) {
    return Convert("UTF-8", encoding, utf8, out, false, {}, 1, nullptr);
}

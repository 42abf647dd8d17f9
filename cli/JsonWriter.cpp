#include "cli/JsonWriter.h"

#include <QStringEncoder>

namespace {

bool NeedsEscape(unsigned char c) {
    return c < 0x20 || c == '"' || c == '\\';
}

// Appends utf8 to out with JSON's escapes.
void AppendEscaped(std::string& out, QByteArrayView utf8) {
    const char* p = utf8.data();
    const char* const end = p + utf8.size();
    while (p < end) {
        // The run of bytes that need nothing goes in at once.
        const char* run = p;
        while (p < end && !NeedsEscape(static_cast<unsigned char>(*p))) {
            ++p;
        }
        out.append(run, static_cast<size_t>(p - run));
        if (p == end) {
            break;
        }
        const unsigned char c = static_cast<unsigned char>(*p++);
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default: {
                static const char hex[] = "0123456789abcdef";
                const char escaped[] = {'\\', 'u', '0', '0', hex[c >> 4], hex[c & 0xF]};
                out.append(escaped, sizeof escaped);
            }
        }
    }
}

}  // namespace

JsonWriter::JsonWriter(std::FILE* stream) : stream(stream) {
    out.reserve(kFlushSize * 2);
}

JsonWriter::~JsonWriter() {
    Flush();
}

void JsonWriter::String(QByteArrayView utf8) {
    out += '"';
    AppendEscaped(out, utf8);
    out += '"';
}

void JsonWriter::String(const QString& text) {
    // Encoded straight into the buffer's free end; escapes are rare, so the bytes are looked
    // at afterwards and only a text that needs one is written again with them.
    const size_t start = out.size();
    out.resize(start + 1 + static_cast<size_t>(text.size()) * 3);
    out[start] = '"';
    QStringEncoder encoder(QStringEncoder::Utf8);
    char* const first = out.data() + start + 1;
    char* const last = encoder.appendToBuffer(first, text);
    out.resize(static_cast<size_t>(last - out.data()));
    bool plain = true;
    for (const char* p = first; p < last; ++p) {
        if (NeedsEscape(static_cast<unsigned char>(*p))) {
            plain = false;
            break;
        }
    }
    if (!plain) {
        const QByteArray utf8(first, last - first);
        out.resize(start + 1);
        AppendEscaped(out, utf8);
    }
    out += '"';
}

void JsonWriter::Finish() {
    out += '\n';
    Flush();
    std::fflush(stream);
}

void JsonWriter::Flush() {
    if (!out.empty()) {
        std::fwrite(out.data(), 1, out.size(), stream);
        out.clear();  // keeps the capacity
    }
}

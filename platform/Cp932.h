#pragma once

#include <QByteArray>
#include <QString>

// Conversion between the program's QString text and the code page 932 bytes that deliveries,
// index files and inspection records are written in. Shift_JIS input is read as CP932, its
// superset. Decoding code page 932 goes through a table made once from glibc iconv's
// mapping; everything else goes through iconv itself.
class Cp932 {
public:
    // CP932 bytes to text. Invalid sequences become U+FFFD; ok (when given) tells whether
    // the whole input was valid.
    static QString ToUnicode(const QByteArray& bytes, bool* ok = nullptr);
    // Text to CP932 bytes. Characters without a CP932 form become '?'; ok tells whether
    // every character had one.
    static QByteArray FromUnicode(const QString& text, bool* ok = nullptr);
    // The characters of text that have no CP932 form, each once, in order of appearance; empty
    // when the whole text can be written in CP932.
    static QString Unencodable(const QString& text);
    // Length of the text in CP932 bytes: a full-width character counts 2.
    static int ByteLength(const QString& text);
    // Compares two texts by their CP932 bytes (the "Shift_JIS code order"): <0, 0 or >0.
    static int Compare(const QString& a, const QString& b);

    // Converts bytes of any encoding iconv knows into UTF-8. Answers false (and leaves out
    // untouched) for an unknown encoding name or a byte sequence invalid in that encoding.
    static bool ToUtf8(const QByteArray& bytes, const char* encoding, QByteArray& out);
    // Appends the UTF-8 form of CP932 bytes to out, each invalid byte or pair becoming U+FFFD;
    // answers the number of such replacements. With consumed given, input is taken to go on
    // after data: a lead byte at its very end is left undecoded and consumed says how many
    // bytes were used.
    static qsizetype DecodeToUtf8(const char* data, qsizetype size, QByteArray& out,
                                  qsizetype* consumed = nullptr);
    // The reverse: UTF-8 to the named encoding; false when a character has no form there.
    static bool FromUtf8(const QByteArray& utf8, const char* encoding, QByteArray& out);
};

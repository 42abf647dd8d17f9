#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <charconv>
#include <cstdio>
#include <string>

// A small JSON writer that keeps keys in the order they are written (the command line's
// output is read by people as well as by scripts). It writes as it goes: the text passes
// through a buffer of a fixed size into the stream, so a listing of 100,000 photographs is
// never held whole.
class JsonWriter {
public:
    explicit JsonWriter(std::FILE* stream = stdout);
    ~JsonWriter();
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void BeginObject() { Open('{'); }
    void EndObject() { Close('}'); }
    void BeginArray() { Open('['); }
    void EndArray() { Close(']'); }
    // A key, given in UTF-8.
    void Key(QByteArrayView utf8) {
        Separate();
        String(utf8);
        out += ": ";
        first = true;  // the value follows without a comma
    }
    void Value(const QString& text) {
        Separate();
        String(text);
    }
    // A text given in UTF-8.
    void Value(QByteArrayView utf8) {
        Separate();
        String(utf8);
    }
    void Value(const char* utf8) { Value(QByteArrayView(utf8)); }
    void Value(int number) {
        Separate();
        char digits[16];
        out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
    }
    void Value(bool flag) {
        Separate();
        out += flag ? "true" : "false";
    }
    void Null() {
        Separate();
        out += "null";
    }
    // Ends the document with a line break and writes out what is buffered.
    void Finish();

private:
    void Open(char bracket) {
        Separate();
        out += bracket;
        first = true;
    }
    void Close(char bracket) {
        out += bracket;
        first = false;
        if (out.size() >= kFlushSize) {
            Flush();
        }
    }
    void Separate() {
        if (!first) {
            out += ", ";
        }
        first = false;
    }
    void String(const QString& text);
    void String(QByteArrayView utf8);
    void Flush();

    static constexpr size_t kFlushSize = 1 << 16;

    std::FILE* stream;
    std::string out;
    bool first = true;
};

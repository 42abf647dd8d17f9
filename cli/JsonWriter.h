#pragma once

#include <QByteArray>
#include <QString>

// A small JSON writer that keeps keys in the order they are written (the command line's
// output is read by people as well as by scripts).
class JsonWriter {
public:
    void BeginObject() {
        Separate();
        out += '{';
        first = true;
    }
    void EndObject() {
        out += '}';
        first = false;
    }
    void BeginArray() {
        Separate();
        out += '[';
        first = true;
    }
    void EndArray() {
        out += ']';
        first = false;
    }
    void Key(const char* key) {
        Separate();
        String(QString::fromUtf8(key));
        out += ": ";
        first = true;  // the value follows without a comma
    }
    void Value(const QString& text) {
        Separate();
        String(text);
    }
    void Value(int number) {
        Separate();
        out += QByteArray::number(number);
    }
    void Value(bool flag) {
        Separate();
        out += flag ? "true" : "false";
    }
    void Null() {
        Separate();
        out += "null";
    }
    const QByteArray& Result() const { return out; }

private:
    void Separate() {
        if (!first) {
            out += ", ";
        }
        first = false;
    }
    void String(const QString& text);

    QByteArray out;
    bool first = true;
};

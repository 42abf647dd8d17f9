#pragma once

#include <QString>

// One thing a delivery check found: which check (code), how bad, which photograph, file and
// element it concerns, and the sentence an inspector reads.
struct ToviCheckFinding {
    enum Severity { Error = 0, Warning = 1, Note = 2 };
    static constexpr int kSeverityCount = 3;

    // A short stable ASCII name such as "date.outside-period"; always a string literal, so
    // that a hundred thousand findings share it.
    const char* code = "";
    Severity severity = Error;
    int index = -1;   // the photograph's position in PHOTO.XML; -1 for none
    QString file;     // relative to the PHOTO folder ("PIC/P0000001.JPG"); empty for none
    QString item;     // the element's name ("撮影年月日"); empty for none
    QString message;  // Japanese

    // A finding about an element of a photograph (index -1: of the delivery), or about a file.
    static ToviCheckFinding Of(const char* code, Severity severity, int index, const QString& item,
                               const QString& message) {
        return Of(code, severity, index, QString(), item, message);
    }
    static ToviCheckFinding Of(const char* code, Severity severity, int index, const QString& file,
                               const QString& item, const QString& message) {
        ToviCheckFinding finding;
        finding.code = code;
        finding.severity = severity;
        finding.index = index;
        finding.file = file;
        finding.item = item;
        finding.message = message;
        return finding;
    }

    // "error", "warning" or "note".
    static const char* SeverityName(Severity severity);
    // "エラー", "警告" or "注意".
    static QString SeverityLabel(Severity severity);
};

inline const char* ToviCheckFinding::SeverityName(Severity severity) {
    switch (severity) {
        case Error:
            return "error";
        case Warning:
            return "warning";
        case Note:
            break;
    }
    return "note";
}

inline QString ToviCheckFinding::SeverityLabel(Severity severity) {
    switch (severity) {
        case Error:
            return QStringLiteral("エラー");
        case Warning:
            return QStringLiteral("警告");
        case Note:
            break;
    }
    return QStringLiteral("注意");
}

#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// What a run of a program printed and how it ended.
struct ProgramRun {
    // The exit code; -1 when the program did not start or did not end within a minute (it is
    // then killed), -2 when it crashed.
    int exitCode = -1;
    QByteArray out;
    QString err;  // standard error as UTF-8
};

// Runs program with args and waits for it. An empty environment means this process's own.
ProgramRun RunProgram(const QString& program, const QStringList& args,
                      const QProcessEnvironment& environment = QProcessEnvironment());

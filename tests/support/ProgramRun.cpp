#include "tests/support/ProgramRun.h"

#include <QProcess>

ProgramRun RunProgram(const QString& program, const QStringList& args,
                      const QProcessEnvironment& environment) {
    QProcess process;
    if (!environment.isEmpty()) {
        process.setProcessEnvironment(environment);
    }
    process.start(program, args);
    ProgramRun run;
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = process.readAllStandardOutput();
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

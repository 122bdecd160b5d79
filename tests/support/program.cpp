#include "tests/support/program.h"

#include <QProcess>

using namespace Qt::StringLiterals;

ProgramRun::ProgramRun(const QString &path, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    process.setProcessEnvironment(environment);
    process.start(path, arguments);
    // As long as the test itself may take.
    const bool ended = process.waitForFinished(-1);
    output = QString::fromUtf8(process.readAllStandardOutput());
    errors = QString::fromUtf8(process.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
    if (ended && process.exitStatus() == QProcess::NormalExit)
        status = process.exitCode();
    else
        errors.append(process.errorString());
}

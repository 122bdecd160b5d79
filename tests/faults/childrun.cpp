#include "tests/faults/childrun.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;

static const char *const childMark = "ORRINET_CHILD";

bool inChild()
{
    return qEnvironmentVariableIsSet(childMark);
}

/// As it is given to QtTest on the command line.
static QString nameOfThisTest()
{
    const QString function = QString::fromUtf8(QTest::currentTestFunction());
    const char *tag = QTest::currentDataTag();
    return tag != nullptr ? function + u':' + QString::fromUtf8(tag) : function;
}

/// Gives it the program, the arguments and the environment.
static void prepare(QProcess &child, const Variables &variables, const std::source_location &where)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(childMark), u"1"_s);
    for (const auto &[name, value] : variables)
        environment.insert(name, value);
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.setProgram(QCoreApplication::applicationFilePath());
    child.setArguments({QFileInfo(QString::fromUtf8(where.file_name())).completeBaseName(), nameOfThisTest()});
}

static void runToEnd(QProcess &child)
{
    QEventLoop loop;
    QObject::connect(&child, &QProcess::stateChanged, &loop, [&loop](QProcess::ProcessState state) {
        if (state == QProcess::NotRunning)
            loop.quit();
    });
    child.start();
    if (child.state() != QProcess::NotRunning)
        loop.exec();
}

bool passesInChild(const Variables &variables, const Handicap &handicap, const std::source_location &where)
{
    QProcess child;
    prepare(child, variables, where);
    if (handicap)
        child.setChildProcessModifier([&child, &handicap] { handicap(child); });
    runToEnd(child);
    const QByteArray output = child.readAll();
    const bool passed = child.error() == QProcess::UnknownError && child.exitStatus() == QProcess::NormalExit &&
                        child.exitCode() == 0 && !output.contains("SKIP   : ");
    if (!passed)
        QTest::qFail(qPrintable(child.errorString() + u'\n' + QString::fromUtf8(output)), __FILE__, __LINE__);
    return passed;
}

void endInChild(const Variables &variables, const std::source_location &where)
{
    QProcess child;
    prepare(child, variables, where);
    child.setArguments(child.arguments() << u"-nocrashhandler"_s);
    runToEnd(child);
    if (child.error() == QProcess::FailedToStart)
        QTest::qFail(qPrintable(child.errorString()), __FILE__, __LINE__);
}

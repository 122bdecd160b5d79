// The one test program: runs the test class that its first argument names.

#include "standin/privatehome.h"
#include "tests/support/surroundings.h"
#include "tests/support/testcase.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace Qt::StringLiterals;

#ifdef Q_OS_LINUX
// Take the place of the system's: waiting for the disk is what takes most of the time, and no test pulls the plug.
extern "C" int fsync(int /*file*/)
{
    return 0;
}
extern "C" int fdatasync(int /*file*/)
{
    return 0;
}
#endif

static bool resourcesStood = false;

static QMap<QString, MakeTest> &tests()
{
    static QMap<QString, MakeTest> all;
    return all;
}

bool registerTest(const char *file, MakeTest make)
{
    tests().insert(QFileInfo(QString::fromUtf8(file)).completeBaseName(), make);
    return true;
}

bool resourcesStoodBeforeMain()
{
    return resourcesStood;
}

static int printNames()
{
    for (const auto names = tests().keys(); const QString &name : names)
        std::puts(qUtf8Printable(name));
    return 2;
}

int main(int argc, char *argv[])
{
    resourcesStood = QFile::exists(u":/VERSION.txt"_s) && QFile::exists(u":/project/sql/schema.sql"_s) &&
                     QFile::exists(u":/icons/resources/icons/svg/orrinet.svg"_s);
    const MakeTest make = argc > 1 ? tests().value(QString::fromLocal8Bit(argv[1])) : nullptr;
    if (make == nullptr)
        return printNames();

    const QTemporaryDir home;
    leaveUsersHome(home.path());
    // QtTest is to see the program's name and what follows the test's.
    argv[1] = argv[0];
    --argc;
    ++argv;
    if (!takeClock())
        return 2;
    QApplication application(argc, argv);
    application.setAttribute(Qt::AA_Use96Dpi, true);
    if (!takeLook())
        return 2;
    QTEST_SET_MAIN_SOURCE_PATH
    const std::unique_ptr<QObject> test = make();
    return QTest::qExec(test.get(), argc, argv);
}

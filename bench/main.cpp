// Prints a table of what the program costs, each figure beside one of the same run to measure it against.

#include "bench/report.h"
#include "bench/startbench.h"
#include "bench/suites.h"

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <string_view>

using namespace Qt::StringLiterals;

/// Nothing of the user's is read or written, by this process or by those that it starts.
static void moveInto(const QTemporaryDir &home)
{
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.filePath(u".config"_s)));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(home.filePath(u".cache"_s)));
    qunsetenv("ORRINET_TEST_MODE");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.filePath(u".config"_s));
}

static void quiet(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    if (type != QtInfoMsg && !message.startsWith("This plugin does not support"_L1))
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
}

int main(int argc, char *argv[])
{
    qInstallMessageHandler(quiet);
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if (mode == showEmptyArgument || mode == showProgramArgument)
        return showWindow(argc, argv, mode == showEmptyArgument);

    const QTemporaryDir home;
    moveInto(home);
    benchmark::Initialize(&argc, argv);
    const QApplication application(argc, argv);
    Report report;
    addStartBenchmarks(report);
    addGridBenchmarks(report);
    addCycleBenchmarks(report);
    addRunBenchmarks(report);
    benchmark::RunSpecifiedBenchmarks(&report);
    report.print();
    return 0;
}

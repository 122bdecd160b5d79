// Prints a table of what the program costs, each figure beside one of the same run to measure it against. With --smoke
// every benchmark runs once and in a small size: the figures mean nothing then, but they are all there. With --soak a
// long run with faults takes their place, and the status says whether it kept its promises.

#include "bench/report.h"
#include "bench/soak.h"
#include "bench/startbench.h"
#include "bench/suites.h"
#include "standin/privatehome.h"

#include <QApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <string_view>

using namespace Qt::StringLiterals;

/// Takes a flag out of the arguments; false where it is not among them.
static bool take(int &argc, char *argv[], std::string_view flag)
{
    char **const end = argv + argc;
    char **const kept = std::remove_if(argv + 1, end, [flag](const char *argument) { return argument == flag; });
    argc = int(kept - argv);
    return kept != end;
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
    if (mode == showEmptyArgument || mode == showFloorArgument || mode == showProgramArgument)
        return showWindow(argc, argv, mode);

    const QTemporaryDir home;
    leaveUsersHome(home.path());
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const Extent extent = take(argc, argv, "--smoke") ? Extent::Smoke : Extent::Whole;
    const bool soaks = take(argc, argv, "--soak");
    benchmark::Initialize(&argc, argv);
    const QApplication application(argc, argv);
    // The benchmarks read and write their figures in the form of the locale, and know no decimal comma.
    std::setlocale(LC_NUMERIC, "C");
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    Report report;
    if (soaks)
        return soak(report, extent);
    addStartBenchmarks(report, extent);
    addPanelBenchmarks(report, extent);
    addGridBenchmarks(report, extent);
    addLogBenchmarks(report, extent);
    addFileBenchmarks(report, extent);
    addCycleBenchmarks(report, extent);
    addRunBenchmarks(report, extent);
    addBridgeBenchmarks(report, extent);
#ifdef ORRINET_STUDY
    addStudyBenchmarks(report, extent);
#endif
    benchmark::RunSpecifiedBenchmarks(&report);
    report.print();
    return 0;
}

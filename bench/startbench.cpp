#include "bench/startbench.h"

#include "app/mainwindow.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QApplication>
#include <QLabel>
#include <QProcess>
#include <QSqlDatabase>
#include <QTimer>
#include <QWindow>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;
using Unit = Report::Unit;

/// What every program with a text and a database in memory pays: the fonts, the driver, a first picture.
static std::unique_ptr<QWidget> makeFloor()
{
    auto label = std::make_unique<QLabel>(u"Orrinet"_s);
    QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s);
    database.setDatabaseName(u":memory:"_s);
    if (!database.open())
        qFatal("no database");
    return label;
}

static std::unique_ptr<QWidget> makeWindow(std::string_view mode)
{
    if (mode == showEmptyArgument)
        return std::make_unique<QWidget>();
    if (mode == showFloorArgument)
        return makeFloor();
    return std::make_unique<MainWindow>(nullptr);
}

int showWindow(int argc, char *argv[], std::string_view mode)
{
    const QApplication application(argc, argv);
    const std::unique_ptr<QWidget> window = makeWindow(mode);
    window->show();
    while (!window->windowHandle()->isExposed())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    settle();
    std::puts("shown");
    std::fflush(stdout);
    return 0;
}

static double timeStart(Samples &samples, const char *argument)
{
    QProcess process;
    const double seconds = samples.time([&] {
        process.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(argument)});
        if (!process.waitForReadyRead() || process.readAllStandardOutput() != "shown\n")
            qFatal("no window came");
    });
    process.waitForFinished();
    return seconds;
}

static void start(benchmark::State &state)
{
    // The first start of all fills the caches of the system.
    Samples first;
    timeStart(first, showProgramArgument);
    Samples program(Clock::Wall);
    Samples empty(Clock::Wall);
    Samples floor(Clock::Wall);
    for ([[maybe_unused]] const auto _ : state) {
        state.SetIterationTime(timeStart(program, showProgramArgument));
        timeStart(empty, showEmptyArgument);
        timeStart(floor, showFloorArgument);
    }
    state.counters["program"] = program.median();
    state.counters["empty"] = empty.median();
    state.counters["floor"] = floor.median();
    state.counters["ratio"] = program.median() / empty.median();
    state.counters["floor ratio"] = program.median() / floor.median();
}

void addStartBenchmarks(Report &report, Extent extent)
{
    report.addTable("start", "From the start of the process to a shown window",
                    {{"program", "program", Unit::Milliseconds},
                     {"empty window", "empty", Unit::Milliseconds},
                     {"program : empty", "ratio", Unit::Ratio},
                     {"text and database", "floor", Unit::Milliseconds},
                     {"program : text and database", "floor ratio", Unit::Ratio}});
    benchmark::RegisterBenchmark("start/window", start)->Iterations(extent == Extent::Smoke ? 1 : 21)->UseManualTime();
}

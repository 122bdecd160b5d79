#include "bench/startbench.h"

#include "app/mainwindow.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QApplication>
#include <QProcess>
#include <QTimer>
#include <QWindow>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;
using Unit = Report::Unit;

int showWindow(int argc, char *argv[], bool empty)
{
    const QApplication application(argc, argv);
    const std::unique_ptr<QWidget> window(empty ? new QWidget : new MainWindow(nullptr));
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
    for ([[maybe_unused]] const auto _ : state) {
        state.SetIterationTime(timeStart(program, showProgramArgument));
        timeStart(empty, showEmptyArgument);
    }
    state.counters["program"] = program.median();
    state.counters["empty"] = empty.median();
    state.counters["ratio"] = program.median() / empty.median();
}

void addStartBenchmarks(Report &report)
{
    report.addTable("start", "From the start of the process to a shown window",
                    {{"program", "program", Unit::Milliseconds},
                     {"empty window", "empty", Unit::Milliseconds},
                     {"program : empty", "ratio", Unit::Ratio}});
    benchmark::RegisterBenchmark("start/window", start)->Iterations(21)->UseManualTime();
}

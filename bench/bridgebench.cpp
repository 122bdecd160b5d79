// Runs without a window: orrinet-bridge in a process of its own, so that what it takes is told apart from the endpoint.

#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"

#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>

#include <unistd.h>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Reply;
using Unit = Report::Unit;

namespace {

/// What a process has used by now.
struct Usage
{
    double seconds = 0; ///< of processor time
    double bytes = 0;   ///< of memory, resident

    static Usage of(qint64 process);
};

struct Outcome
{
    double seconds = 0; ///< from the first request to the end
    Usage early;        ///< at a tenth of the answers
    Usage late;         ///< at the last one
    int earlyAnswers = 0;
    int answers = 0;
};

} // namespace

static QList<QByteArray> wordsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ') : QList<QByteArray>();
}

Usage Usage::of(qint64 process)
{
    const QString folder = u"/proc/%1/"_s.arg(process);
    // User and system time stand behind the name, which is in brackets and has no blank here.
    const QList<QByteArray> times = wordsOf(folder + "stat"_L1);
    const QList<QByteArray> sizes = wordsOf(folder + "statm"_L1);
    if (times.size() < 15 || sizes.size() < 2)
        return {};
    return {.seconds = (times.at(13).toDouble() + times.at(14).toDouble()) / double(sysconf(_SC_CLK_TCK)),
            .bytes = sizes.at(1).toDouble() * double(sysconf(_SC_PAGESIZE))};
}

/// A project of so many personas and questions, without answers.
static QString writeProject(const QTemporaryDir &folder, int personas, int questions)
{
    const QString path = folder.filePath(u"%1x%2.ormt"_s.arg(personas).arg(questions));
    if (!QFile::exists(path)) {
        Survey survey(personas, questions, 0, Survey::Tab::Empty);
        survey.call("saveProjectToFile", path);
    }
    return path;
}

/// Runs a project until it has this many answers, at an endpoint that takes its time for each.
static Outcome runProject(const QString &project, int jobs, int answers, int delay)
{
    ChatEndpoint endpoint;
    endpoint.takePlainRequests();
    QProcess process;
    const QTemporaryDir folder;
    Outcome outcome;
    Samples whole(Clock::Wall);
    endpoint.answerWith([&](const standin::Request &) {
        const int number = int(endpoint.requests().size());
        if (number == answers / 10) {
            outcome.early = Usage::of(process.processId());
            outcome.earlyAnswers = number;
        }
        if (number == answers)
            outcome.late = Usage::of(process.processId());
        outcome.answers = number;
        return Reply::toolCall(Survey::replyObject(number)).delayed(delay).keptAlive();
    });
    process.start(QStringLiteral(ORRINET_BRIDGE),
                  {u"--to"_s, u"http://127.0.0.1:%1/v1"_s.arg(endpoint.port()), u"--run"_s, project, u"--save"_s,
                   folder.filePath(u"out.ormt"_s), u"--jobs"_s, QString::number(jobs), u"--max-requests"_s,
                   QString::number(answers), u"--quiet"_s});
    QEventLoop loop;
    double begin = 0;
    QObject::connect(&endpoint, &ChatEndpoint::requestArrived, &loop,
                     [&begin](int index) { begin = index == 0 ? now(Clock::Wall) : begin; });
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    loop.exec();
    outcome.seconds = now(Clock::Wall) - begin;
    return outcome;
}

/// Each job gets this many personas, so that all of them are at work to the end.
static void runJobs(benchmark::State &state, int jobs, int personasEach, int delay)
{
    static constexpr int questions = 10;
    static double rateOfOne = 0;
    const QTemporaryDir folder;
    const int answers = jobs * personasEach * questions;
    const QString project = writeProject(folder, jobs * personasEach, questions);
    for ([[maybe_unused]] const auto _ : state) {
        const Outcome outcome = runProject(project, jobs, answers, delay);
        const double rate = outcome.answers / outcome.seconds;
        if (jobs == 1)
            rateOfOne = rate;
        state.SetIterationTime(outcome.seconds);
        state.counters["run"] = outcome.seconds;
        state.counters["rate"] = rate;
        if (rateOfOne > 0)
            state.counters["of ideal"] = rate / (rateOfOne * jobs);
    }
}

/// The time from one request of the window to the next, less the endpoint's own, when so many answers are there.
static double windowCycle(int personas, int questions, int before)
{
    Survey survey(personas, questions, before, Survey::Tab::Results);
    QSettings().setValue(u"openai/api_key"_s, u"none"_s);
    ChatEndpoint endpoint;
    const standin::Detour detour(endpoint);
    endpoint.answerWith([&](const standin::Request &) {
        return Reply::toolCall(Survey::replyObject(before + int(endpoint.requests().size())));
    });
    Samples cycles;
    QEventLoop loop;
    double begin = -1;
    QObject::connect(&endpoint, &ChatEndpoint::requestArrived, &loop, [&](int index) {
        const double end = now(Clock::Wall) - (double(endpoint.ownTime()) * 1e-9);
        if (begin >= 0)
            cycles.add(end - begin);
        begin = end;
        if (index == 2 * questions)
            loop.quit();
    });
    survey.call("runSurvey");
    loop.exec();
    QSettings().clear();
    return cycles.median();
}

static void compareWithWindow(benchmark::State &state, int personas, int questions, int answers)
{
    const QTemporaryDir folder;
    const QString project = writeProject(folder, personas, questions);
    const int all = personas * questions;
    for ([[maybe_unused]] const auto _ : state) {
        const Outcome outcome = runProject(project, 1, answers, 0);
        const int counted = answers - outcome.earlyAnswers;
        const double each = (outcome.late.seconds - outcome.early.seconds) / counted;
        const double window = (windowCycle(personas, questions, 0) + windowCycle(personas, questions, all / 2)) / 2;
        state.SetIterationTime(outcome.seconds);
        state.counters["each"] = each;
        state.counters["window"] = window;
        state.counters["ratio"] = each / window;
        state.counters["memory"] = (outcome.late.bytes - outcome.early.bytes) / counted;
    }
}

void addBridgeBenchmarks(Report &report, Extent extent)
{
    report.addTable("jobs", "Runs without a window, the endpoint's delay apart",
                    {{"run", "run", Unit::Seconds},
                     {"answers per second", "rate", Unit::Ratio},
                     {"of N times one job", "of ideal", Unit::Ratio}});
    report.addTable("headless", "One answer of a run without a window",
                    {{"processor time", "each", Unit::Milliseconds},
                     {"window's cycle", "window", Unit::Milliseconds},
                     {"run : window", "ratio", Unit::Ratio},
                     {"memory", "memory", Unit::Kilobytes}});
    const auto addJobs = [](int jobs, int personasEach, int delay) {
        const std::string name = "jobs/" + std::to_string(jobs) + (jobs == 1 ? " job" : " jobs");
        benchmark::RegisterBenchmark(name, runJobs, jobs, personasEach, delay)->Iterations(1)->UseManualTime();
    };
    const auto addComparison = [](int personas, int questions, int answers) {
        const std::string name = "headless/" + std::to_string(personas) + "x" + std::to_string(questions);
        benchmark::RegisterBenchmark(name, compareWithWindow, personas, questions, answers)
            ->Iterations(1)
            ->UseManualTime();
    };
    if (extent == Extent::Smoke) {
        addJobs(1, 1, 1);
        addJobs(4, 1, 1);
        addComparison(15, 9, 90);
        return;
    }
    for (const int jobs : {1, 4, 16, 64})
        addJobs(jobs, 3, 500);
    addComparison(1000, 20, 4000);
}

// One answer of a run, from one storing to the next: refresh, choose, ask over TLS, parse, store.

#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"

#include <QEventLoop>
#include <QSettings>
#include <QSqlQuery>
#include <QTableWidget>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Reply;
using Unit = Report::Unit;

namespace {

struct RunSize
{
    int personas;
    int questions;

    /// So that all answers have histories of the same lengths.
    int cycles() const { return 2 * questions; }
};

enum class Grid { Rebuilt, LeftOut };

} // namespace

/// Notes the times from one refresh of the grid to the next, less the time that the endpoint took for itself.
static Samples runCycles(Survey &survey, const ChatEndpoint &endpoint, int cycles, Grid grid)
{
    Samples samples;
    QEventLoop loop;
    double begin = -1;
    int refreshes = 0;
    const auto note = [&] {
        const double end = now(Clock::Wall) - (double(endpoint.ownTime()) * 1e-9);
        if (begin >= 0)
            samples.add(end - begin);
        begin = end;
        if (++refreshes == cycles)
            loop.quit();
    };
    QObject::connect(survey.table()->model(), &QAbstractItemModel::modelReset, &loop, note);
    survey.call("runSurvey");
    // The run has read its personas. A refresh that can't read them ends when it has emptied the grid.
    if (grid == Grid::LeftOut)
        QSqlQuery(survey.database()).exec(u"ALTER TABLE personas RENAME TO elsewhere"_s);
    loop.exec();
    return samples;
}

/// The median time of one answer, after which so many are there.
static double cycleTime(const RunSize &size, int answer, Grid grid)
{
    const int before = answer == 1 ? 0 : answer - size.cycles();
    Survey survey(size.personas, size.questions, before, Survey::Tab::Results);
    QSettings().setValue(u"openai/api_key"_s, u"none"_s);
    ChatEndpoint endpoint;
    const standin::Detour detour(endpoint);
    endpoint.answerWith([&](const standin::Request &) {
        return Reply::toolCall(Survey::replyObject(before + int(endpoint.requests().size())));
    });
    const double median = runCycles(survey, endpoint, size.cycles(), grid).median();
    QSettings().clear();
    return median;
}

static void askOne(benchmark::State &state, const RunSize &size, int answer)
{
    for ([[maybe_unused]] const auto _ : state) {
        const double cycle = cycleTime(size, answer, Grid::Rebuilt);
        state.SetIterationTime(cycle);
        state.counters["cycle"] = cycle;
        state.counters["rest"] = cycleTime(size, answer, Grid::LeftOut);
    }
}

void addCycleBenchmarks(Report &report, Extent extent)
{
    const bool isSmoke = extent == Extent::Smoke;
    const RunSize size = isSmoke ? RunSize{15, 9} : RunSize{200, 20};
    const std::string title = "One answer over TLS in a run of " + std::to_string(size.personas) + "x" +
                              std::to_string(size.questions) + ", the endpoint's own time taken off";
    report.addTable("cycle", title,
                    {{"whole cycle", "cycle", Unit::Milliseconds}, {"without the grid", "rest", Unit::Milliseconds}});
    for (const int answer : isSmoke ? std::vector{1} : std::vector{1, 1000, 4000}) {
        benchmark::RegisterBenchmark("cycle/answer " + std::to_string(answer), askOne, size, answer)
            ->Iterations(1)
            ->UseManualTime();
    }
}

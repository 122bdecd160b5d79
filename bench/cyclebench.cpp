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

static constexpr int personas = 200;
static constexpr int questions = 20;
static constexpr int cycles = 2 * questions; // so that all answers have histories of the same lengths

enum class Grid { Rebuilt, LeftOut };

/// Notes the times from one refresh of the grid to the next, less the time that the endpoint took for itself.
static Samples runCycles(Survey &survey, const ChatEndpoint &endpoint, Grid grid)
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
static double cycleTime(int answer, Grid grid)
{
    const int before = answer == 1 ? 0 : answer - cycles;
    Survey survey(personas, questions, before, Survey::Tab::InFront);
    QSettings().setValue(u"openai/api_key"_s, u"none"_s);
    ChatEndpoint endpoint;
    const standin::Detour detour(endpoint);
    endpoint.answerWith([&](const standin::Request &) {
        return Reply::toolCall(Survey::replyObject(before + int(endpoint.requests().size())));
    });
    const double median = runCycles(survey, endpoint, grid).median();
    QSettings().clear();
    return median;
}

static void askOne(benchmark::State &state, int answer)
{
    for ([[maybe_unused]] const auto _ : state) {
        const double cycle = cycleTime(answer, Grid::Rebuilt);
        state.SetIterationTime(cycle);
        state.counters["cycle"] = cycle;
        state.counters["rest"] = cycleTime(answer, Grid::LeftOut);
    }
}

void addCycleBenchmarks(Report &report)
{
    report.addTable("cycle", "One answer over TLS in a run of 200x20, the endpoint's own time taken off",
                    {{"whole cycle", "cycle", Unit::Milliseconds}, {"without the grid", "rest", Unit::Milliseconds}});
    for (const int answer : {1, 1000, 4000}) {
        benchmark::RegisterBenchmark("cycle/answer " + std::to_string(answer), askOne, answer)
            ->Iterations(1)
            ->UseManualTime();
    }
}

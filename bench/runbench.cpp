// Whole runs that need no network.

#include "bench/literal.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QTableWidget>

using Unit = Report::Unit;

static void setCounters(benchmark::State &state, double seconds, int pairs)
{
    state.SetIterationTime(seconds);
    state.counters["run"] = seconds;
    state.counters["per pair"] = seconds / pairs;
}

static double timeRun(Survey &survey)
{
    return Samples().time([&] { survey.call("runSurvey"); });
}

/// What the refreshes alone of such a run take the plain way, from one refresh at each @p step th answer.
static double literalRefreshes(int personas, int questions, int step)
{
    Survey survey(personas, questions, 0, Survey::Tab::Behind);
    double seconds = 0;
    for (int answers = step; answers <= personas * questions; answers += step) {
        survey.addAnswers(answers - step, answers);
        seconds += Samples().time([&] { rebuildLiterally(survey.table(), survey.database()); }) * step;
    }
    return seconds;
}

static void runInTestMode(benchmark::State &state, int personas, int questions, bool literal)
{
    for ([[maybe_unused]] const auto _ : state) {
        Survey survey(personas, questions, 0, Survey::Tab::Behind);
        qputenv("ORRINET_TEST_MODE", "1");
        setCounters(state, timeRun(survey), personas * questions);
        qunsetenv("ORRINET_TEST_MODE");
    }
    if (literal)
        state.counters["literal"] = literalRefreshes(personas, questions, personas);
}

static void runWithoutKey(benchmark::State &state, int personas, int questions)
{
    for ([[maybe_unused]] const auto _ : state) {
        Survey survey(personas, questions, 0, Survey::Tab::Behind);
        // One warning for each pair.
        const QtMessageHandler before = qInstallMessageHandler([](auto, const auto &, const auto &) {});
        setCounters(state, timeRun(survey), personas * questions);
        qInstallMessageHandler(before);
    }
}

static void runFinished(benchmark::State &state, int personas, int questions)
{
    static constexpr int step = 10;
    Survey survey(personas, questions, personas * questions, Survey::Tab::Behind);
    Samples run;
    Samples refresh;
    for ([[maybe_unused]] const auto _ : state) {
        refresh.time([&] { survey.refresh(); });
        settle();
        state.SetIterationTime(run.time([&] { survey.call("runSurvey"); }));
        settle();
    }
    const double seconds = run.median();
    state.counters["run"] = seconds;
    state.counters["per pair"] = seconds / (personas * questions);
    state.counters["refresh"] = refresh.median();
    state.counters["literal"] = Samples().time([&] { countAnswers(survey.database(), step); }) * step;
}

void addRunBenchmarks(Report &report)
{
    report.addTable("run", "Runs without a network",
                    {{"run", "run", Unit::Seconds},
                     {"per pair", "per pair", Unit::Microseconds},
                     {"of it the refresh at the end", "refresh", Unit::Seconds},
                     {"literal", "literal", Unit::Seconds}});
    const auto add = [](const char *name, auto function, auto... arguments) {
        return benchmark::RegisterBenchmark(name, function, arguments...)->Iterations(1)->UseManualTime();
    };
    add("run/test mode, 30x30", runInTestMode, 30, 30, true);
    add("run/test mode, 200x20", runInTestMode, 200, 20, false);
    add("run/without a key, 1000x30", runWithoutKey, 1000, 30);
    add("run/finished survey, 1000x20", runFinished, 1000, 20)->Iterations(5);
}

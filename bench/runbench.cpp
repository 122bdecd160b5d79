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
    Survey survey(personas, questions, 0, Survey::Tab::Empty);
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
        Survey survey(personas, questions, 0, Survey::Tab::Empty);
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
        Survey survey(personas, questions, 0, Survey::Tab::Empty);
        // One warning for each pair.
        const QtMessageHandler before = qInstallMessageHandler([](auto, const auto &, const auto &) {});
        setCounters(state, timeRun(survey), personas * questions);
        qInstallMessageHandler(before);
    }
}

static void runFinished(benchmark::State &state, int personas, int questions)
{
    static constexpr int step = 10;
    Survey survey(personas, questions, personas * questions, Survey::Tab::Empty);
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

void addRunBenchmarks(Report &report, Extent extent)
{
    report.addTable("run", "Runs without a network",
                    {{"run", "run", Unit::Seconds},
                     {"per pair", "per pair", Unit::Microseconds},
                     {"of it the refresh at the end", "refresh", Unit::Seconds},
                     {"literal", "literal", Unit::Seconds}});
    const auto add = [](const std::string &name, auto function, int personas, int questions, auto... others) {
        const std::string title = "run/" + name + ", " + std::to_string(personas) + "x" + std::to_string(questions);
        return benchmark::RegisterBenchmark(title, function, personas, questions, others...)
            ->Iterations(1)
            ->UseManualTime();
    };
    if (extent == Extent::Smoke) {
        add("test mode", runInTestMode, 15, 9, true);
        add("without a key", runWithoutKey, 15, 9);
        add("finished survey", runFinished, 15, 9);
        return;
    }
    add("test mode", runInTestMode, 30, 30, true);
    add("test mode", runInTestMode, 200, 20, false);
    add("without a key", runWithoutKey, 1000, 30);
    add("finished survey", runFinished, 1000, 20)->Iterations(5);
}

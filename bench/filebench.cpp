// Project files and packs of a large panel. Each statement commits alone and no copy is held back for another, so these
// figures say what that costs, beside no floor.

#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using Unit = Report::Unit;

namespace {

constexpr int questions = 20;

void setCounter(benchmark::State &state, double seconds)
{
    state.SetIterationTime(seconds);
    state.counters["time"] = seconds;
}

double timeCall(Survey &survey, const char *slot, const QString &path)
{
    return Samples(Clock::Wall).time([&] {
        survey.call(slot, path);
        settle();
    });
}

void saveAndOpen(benchmark::State &state, int personas, bool open)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"project.ormt"_s);
    for ([[maybe_unused]] const auto _ : state) {
        QFile::remove(path);
        Survey survey(personas, questions, personas * questions, Survey::Tab::Empty, 2000);
        const double saved = timeCall(survey, "saveProjectToFile", path);
        setCounter(state, open ? timeCall(survey, "openProjectFromFile", path) : saved);
    }
}

void exportAndImport(benchmark::State &state, int personas, bool import)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"panel.ornk"_s);
    for ([[maybe_unused]] const auto _ : state) {
        QFile::remove(path);
        double seconds = 0;
        {
            Survey survey(personas, questions, 0, Survey::Tab::Empty, 2000);
            seconds = timeCall(survey, "exportPackToFile", path);
        }
        if (import) {
            Survey survey(0, questions, 0, Survey::Tab::Empty);
            seconds = timeCall(survey, "importPack", path);
        }
        setCounter(state, seconds);
    }
}

} // namespace

void addFileBenchmarks(Report &report, Extent extent)
{
    const int personas = extent == Extent::Smoke ? 15 : 1000;
    report.addTable("file", "Files of " + std::to_string(personas) + " personas and 20 questions",
                    {{"time", "time", Unit::Milliseconds}});
    const auto add = [personas](const char *name, auto function, bool second) {
        benchmark::RegisterBenchmark(name, function, personas, second)->Iterations(1)->UseManualTime();
    };
    add("file/save", saveAndOpen, false);
    add("file/open", saveAndOpen, true);
    add("file/export", exportAndImport, false);
    add("file/import", exportAndImport, true);
}

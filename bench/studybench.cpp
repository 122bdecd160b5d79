// What comes before and after a run: orrinet-study in a process of its own, which tells what it took when it ends.

#include "bench/memory.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <functional>

using namespace Qt::StringLiterals;
using Unit = Report::Unit;

namespace {

struct Taken
{
    bool done = false;
    double seconds = 0;
    double bytes = 0; ///< of memory at most
};

/// Output and messages go nowhere.
[[noreturn]] void become(const QList<QByteArray> &words)
{
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    std::vector<char *> arguments;
    for (const QByteArray &word : words)
        arguments.push_back(const_cast<char *>(word.constData()));
    arguments.push_back(nullptr);
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::execvp(arguments.front(), arguments.data());
    std::_Exit(127);
}

/// Runs a process that asked to be traced to its end; returns how it ended. The kernel's own figure for a child begins
/// with what its parent held when it forked, so the child is asked itself, right before it is gone.
int runTraced(pid_t child, double &memory)
{
    int status = 0;
    if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status))
        return status;
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACEEXIT | PTRACE_O_EXITKILL);
    ::ptrace(PTRACE_CONT, child, nullptr, nullptr);
    while (::waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        const bool ends = status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8));
        if (ends)
            memory = statusBytes("VmHWM:", child);
        ::ptrace(PTRACE_CONT, child, nullptr, ends ? 0 : WSTOPSIG(status));
    }
    return status;
}

/// A check that finds something, and what has findings, has done its work as well.
Taken run(const QStringList &command)
{
    QList<QByteArray> words;
    for (const QString &word : command)
        words << word.toLocal8Bit();
    const double begin = now(Clock::Wall);
    const pid_t child = ::fork();
    if (child == 0)
        become(words);
    if (child < 0)
        return {};
    Taken taken;
    const int status = runTraced(child, taken.bytes);
    taken.done = WIFEXITED(status) && WEXITSTATUS(status) <= 1;
    taken.seconds = now(Clock::Wall) - begin;
    return taken;
}

/// The one in the middle of three: the machine has other work too.
Taken middleOf(const std::function<Taken()> &once)
{
    std::array<Taken, 3> all{once(), once(), once()};
    std::sort(all.begin(), all.end(), [](const Taken &a, const Taken &b) { return a.seconds < b.seconds; });
    return all[0].done && all[1].done && all[2].done ? all[1] : Taken();
}

qint64 sizeOf(const QString &folder)
{
    qint64 size = 0;
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
        size += files.nextFileInfo().size();
    return size;
}

/// The long form as the database's own command writes it.
double floorOf(const QString &project, const QString &file)
{
    const QStringList command{u"sqlite3"_s,
                              u"-csv"_s,
                              u"-header"_s,
                              project,
                              u".output "_s + file,
                              u"SELECT p.uuid, p.name, q.question_id, q.order_num, q.prompt, q.answer_type, "
                              "r.text_answer, r.numeric_answer, r.json_answer, json_extract(r.json_answer, "
                              "'$.reasoning'), r.created_at FROM personas p CROSS JOIN questions q LEFT JOIN responses "
                              "r ON r.persona_uuid = p.uuid AND r.question_id = q.question_id ORDER BY p.name, "
                              "q.order_num, r.created_at"_s};
    const Taken taken = middleOf([&command] { return run(command); });
    return taken.done ? taken.seconds : 0;
}

/// A project of which all pairs but the last tenth are answered.
QString answeredProject(const QTemporaryDir &folder, int personas, int questions)
{
    const QString path = folder.filePath(u"%1x%2.ormt"_s.arg(personas).arg(questions));
    Survey survey(personas, questions, personas * questions * 9 / 10, Survey::Tab::Empty);
    survey.call("saveProjectToFile", path);
    return path;
}

struct Work
{
    std::string name;
    QStringList arguments; ///< %1 is the project, %2 a folder to write to
    bool hasFloor = false;
};

const std::vector<Work> &works()
{
    const auto exportTo = [](const QString &format) {
        return QStringList{u"export"_s, u"%1"_s, u"--to"_s, format, u"--out"_s, u"%2/export"_s};
    };
    static const std::vector<Work> all{
        {.name = "check", .arguments = {u"check"_s, u"%1"_s}},
        {.name = "csv", .arguments = exportTo(u"csv"_s), .hasFloor = true},
        {.name = "xlsx", .arguments = exportTo(u"xlsx"_s)},
        {.name = "sav", .arguments = exportTo(u"sav"_s)},
        {.name = "dta", .arguments = exportTo(u"dta"_s)},
        {.name = "json", .arguments = exportTo(u"json"_s)},
        {.name = "report", .arguments = {u"report"_s, u"%1"_s, u"--out"_s, u"%2/report.html"_s}},
    };
    return all;
}

} // namespace

static void study(benchmark::State &state, const Work &work, int personas, int questions)
{
    const QTemporaryDir folder;
    const QString project = answeredProject(folder, personas, questions);
    for ([[maybe_unused]] const auto _ : state) {
        const QTemporaryDir out;
        QStringList command{QStringLiteral(ORRINET_STUDY)};
        for (QString word : work.arguments)
            command << word.replace("%1"_L1, project).replace("%2"_L1, out.path());
        if (work.arguments.contains("--out"_L1))
            command << u"--force"_s;
        const Taken taken = middleOf([&command] { return run(command); });
        if (!taken.done) {
            state.SkipWithError("it failed");
            return;
        }
        state.SetIterationTime(taken.seconds);
        state.counters["time"] = taken.seconds;
        state.counters["each"] = taken.seconds / (personas * questions);
        state.counters["memory"] = taken.bytes;
        if (const qint64 size = sizeOf(out.path()); size > 0)
            state.counters["size"] = double(size);
        if (work.hasFloor) {
            const double floor = floorOf(project, out.filePath(u"floor.csv"_s));
            state.counters["floor"] = floor;
            state.counters["ratio"] = taken.seconds / floor;
        }
    }
}

void addStudyBenchmarks(Report &report, Extent extent)
{
    report.addTable("study", "Before and after a run",
                    {{"time", "time", Unit::Milliseconds},
                     {"per pair", "each", Unit::Microseconds},
                     {"memory", "memory", Unit::Megabytes},
                     {"written", "size", Unit::Kilobytes},
                     {"sqlite3", "floor", Unit::Milliseconds},
                     {"time : sqlite3", "ratio", Unit::Ratio}});
    const auto add = [](int personas, int questions) {
        for (const Work &work : works()) {
            const std::string name =
                "study/" + work.name + ", " + std::to_string(personas) + "x" + std::to_string(questions);
            benchmark::RegisterBenchmark(name, study, work, personas, questions)->Iterations(1)->UseManualTime();
        }
    };
    if (extent == Extent::Smoke) {
        add(15, 9);
        return;
    }
    add(1000, 30);
    add(2000, 50);
}

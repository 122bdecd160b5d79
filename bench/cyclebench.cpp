// One answer of a run, from one storing to the next: refresh, choose, ask over TLS, parse, store.

#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"
#include "bridge/bridge.h"
#include "loopback/detour.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"

#include <QEventLoop>
#include <QSettings>
#include <QSqlQuery>
#include <QSslCertificate>
#include <QTableWidget>

#include <optional>

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

enum class Grid { Shown, LeftOut };

enum class Way { Straight, Bridged };

/// Leads the requests to the endpoint: alone, or through a bridge that reaches it by TLS as well.
class Road
{
public:
    Road(const ChatEndpoint &endpoint, Way way)
    {
        if (way == Way::Straight) {
            straight.emplace(endpoint);
            return;
        }
        qputenv("https_proxy", QByteArray("http://127.0.0.1:" + QByteArray::number(endpoint.port())));
        bridge::Route route;
        route.url = QUrl(u"https://api.openai.com/v1/chat/completions"_s);
        route.extraRoots = {standin::certificateFor(standin::Identity::Good).certificate};
        wayOut.emplace(route);
        between.emplace(bridge::BridgeOptions(), &*wayOut);
        if (!between->listen())
            qFatal("the bridge cannot listen");
        bridged.emplace(between->port(), between->certificate(), between->user(), between->password());
    }
    ~Road() { qunsetenv("https_proxy"); }
    Q_DISABLE_COPY_MOVE(Road)

private:
    std::optional<standin::Detour> straight;
    std::optional<bridge::Endpoint> wayOut;
    std::optional<bridge::Bridge> between;
    std::optional<loopback::Detour> bridged;
};

struct Cycles
{
    Samples times;
    int answers = 0;
    int rebuilds = 0;

    double patched() const { return 1.0 - (double(rebuilds) / answers); }
};

} // namespace

/// Notes the times from one request to the next, less the time that the endpoint took for itself.
static Cycles runCycles(Survey &survey, const ChatEndpoint &endpoint, int count, Grid grid)
{
    Cycles cycles;
    QEventLoop loop;
    double begin = -1;
    const auto note = [&] {
        const double end = now(Clock::Wall) - (double(endpoint.ownTime()) * 1e-9);
        if (begin >= 0)
            cycles.times.add(end - begin);
        begin = end;
        if (++cycles.answers == count)
            loop.quit();
    };
    QObject::connect(&endpoint, &ChatEndpoint::requestArrived, &loop, note);
    QObject::connect(survey.table()->model(), &QAbstractItemModel::modelReset, &loop, [&] { ++cycles.rebuilds; });
    survey.call("runSurvey");
    // The run has read its personas. A refresh that can't read them ends when it has emptied the grid.
    if (grid == Grid::LeftOut)
        QSqlQuery(survey.database()).exec(u"ALTER TABLE personas RENAME TO elsewhere"_s);
    loop.exec();
    return cycles;
}

/// The answers up to this one.
static Cycles cyclesUpTo(const RunSize &size, int answer, Grid grid, Way way = Way::Straight)
{
    const int before = answer == 1 ? 0 : answer - size.cycles();
    Survey survey(size.personas, size.questions, before, Survey::Tab::Results);
    QSettings().setValue(u"openai/api_key"_s, u"none"_s);
    ChatEndpoint endpoint;
    const Road road(endpoint, way);
    endpoint.answerWith([&](const standin::Request &) {
        // A bridge keeps its connection, as the program never does.
        const Reply reply = Reply::toolCall(Survey::replyObject(before + int(endpoint.requests().size())));
        return way == Way::Bridged ? reply.keptAlive() : reply;
    });
    const Cycles cycles = runCycles(survey, endpoint, size.cycles(), grid);
    QSettings().clear();
    return cycles;
}

static void askOne(benchmark::State &state, const RunSize &size, int answer)
{
    for ([[maybe_unused]] const auto _ : state) {
        const Cycles cycles = cyclesUpTo(size, answer, Grid::Shown);
        state.SetIterationTime(cycles.times.median());
        state.counters["cycle"] = cycles.times.median();
        state.counters["patched"] = cycles.patched();
        const double rest = cyclesUpTo(size, answer, Grid::LeftOut).times.median();
        const double bridged = cyclesUpTo(size, answer, Grid::LeftOut, Way::Bridged).times.median();
        state.counters["rest"] = rest;
        state.counters["bridged"] = bridged;
        state.counters["bridged ratio"] = bridged / rest;
    }
}

void addCycleBenchmarks(Report &report, Extent extent)
{
    const bool isSmoke = extent == Extent::Smoke;
    report.addTable("cycle", "One answer over TLS, the endpoint's own time taken off",
                    {{"whole cycle", "cycle", Unit::Milliseconds},
                     {"without the grid", "rest", Unit::Milliseconds},
                     {"refreshes patched", "patched", Unit::Ratio},
                     {"without the grid, bridged", "bridged", Unit::Milliseconds},
                     {"bridged : alone", "bridged ratio", Unit::Ratio}});
    const auto add = [](const RunSize &size, int answer) {
        const std::string name = "cycle/" + std::to_string(size.personas) + "x" + std::to_string(size.questions) +
                                 ", answer " + std::to_string(answer);
        benchmark::RegisterBenchmark(name, askOne, size, answer)->Iterations(1)->UseManualTime();
    };
    if (isSmoke) {
        add({15, 9}, 1);
        return;
    }
    for (const int answer : {1, 1000, 4000})
        add({200, 20}, answer);
    for (const int answer : {1, 20'000})
        add({1000, 20}, answer);
}

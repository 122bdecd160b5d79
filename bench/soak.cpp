#include "bench/soak.h"

#include "bench/memory.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/soakcheck.h"
#include "bench/soakmemory.h"
#include "bench/soakreplies.h"
#include "bench/survey.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"

#include <QAction>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Request;
using Unit = Report::Unit;

namespace {

struct SoakSize
{
    int personas;
    int questions;
    int faultOneIn;
    QList<int> stages; ///< at how many answers figures are taken
};

/// The least and the most of what was seen.
struct Range
{
    int least = std::numeric_limits<int>::max();
    int most = 0;

    void add(int value)
    {
        least = qMin(least, value);
        most = qMax(most, value);
    }
};

class Soak
{
public:
    Soak(const SoakSize &ofSize, quint32 seed, Report &toReport);

    /// Runs until no pair is open, and one run more.
    void runAll();
    void explainMemory();
    Complaints complaints;
    const SoakReplies &given() const { return replies; }

private:
    struct Pair
    {
        int persona = -1;
        int question = -1;
        bool operator==(const Pair &) const = default;
    };

    /// An answer on its way, and what it answers.
    struct Outgoing
    {
        qsizetype exchange = 0;
        SoakAnswer answer;
    };

    static SoakQuestion questionAt(int index);
    void exec(const QString &statement, const QVariantList &values = {});
    void fill();
    QList<Pair> openPairs() const;
    void runOnce();
    bool waitUntil(const std::function<bool()> &reached);
    Pair pairOf(const Request &request) const;
    standin::Reply reply(const Request &request);
    void noteAnswer(int request);
    void noteStage();

    SoakSize size;
    Report &report;
    Survey survey;
    ChatEndpoint endpoint;
    standin::Detour detour{endpoint};
    SoakReplies replies;
    QList<SoakExchange> exchanges;
    Pair current;                  ///< the pair of the last request of this run
    QHash<int, Outgoing> outgoing; ///< by the endpoint's number of the request
    int answers = 0;
    double begin = now(Clock::Wall);
    double stageBegin = begin;
    int stageAnswers = 0;
    Range descriptors;
    Range firstDescriptors;
    double allocatedBefore = 0;
};

/// What was told to Qt's logging: the failures of requests, and all else.
struct Told
{
    QStringList failures;
    QStringList others;
};
Told &told()
{
    static Told all;
    return all;
}

void note(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    static constexpr auto prefix = "survey error: "_L1;
    if (message.startsWith(prefix))
        told().failures << message.sliced(prefix.size());
    else if (type != QtInfoMsg && !message.startsWith("This plugin does not support"_L1))
        told().others << message;
}

} // namespace

/// All types of answers, each with and without a reasoning.
SoakQuestion Soak::questionAt(int index)
{
    static const QStringList types{u"single_choice"_s, u"text"_s,   u"numeric"_s,
                                   u"multi_choice"_s,  u"likert"_s, u"ranking"_s};
    return {.type = types.at(index % types.size()), .reasoning = (index + (index / types.size())) % 2 == 0};
}

Soak::Soak(const SoakSize &ofSize, quint32 seed, Report &toReport)
    : size(ofSize)
    , report(toReport)
    , survey(size.personas, 0, 0, Survey::Tab::Results)
    , replies(seed, size.faultOneIn)
{
    QSettings().setValue(u"openai/api_key"_s, u"none"_s);
    fill();
    QObject::connect(&endpoint, &ChatEndpoint::replied, &endpoint, [this](int request) { noteAnswer(request); });
    endpoint.answerWith([this](const Request &request) { return reply(request); });
    allocatedBefore = allocated();
}

void Soak::exec(const QString &statement, const QVariantList &values)
{
    QSqlQuery query(survey.database());
    query.prepare(statement);
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        qFatal("%ls", qUtf16Printable(query.lastError().text()));
}

/// The texts tell a request's pair.
void Soak::fill()
{
    exec(u"UPDATE personas SET attributes=name||' '||attributes"_s);
    for (int index = 0; index < size.questions; ++index) {
        const SoakQuestion question = questionAt(index);
        exec(u"INSERT INTO questions (question_id,order_num,prompt,answer_type,labels,reasoning_required,"
             "judge_question) VALUES (?,?,?,?,?,?,0)"_s,
             {index + 1, index + 1, u"%1. How would you spend a free morning?"_s.arg(index), question.type,
              u"[\"yes\",\"no\",\"rather not\"]"_s, int(question.reasoning)});
    }
    survey.call("loadProject");
    settle();
}

QList<Soak::Pair> Soak::openPairs() const
{
    QSet<int> answered;
    for (const SoakExchange &exchange : exchanges) {
        if (exchange.answer)
            answered.insert((exchange.persona * size.questions) + exchange.question);
    }
    QList<Pair> open;
    for (int pair = 0; pair < size.personas * size.questions; ++pair) {
        if (!answered.contains(pair))
            open.append({pair / size.questions, pair % size.questions});
    }
    return open;
}

void Soak::runAll()
{
    bool open = true;
    while (open && complaints.count() == 0) {
        // The last run is that which finds nothing open.
        open = !openPairs().isEmpty();
        runOnce();
    }
    if (endpoint.mostInFlight() != 1)
        complaints.add(u"%1 requests were under way at one time"_s.arg(endpoint.mostInFlight()));
    for (const QString &warning : std::as_const(told().others))
        complaints.add(u"a warning: "_s + warning);
}

void Soak::runOnce()
{
    const QList<Pair> open = openPairs();
    const qsizetype before = exchanges.size();
    current = {};
    survey.call("runSurvey");
    if (!waitUntil([this] { return survey.runEntry()->isEnabled() && endpoint.inFlight() == 0; })) {
        complaints.add(u"the run stands still"_s);
        return;
    }
    if (!outgoing.isEmpty())
        complaints.add(u"%1 answers were not taken"_s.arg(outgoing.size()));
    QList<Pair> asked;
    for (const auto later = exchanges.sliced(before); const SoakExchange &exchange : later)
        asked.append({exchange.persona, exchange.question});
    if (asked != open)
        complaints.add(u"%1 pairs were open, others or in another order the %2 that were asked"_s.arg(open.size())
                           .arg(asked.size()));
    std::fprintf(stderr, "a run: %lld pairs asked, %lld still open\n", qlonglong(asked.size()),
                 qlonglong(openPairs().size()));
    checkRows(survey, exchanges, complaints);
    checkGrid(survey, exchanges, complaints);
    checkLog(survey, exchanges, told().failures, complaints);
}

/// False where nothing happens for so long that nothing more is to be expected.
bool Soak::waitUntil(const std::function<bool()> &reached)
{
    static constexpr int patience = 60'000;
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &loop, [&loop] { loop.exit(1); });
    const auto look = [&] {
        deadline.start(patience);
        if (reached())
            loop.exit(0);
    };
    QObject::connect(&endpoint, &ChatEndpoint::requestArrived, &loop, look, Qt::QueuedConnection);
    QObject::connect(&endpoint, &ChatEndpoint::connectionClosed, &loop, look, Qt::QueuedConnection);
    QObject::connect(survey.runEntry(), &QAction::enabledChanged, &loop, look, Qt::QueuedConnection);
    if (reached())
        return true;
    deadline.start(patience);
    return loop.exec() == 0;
}

/// What a redirection made a GET of has no body, and is about the same pair.
Soak::Pair Soak::pairOf(const Request &request) const
{
    const QJsonArray messages = request.json().value("messages"_L1).toArray();
    if (messages.isEmpty())
        return current;
    const QString persona = messages.first()["content"_L1].toString().section(u'\n', -1);
    const QString question = messages.last()["content"_L1].toString();
    return {persona.section(u' ', 1, 1).toInt(), question.section(u'.', 0, 0).toInt()};
}

standin::Reply Soak::reply(const Request &request)
{
    descriptors.add(openDescriptors());
    const Pair pair = pairOf(request);
    const bool again = pair == current;
    if (!again)
        exchanges.append(
            {.persona = pair.persona, .question = pair.question, .request = request.body, .replies = {}, .answer = {}});
    if (request.connectTarget != "api.openai.com:443"_L1)
        complaints.add(u"a request went to "_s + request.connectTarget);
    current = pair;
    const SoakReply chosen = replies.next(questionAt(pair.question), again);
    if (chosen.answer)
        outgoing.insert(int(endpoint.requests().size()) - 1,
                        {.exchange = exchanges.size() - 1, .answer = *chosen.answer});
    exchanges.last().replies << chosen.name;
    return chosen.reply;
}

/// The reply went out to its last byte. By then the next request may have come in.
void Soak::noteAnswer(int request)
{
    if (!outgoing.contains(request))
        return;
    const Outgoing out = outgoing.take(request);
    SoakExchange &exchange = exchanges[out.exchange];
    if (exchange.answer)
        complaints.add(u"persona %1 gave two answers to question %2"_s.arg(exchange.persona).arg(exchange.question));
    exchange.answer = out.answer;
    ++answers;
    if (size.stages.contains(answers))
        noteStage();
}

void Soak::noteStage()
{
    const double end = now(Clock::Wall);
    report.addRow("soak", "after " + std::to_string(answers) + " answers",
                  {{"seconds", end - begin},
                   {"rate", (answers - stageAnswers) / (end - stageBegin)},
                   {"requests", double(endpoint.requests().size())},
                   {"peak", statusBytes("VmHWM:")},
                   {"resident", statusBytes("VmRSS:")},
                   {"allocated", allocated() - allocatedBefore},
                   {"least", descriptors.least},
                   {"most", descriptors.most}});
    if (firstDescriptors.most == 0)
        firstDescriptors = descriptors;
    // Lost ones would add up.
    if (descriptors.most > firstDescriptors.most + 2)
        complaints.add(u"%1 descriptors are open, at first %2"_s.arg(descriptors.most).arg(firstDescriptors.most));
    descriptors = {};
    stageAnswers = answers;
    stageBegin = now(Clock::Wall);
}

void Soak::explainMemory()
{
    const double all = allocated() - allocatedBefore;
    double explained = 0;
    const auto add = [&](const std::string &name, double bytes) {
        report.addRow("memory", name, {{"bytes", bytes}, {"each", bytes / answers}, {"share", bytes / all}});
        explained += bytes;
    };
    add("the log, in a plain view", logMemory(exchanges, told().failures));
    add("the table, in another database", rowsMemory(survey.database()));
    add("the texts of the grid, in another grid", gridMemory(size.personas, size.questions, exchanges));
    add("the endpoint's list of requests", requestsMemory(endpoint.requests()));
    add("the answers that this program expects", exchangesMemory(exchanges));
    add("the rest", all - explained);
    add("all that was allocated since the start", all);
}

static quint32 seedOfSoak()
{
    static const char *const name = "ORRINET_SEED";
    const quint32 seed =
        qEnvironmentVariableIsSet(name) ? qEnvironmentVariable(name).toUInt() : QRandomGenerator::global()->generate();
    std::fprintf(stderr, "%s=%u\n", name, seed);
    return seed;
}

static void describeTables(Report &report, const SoakSize &size)
{
    report.addTable("soak",
                    "Runs of " + std::to_string(size.personas) + "x" + std::to_string(size.questions) +
                        ", one request in " + std::to_string(size.faultOneIn) + " failing",
                    {{"time", "seconds", Unit::Seconds},
                     {"answers per second", "rate", Unit::Ratio},
                     {"requests", "requests", Unit::Count},
                     {"peak memory", "peak", Unit::Megabytes},
                     {"memory", "resident", Unit::Megabytes},
                     {"allocated", "allocated", Unit::Megabytes},
                     {"fewest descriptors", "least", Unit::Count},
                     {"most descriptors", "most", Unit::Count}});
    report.addTable("memory", "What they left in memory",
                    {{"memory", "bytes", Unit::Megabytes},
                     {"each answer", "each", Unit::Kilobytes},
                     {"share", "share", Unit::Ratio}});
    report.addTable("faults", "What failed", {{"times", "count", Unit::Count}});
}

int soak(Report &report, Extent extent)
{
    const SoakSize size =
        extent == Extent::Smoke
            ? SoakSize{.personas = 10, .questions = 12, .faultOneIn = 4, .stages = {12, 60, 120}}
            : SoakSize{.personas = 1000, .questions = 10, .faultOneIn = 20, .stages = {1000, 5000, 10'000}};
    describeTables(report, size);
    const quint32 seed = seedOfSoak();
    const QtMessageHandler before = qInstallMessageHandler(note);
    Soak run(size, seed, report);
    run.runAll();
    run.explainMemory();
    qInstallMessageHandler(before);
    for (const auto &[name, count] : run.given().faults())
        report.addRow("faults", name, {{"count", double(count)}});
    report.print();
    const int broken = run.complaints.count();
    std::printf("\n%s\n", broken == 0 ? "All promises were kept." : "Promises were broken.");
    return broken == 0 ? 0 : 1;
}

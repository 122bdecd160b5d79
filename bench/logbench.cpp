// The chat log, to which a run adds four entries for each answer, and what it costs once much is in it.

#include "bench/memory.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"
#include "inspect/chatlogwindow.h"

#include <QDialogButtonBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using Unit = Report::Unit;

namespace {

/// The same window by Qt alone.
struct PlainLog : QDialog
{
    PlainLog()
    {
        view->setReadOnly(true);
        auto *column = new QVBoxLayout(this);
        column->addWidget(view);
        column->addWidget(new QDialogButtonBox(QDialogButtonBox::Close));
        resize(500, 400);
    }

    void appendLine(const QString &line) { view->appendPlainText(line); }

    QPlainTextEdit *view = new QPlainTextEdit;
};

/// What appending takes: the calls, what they leave to the event loop, and the bytes allocated by the calls.
struct Cost
{
    Samples calls;
    Samples events;
    double bytes = 0;
};

} // namespace

static QJsonObject message(const QString &role, const QString &content)
{
    return {{u"role"_s, role}, {u"content"_s, content}};
}

/// What a run logs of an answer in the middle of a questionnaire of 20: messages, request, reply and answer.
static QStringList entriesOf(int answer)
{
    QJsonArray messages{
        message(u"system"_s, u"Act as the following persona.\n"_s + Survey::replyObject(answer).repeated(2))};
    for (int exchange = 0; exchange < 10; ++exchange) {
        messages.append(message(u"user"_s, u"Question %1: how much would you pay for it?"_s.arg(exchange)));
        messages.append(message(u"assistant"_s, Survey::replyObject(answer + exchange).left(80)));
    }
    const QJsonObject body{{u"model"_s, u"model"_s}, {u"messages"_s, messages}, {u"tool_choice"_s, u"auto"_s}};
    const QString reply = Survey::replyObject(answer);
    const QJsonObject choice{{u"index"_s, 0}, {u"message"_s, message(u"assistant"_s, reply)}};
    const auto text = [](const auto &json, QJsonDocument::JsonFormat format) {
        return QString::fromUtf8(QJsonDocument(json).toJson(format));
    };
    return {u"-> "_s + text(messages, QJsonDocument::Compact), u"-> "_s + text(body, QJsonDocument::Indented),
            u"<- "_s + text(QJsonObject{{u"choices"_s, QJsonArray{choice}}}, QJsonDocument::Compact), u"<- "_s + reply};
}

template<typename Log>
static void append(Log &log, Cost &cost, const QStringList &entries)
{
    const double before = allocated();
    cost.calls.time([&] {
        for (const QString &entry : entries)
            log.appendLine(entry);
    });
    cost.bytes += allocated() - before;
    cost.events.time(settle);
}

/// So many answers are there before, and so many are measured.
static void appendAnswers(benchmark::State &state, int before, int measured)
{
    QStringList there;
    for (int answer = 0; answer < before; ++answer)
        there += entriesOf(answer);
    ChatLogWindow log;
    PlainLog plain;
    log.show();
    plain.show();
    settle();
    log.appendLine(there.join(u'\n'));
    plain.appendLine(there.join(u'\n'));
    settle();
    Cost own;
    Cost floor;
    qsizetype characters = 0;
    for ([[maybe_unused]] const auto _ : state) {
        for (int answer = before; answer < before + measured; ++answer) {
            const QStringList entries = entriesOf(answer);
            characters += entries.join(u'\n').size() + 1;
            append(log, own, entries);
            append(plain, floor, entries);
        }
        state.SetIterationTime(own.calls.median() * measured);
    }
    state.counters["append"] = own.calls.median();
    state.counters["floor"] = floor.calls.median();
    state.counters["ratio"] = own.calls.median() / floor.calls.median();
    state.counters["events"] = own.events.median();
    state.counters["floor events"] = floor.events.median();
    state.counters["text"] = double(characters) * sizeof(QChar) / measured;
    state.counters["memory"] = own.bytes / measured;
    state.counters["floor memory"] = floor.bytes / measured;
    state.counters["memory ratio"] = floor.bytes > 0 ? own.bytes / floor.bytes : 0;
}

void addLogBenchmarks(Report &report, Extent extent)
{
    report.addTable("log", "The four log entries of one answer, in a window that shows the end",
                    {{"append", "append", Unit::Milliseconds},
                     {"plain view", "floor", Unit::Milliseconds},
                     {"append : plain view", "ratio", Unit::Ratio},
                     {"events after it", "events", Unit::Milliseconds},
                     {"plain view", "floor events", Unit::Milliseconds},
                     {"text", "text", Unit::Kilobytes},
                     {"memory", "memory", Unit::Kilobytes},
                     {"plain view", "floor memory", Unit::Kilobytes},
                     {"memory : plain view", "memory ratio", Unit::Ratio}});
    const bool smoke = extent == Extent::Smoke;
    for (const int before : smoke ? QList{1} : QList{1, 1000, 10'000}) {
        benchmark::RegisterBenchmark("log/after " + std::to_string(before), appendAnswers, before, smoke ? 20 : 1000)
            ->Iterations(1)
            ->UseManualTime();
    }
}

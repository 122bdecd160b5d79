#include "tests/app/runwatch.h"

#include "survey/answers.h"
#include "survey/chatrequester.h"
#include "survey/surveyrunner.h"
#include "tests/app/eventchecks.h"
#include "tests/support/surveystage.h"

#include <QSettings>

using namespace Qt::StringLiterals;

RunWatch::RunWatch(SurveyStage &surveyStage, EventChecks &eventChecks)
    : stage(surveyStage)
    , checks(eventChecks)
{
}

void RunWatch::starting()
{
    pairs.clear();
    const Rows personas = stage.rows(u"SELECT uuid,name FROM personas ORDER BY name"_s);
    const Rows questions = stage.rows(u"SELECT question_id,answer_type FROM questions ORDER BY order_num"_s);
    for (const QVariantList &persona : personas) {
        for (const QVariantList &question : questions)
            pairs.append({.persona = persona.first().toString(),
                          .question = question.first().toInt(),
                          .type = question.last().toString()});
    }
}

void RunWatch::started()
{
    on = true;
    findNext();
    watchRequesters();
    // With nothing to ask, the run is over and has refreshed the grid.
    if (!on)
        checks.gridRefreshed();
}

void RunWatch::forget()
{
    on = false;
    pairs.clear();
    checks.expected.running = false;
}

bool RunWatch::isOpen(const Pair &pair)
{
    return stage.value(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s,
                       {pair.persona, pair.question}) == 0;
}

/// What the run does on its way to the next request; without a key there is none.
void RunWatch::findNext()
{
    const bool hasKey = !QSettings().value(u"openai/api_key"_s).toString().isEmpty();
    for (; !pairs.isEmpty(); pairs.removeFirst()) {
        const bool open = isOpen(pairs.first());
        if (open && hasKey)
            break;
        checks.expected.surveyErrors += open ? 1 : 0;
    }
    on = !pairs.isEmpty();
    checks.expected.running = on;
}

void RunWatch::watchRequesters()
{
    static constexpr auto watched = "watched";
    const auto requesters = stage.window()->findChildren<ChatRequester *>();
    for (ChatRequester *requester : requesters) {
        if (requester->property(watched).toBool())
            continue;
        requester->setProperty(watched, true);
        // The runner is connected before, so that it has stored the answer and asked for the next one by then.
        QObject::connect(requester, &ChatRequester::responseReceived, &context,
                         [this](const QString &text) { answered(text); });
        QObject::connect(requester, &ChatRequester::requestFailed, &context, [this] { failed(); });
    }
}

/// As it is bound to a statement.
static QVariant bound(const QString &text)
{
    return text.isNull() ? QVariant() : QVariant(text);
}

/// The program has asked for the next one by now.
void RunWatch::dealtWith()
{
    findNext();
    watchRequesters();
    if (whenDealtWith)
        whenDealtWith();
}

void RunWatch::answered(const QString &text)
{
    ++answers;
    if (!on) {
        checks.complain(u"an answer came and no run was on"_s);
        return;
    }
    const Pair pair = pairs.takeFirst();
    const ParsedAnswer parsed = SurveyRunner::interpretAnswer(text, pair.type);
    checks.answerStored(
        {pair.persona, pair.question, bound(parsed.textAnswer), parsed.numericAnswer, bound(parsed.jsonAnswer)});
    dealtWith();
}

void RunWatch::failed()
{
    ++failures;
    if (!on) {
        checks.complain(u"a request failed and no run was on"_s);
        return;
    }
    pairs.removeFirst();
    ++checks.expected.surveyErrors;
    dealtWith();
    if (!on)
        checks.gridRefreshed();
}

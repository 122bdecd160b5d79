#include "tests/app/eventdriver.h"

#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"

#include <QAbstractEventDispatcher>
#include <QTabWidget>

using namespace Qt::StringLiterals;

static QString samplePack(const SurveyStage &stage, int number)
{
    const QString persona = u"INSERT INTO personas VALUES ('pack%1-%2','Pack %1 %2','from a pack',%3,NULL,"
                            "'2001-02-03T04:05:06.789','2001-02-03 04:05:06')"_s;
    return writePack(stage.path(u"pack%1.ornk"_s.arg(number)),
                     {persona.arg(number).arg(1).arg(u"'You come from a pack.'"_s),
                      persona.arg(number).arg(2).arg(u"NULL"_s),
                      u"INSERT INTO tags VALUES (1,'packed'),(%1,'a')"_s.arg(number + 1),
                      u"INSERT INTO persona_tags VALUES ('pack%1-1',1),('pack%1-2',%2)"_s.arg(number).arg(number + 1)});
}

EventDriver::EventDriver()
    : checks(stage, messages)
    , watch(stage, checks)
    , expected(checks.expected)
    , failedBefore(QTest::currentTestFailed())
{
    packs = {samplePack(stage, 1), samplePack(stage, 2)};
    stage.endpoint.answerWith([this](const standin::Request &request) { return nextReply(request); });
    QObject::connect(&stage.endpoint, &standin::ChatEndpoint::connectionClosed, &context,
                     [this] { ++connectionsClosed; });
    showWindow();
}

void EventDriver::showWindow()
{
    stage.window()->resize(760, 620);
    stage.window()->show();
    ++counts.windows;
    settle();
    checks.windowMade();
}

QString EventDriver::run(const QList<Step> &steps)
{
    for (const Step &step : steps) {
        if (!checks.complaint().isEmpty())
            break;
        ++done;
        counts.stepsInRuns += watch.isOn() ? 1 : 0;
        perform(step);
    }
    if (checks.complaint().isEmpty())
        replaceWindow();
    return checks.complaint();
}

EventDriver::Tally EventDriver::tally() const
{
    Tally all = counts;
    all.answers = watch.answers;
    all.failures = watch.failures;
    return all;
}

void EventDriver::perform(const Step &step)
{
    if (!performOnPersonas(step) && !performOnQuestions(step) && !performOnFiles(step) && !performOnPacks(step) &&
        !performOnRun(step))
        performOnWindow(step);
    if (QTest::currentTestFailed() && !failedBefore)
        checks.complain(u"a statement of the test's own went wrong"_s);
}

int EventDriver::answering(const QList<Answer> &answers, const std::function<void()> &act)
{
    const DialogAnswers dialogs(answers);
    act();
    if (!dialogs.unexpected().isEmpty())
        checks.complain(u"nobody expected "_s + dialogs.unexpected());
    counts.dialogs += dialogs.given();
    return dialogs.given();
}

/// An answer, after what happens while the dialog is open.
EventDriver::Answer EventDriver::after(const Step &step, const Answer &answer)
{
    return [this, step, answer](QWidget *dialog) {
        const int answersBefore = watch.answers;
        checks.after({});
        perform(nestedStep(step));
        counts.answersBehindDialogs += watch.answers - answersBefore;
        answer(dialog);
    };
}

void EventDriver::settle()
{
    QAbstractEventDispatcher *events = QAbstractEventDispatcher::instance();
    while (events->processEvents(QEventLoop::AllEvents)) {
    }
    // What was closed goes when the program's own loop comes round.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void EventDriver::showTab(const QString &title)
{
    stage.window()->findChild<QTabWidget *>()->setCurrentWidget(stage.page(title));
}

// Steps on a run.

#include "inspect/chatlogwindow.h"
#include "standin/respondent.h"
#include "survey/surveyrunner.h"
#include "tests/app/eventdriver.h"
#include "tests/support/modal.h"
#include "tests/support/patience.h"

#include <QAction>
#include <QEventLoop>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;
using standin::Reply;

bool EventDriver::performOnRun(const Step &step)
{
    switch (step.act) {
    case Act::Run:
        startRun(step);
        return true;
    case Act::AwaitReply:
        awaitReply();
        return true;
    case Act::LetReplyGo:
        stage.endpoint.release();
        return true;
    case Act::ChooseReplies:
        replies = step;
        return true;
    case Act::CloseLog:
        closeLog(step);
        return true;
    default:
        return false;
    }
}

void EventDriver::startRun(const Step &step)
{
    const bool wasOn = watch.isOn();
    // A key that was taken away comes back before long.
    if (step.meanwhile % 4 != 0)
        Stage::setSetting(u"openai/api_key"_s, u"test-key"_s);
    if (!wasOn)
        watch.starting();
    quietly([&] {
        if (step.how % 3 == 0)
            stage.button(u"Run Survey"_s)->click();
        else if (step.how % 3 == 1)
            stage.startRun();
        else
            stage.call("runSurvey");
    });
    if (!wasOn) {
        watch.started();
        if (logWindow(stage) == nullptr || !logWindow(stage)->isVisible())
            checks.complain(u"the run has no log window"_s);
    }
    checks.after({});
    const auto runners = stage.window()->findChildren<SurveyRunner *>();
    if (wasOn && runners.isEmpty())
        checks.complain(u"the run is gone"_s);
}

/// Waits until the program is through with the reply to the request that is on its way.
void EventDriver::awaitReply()
{
    if (!watch.isOn() || stalled)
        return;
    quietly([this] {
        QEventLoop loop;
        watch.whenDealtWith = [&loop] { loop.exit(0); };
        // It may be on its way yet, and comes once more where Qt repeats it.
        const auto letGo = [this, &loop] {
            stage.endpoint.release();
            if (stalled)
                loop.exit(0);
        };
        QObject::connect(&stage.endpoint, &standin::ChatEndpoint::requestArrived, &loop, letGo, Qt::QueuedConnection);
        stage.endpoint.release();
        QTimer::singleShot(patience, &loop, [&loop] { loop.exit(1); });
        if (loop.exec() != 0)
            checks.complain(u"nothing has come of a request"_s);
        watch.whenDealtWith = nullptr;
    });
    checks.after({});
}

void EventDriver::closeLog(const Step &step)
{
    ChatLogWindow *log = logWindow(stage);
    if (log == nullptr)
        return;
    quietly([&] {
        if (step.how % 2 == 0)
            log->close();
        else
            pressButton(log, u"Close"_s);
        settle();
    });
    checks.after({});
}

/// The ways in which a request can end, most of which are failures.
static Reply replyOfKind(int kind, int number, const standin::Request &request)
{
    const QString text = u"answer %1"_s.arg(number);
    const QString object = uR"({"answer":"%1","reasoning":"because of %1"})"_s.arg(number);
    switch (kind) {
    case 0:
        return Reply::content(text);
    case 1:
        return Reply::content(object);
    case 2:
        return Reply::toolCall(object);
    case 3:
        return standin::respond(request);
    case 4:
        return Reply::content(QString());
    case 5:
        return Reply::json("no completion");
    case 6:
        return Reply::status(500);
    case 7:
        return Reply::status(429, "{}");
    case 8:
        return Reply::content(text).ending(Reply::End::DroppedBeforeHead);
    case 9:
        return Reply::content(text).ending(Reply::End::DroppedAfterHead);
    case 10:
        return Reply::content(text).ending(Reply::End::Truncated);
    case 11:
        return Reply::content(text).dripping(100, 0);
    default:
        return Reply::content(text).ending(number % 2 == 0 ? Reply::End::Silent : Reply::End::Incomplete);
    }
}

Reply EventDriver::nextReply(const standin::Request &request)
{
    static constexpr int kinds = 12;
    const int number = ++replied;
    // Seldom one that never comes, since nothing more happens in that run.
    const bool stalls = replies.which % 40 == 39;
    // Mostly such as make an answer.
    const int chance = (replies.which + (number * 5)) % (2 * kinds);
    const int kind = stalls ? kinds : chance < kinds ? chance : chance % 4;
    const Reply reply = replyOfKind(kind, number, request);
    stalled = reply.stalls();
    return replies.how % 4 == 0 ? reply : reply.held();
}

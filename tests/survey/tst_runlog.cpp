// What a run tells the log window, and what becomes of the two when one is gone before the other.

#include "inspect/chatlogwindow.h"
#include "tests/support/messagelog.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/runtrace.h"

#include <QJsonArray>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

/// The entries that the requests make, two each, and what follows each of them.
static QString logOf(const QList<Request> &requests, const QList<QStringList> &followedBy)
{
    QStringList entries;
    for (qsizetype index = 0; index < requests.size(); ++index) {
        const Request &request = requests.at(index);
        entries << sentEntry(request.json().value("messages"_L1).toArray())
                << "-> "_L1 + QString::fromUtf8(request.body) << followedBy.at(index);
    }
    return entries.join(u'\n');
}

/// The two entries that a usable reply makes.
static QStringList receivedEntries(const Reply &reply, const QString &answer)
{
    return {"<- "_L1 + QString::fromUtf8(reply.body), "<- "_L1 + answer};
}

class TestRunLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_run_opens_the_log_beside_the_window()
    {
        SurveyStage stage;
        QVERIFY(logWindow(stage) == nullptr);
        stage.startRun();
        const ChatLogWindow *log = logWindow(stage);
        QVERIFY(log != nullptr);
        QCOMPARE(log->windowTitle(), u"Chat Log"_s);
        QCOMPARE(log->parent(), stage.window());
        QVERIFY(log->testAttribute(Qt::WA_DeleteOnClose));
        QVERIFY(log->isVisible());
        QVERIFY(!log->isModal());
        // There is nobody to be asked.
        QVERIFY(stage.runEntry()->isEnabled());
        QCOMPARE(logText(stage), QString());
    }

    void an_exchange_makes_four_entries_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("answer");
        QTest::newRow("content") << Reply::content(u"Fine."_s) << u"Fine."_s;
        QTest::newRow("function call") << Reply::toolCall(uR"({"answer":"yes"})"_s) << uR"({"answer":"yes"})"_s;
        QTest::newRow("several lines")
            << Reply::json("{\n\n  \"choices\": [\n{\"message\": {\"content\": \"one\\ntwo\"}}\n]\n}\n")
            << u"one\ntwo"_s;
        QTest::newRow("unusable") << Reply::json("no JSON") << QString();
    }
    void an_exchange_makes_four_entries()
    {
        QFETCH(const Reply, reply);
        QFETCH(const QString, answer);
        SurveyStage stage;
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.addQuestion(u"Q2"_s, u"single_choice"_s, true, uR"(["yes","no"])"_s);
        stage.endpoint.queue(reply);
        stage.endpoint.queue(reply);
        QVERIFY(stage.run());
        const QStringList received = receivedEntries(reply, answer);
        QCOMPARE(logText(stage), logOf(stage.endpoint.requests(), {received, received}));
    }

    void entries_come_as_the_exchange_goes_on()
    {
        SurveyStage stage;
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        const Reply reply = Reply::content(u"Fine."_s);
        stage.endpoint.queue(reply.held());
        stage.startRun();
        const QString told = logText(stage);
        QVERIFY(stage.arrived(1));
        QCOMPARE(told, logOf(stage.endpoint.requests(), {{}}));
        QCOMPARE(logText(stage), told);
        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QCOMPARE(logText(stage), told + u'\n' + receivedEntries(reply, u"Fine."_s).join(u'\n'));
    }

    void a_failed_exchange_makes_three_entries()
    {
        const MessageLog messages;
        SurveyStage stage;
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.addQuestion(u"Q2"_s);
        const Reply reply = Reply::content(u"Fine."_s);
        stage.endpoint.queue(Reply::status(401, "not to be told"));
        stage.endpoint.queue(reply);
        QVERIFY(stage.run());
        QCOMPARE(logText(stage), logOf(stage.endpoint.requests(), {{u"! Host requires authentication (code 204)"_s},
                                                                   receivedEntries(reply, u"Fine."_s)}));
        QCOMPARE(messages.warnings(), QStringList{u"survey error: Host requires authentication (code 204)"_s});
    }

    void without_a_request_an_exchange_makes_two_entries_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::addColumn<QString>("outcome");
        QTest::newRow("test mode") << true << u"<- test response"_s;
        QTest::newRow("no key") << false << u"! OPENAI_API_KEY not set"_s;
    }
    void without_a_request_an_exchange_makes_two_entries()
    {
        QFETCH(const bool, testMode);
        QFETCH(const QString, outcome);
        const MessageLog messages;
        SurveyStage stage;
        Stage::setSetting(u"openai/api_key"_s, QString());
        Stage::setTestMode(testMode);
        stage.addPersona(u"P2"_s, u"P2"_s);
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.startRun();
        const auto asking = [](const QString &persona) {
            return u"-> [{\"content\":\"Act as the following persona.\\n%1\",\"role\":\"system\"},"
                   "{\"content\":\"Q1\",\"role\":\"user\"}]"_s.arg(persona);
        };
        QCOMPARE(logText(stage), QStringList({asking(u"P1"_s), outcome, asking(u"P2"_s), outcome}).join(u'\n'));
        QCOMPARE(messages.warnings().size(), testMode ? 0 : 2);
    }

    void the_log_of_a_run_before_goes_on()
    {
        SurveyStage stage;
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        QVERIFY(stage.run());
        ChatLogWindow *log = logWindow(stage);
        const QString before = logText(stage);
        QVERIFY(!before.isEmpty());
        log->hide();
        stage.addQuestion(u"Q2"_s);
        QVERIFY(stage.run());
        QCOMPARE(stage.window()->findChildren<ChatLogWindow *>(), QList<ChatLogWindow *>{log});
        QVERIFY(log->isVisible());
        QCOMPARE(logText(stage),
                 before + u'\n' +
                     logOf(stage.endpoint.requests().sliced(1), {receivedEntries(Reply::content(u"ok"_s), u"ok"_s)}));
    }

    void the_key_is_not_told()
    {
        SurveyStage stage;
        Stage::setSetting(u"openai/api_key"_s, u"secret-key"_s);
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        QVERIFY(stage.run());
        QCOMPARE(stage.endpoint.requests().constFirst().header("Authorization"), "Bearer secret-key"_ba);
        QVERIFY(logText(stage).contains("Q1"_L1));
        QVERIFY(!logText(stage).contains("secret"_L1));
    }

    void a_log_closed_in_a_run_does_not_stop_it_data()
    {
        QTest::addColumn<QString>("by");
        QTest::newRow("by its button") << u"Close"_s;
        QTest::newRow("by Escape") << u"Escape"_s;
        QTest::newRow("by the window manager") << QString();
    }
    void a_log_closed_in_a_run_does_not_stop_it()
    {
        QFETCH(const QString, by);
        const MessageLog messages;
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.queue(Reply::content(u"first"_s).held());
        stage.startRun();
        QVERIFY(stage.arrived(1));
        closeLog(stage, by);
        QCOMPARE(messages.infos(), QStringList{u"ChatLogWindow destroyed; logging disabled"_s});
        QVERIFY(logWindow(stage) == nullptr);

        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QCOMPARE(stage.answered(), stage.twoByTwo);
        QCOMPARE(resultsTable(stage)->item(1, 3)->text(), u"ok"_s);
        QVERIFY(logWindow(stage) == nullptr);

        // The next run has a log of its own.
        stage.addQuestion(u"Q3"_s);
        QVERIFY(stage.run());
        QVERIFY(logWindow(stage)->isVisible());
        const QStringList received = receivedEntries(Reply::content(u"ok"_s), u"ok"_s);
        QCOMPARE(logText(stage), logOf(stage.endpoint.requests().sliced(4), {received, received}));
    }

    void a_log_that_goes_in_test_mode_does_not_stop_the_run()
    {
        const MessageLog messages;
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        trace.react = [&](const QString &event) {
            // Not on an entry: the window is at work then.
            if (event == u"grid"_s)
                delete logWindow(stage);
        };
        stage.startRun();
        QCOMPARE(messages.infos(), QStringList{u"ChatLogWindow destroyed; logging disabled"_s});
        QCOMPARE(trace.events().filter(u"log"_s).size(), 2);
        QCOMPARE(trace.events().count(u"grid"_s), 5);
        QCOMPARE(stage.answered(), stage.twoByTwo);
        QVERIFY(logWindow(stage) == nullptr);
    }

    void a_log_closed_between_runs_is_of_no_note_and_replaced()
    {
        const MessageLog messages;
        SurveyStage stage;
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        QVERIFY(stage.run());
        // The runner is only gone with its deferred deletion.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(logText(stage).contains("Q1"_L1));
        closeLog(stage, u"Close"_s);
        QVERIFY(logWindow(stage) == nullptr);
        QCOMPARE(messages.infos(), QStringList());
        stage.startRun();
        QVERIFY(logWindow(stage)->isVisible());
        QCOMPARE(logText(stage), QString());
    }

private:
    static void closeLog(SurveyStage &stage, const QString &by)
    {
        ChatLogWindow *log = logWindow(stage);
        if (by == "Close"_L1)
            QVERIFY(pressButton(log, by));
        else if (by == "Escape"_L1)
            QTest::keyClick(log, Qt::Key_Escape);
        else
            log->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

ORRINET_TEST(TestRunLog)
#include "tst_runlog.moc"

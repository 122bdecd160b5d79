#include "tests/support/messagelog.h"
#include "tests/survey/surveystage.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

class TestSurveyLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_run_opens_the_log_beside_the_window();
    void an_exchange_makes_four_entries();
    void entries_come_as_the_exchange_goes_on();
    void a_failed_exchange_makes_three_entries();
    void without_a_key_an_exchange_makes_two_entries();
    void a_reply_of_several_lines_is_told_as_it_is();
    void an_unusable_reply_makes_an_empty_answer();
    void the_log_of_a_run_before_goes_on();
    void the_key_is_not_told();
};

namespace {

/// The two entries that a request makes.
QStringList sent(const Request &request)
{
    const QJsonArray messages = request.json().value("messages"_L1).toArray();
    return {"-> "_L1 + QString::fromUtf8(QJsonDocument(messages).toJson(QJsonDocument::Compact)),
            "-> "_L1 + QString::fromUtf8(request.body)};
}

/// The two entries that a usable reply makes.
QStringList received(const Reply &reply, const QString &answer)
{
    return {"<- "_L1 + QString::fromUtf8(reply.body), "<- "_L1 + answer};
}

QString text(const QStringList &entries)
{
    return entries.join(u'\n');
}

} // namespace

void TestSurveyLog::a_run_opens_the_log_beside_the_window()
{
    SurveyStage stage;
    QVERIFY(stage.log() == nullptr);
    stage.startRun();
    QVERIFY(stage.log() != nullptr);
    QCOMPARE(stage.log()->windowTitle(), u"Chat Log"_s);
    QVERIFY(stage.log()->isVisible());
    QVERIFY(!stage.log()->isModal());
    // There is nobody to be asked.
    QVERIFY(stage.runEntry()->isEnabled());
    QCOMPARE(stage.logText(), QString());
}

void TestSurveyLog::an_exchange_makes_four_entries()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    stage.addQuestion(u"Q2"_s, u"single_choice"_s, true, uR"(["yes","no"])"_s);
    const Reply first = Reply::content(u"Fine."_s);
    const Reply second = Reply::toolCall(uR"({"answer":"yes"})"_s);
    stage.endpoint.queue(first);
    stage.endpoint.queue(second);
    QVERIFY(stage.run());
    QCOMPARE(stage.logText(), text(sent(stage.endpoint.requests().at(0)) + received(first, u"Fine."_s) +
                                   sent(stage.endpoint.requests().at(1)) + received(second, uR"({"answer":"yes"})"_s)));
}

void TestSurveyLog::entries_come_as_the_exchange_goes_on()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    const Reply reply = Reply::content(u"Fine."_s);
    stage.endpoint.queue(reply.held());
    stage.startRun();
    const QString told = stage.logText();
    QVERIFY(stage.arrived(1));
    QCOMPARE(told, text(sent(stage.endpoint.requests().constFirst())));
    QCOMPARE(stage.logText(), told);
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.logText(), told + u'\n' + text(received(reply, u"Fine."_s)));
}

void TestSurveyLog::a_failed_exchange_makes_three_entries()
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
    QCOMPARE(stage.logText(),
             text(sent(stage.endpoint.requests().at(0)) + QStringList{u"! Host requires authentication (code 204)"_s} +
                  sent(stage.endpoint.requests().at(1)) + received(reply, u"Fine."_s)));
    QCOMPARE(messages.warnings(), QStringList{u"survey error: Host requires authentication (code 204)"_s});
}

void TestSurveyLog::without_a_key_an_exchange_makes_two_entries()
{
    const MessageLog messages;
    SurveyStage stage;
    Stage::setSetting(u"openai/api_key"_s, QString());
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    stage.addQuestion(u"Q2"_s);
    stage.startRun();
    QVERIFY(stage.runEntry()->isEnabled());
    const auto asking = [](const QString &prompt) -> QString {
        return R"(-> [{"content":"Act as the following persona.\nP1","role":"system"},{"content":")"_L1 + prompt +
               R"(","role":"user"}])"_L1;
    };
    const QString failure = u"! OPENAI_API_KEY not set"_s;
    QCOMPARE(stage.logText(), text({asking(u"Q1"_s), failure, asking(u"Q2"_s), failure}));
    QCOMPARE(messages.warnings(), QStringList(2, u"survey error: OPENAI_API_KEY not set"_s));
    QCOMPARE(stage.endpoint.connections(), 0);
}

void TestSurveyLog::a_reply_of_several_lines_is_told_as_it_is()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    const Reply reply = Reply::json("{\n\n  \"choices\": [\n{\"message\": {\"content\": \"one\\ntwo\"}}\n]\n}\n");
    stage.endpoint.queue(reply);
    QVERIFY(stage.run());
    QCOMPARE(stage.logText(), text(sent(stage.endpoint.requests().constFirst()) + received(reply, u"one\ntwo"_s)));
}

void TestSurveyLog::an_unusable_reply_makes_an_empty_answer()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    const Reply reply = Reply::json("no JSON");
    stage.endpoint.queue(reply);
    QVERIFY(stage.run());
    QCOMPARE(stage.logText(), text(sent(stage.endpoint.requests().constFirst()) + received(reply, QString())));
}

void TestSurveyLog::the_log_of_a_run_before_goes_on()
{
    SurveyStage stage;
    const Reply reply = Reply::content(u"Fine."_s);
    stage.endpoint.answerWith([&reply](const Request &) { return Reply(reply); });
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    QVERIFY(stage.run());
    const QPointer<ChatLogWindow> log(stage.log());
    const QString before = stage.logText();
    log->hide();
    stage.addQuestion(u"Q2"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.window()->findChildren<ChatLogWindow *>(), QList<ChatLogWindow *>{log});
    QVERIFY(log->isVisible());
    QCOMPARE(stage.logText(),
             before + u'\n' + text(sent(stage.endpoint.requests().at(1)) + received(reply, u"Fine."_s)));
}

void TestSurveyLog::the_key_is_not_told()
{
    SurveyStage stage;
    Stage::setSetting(u"openai/api_key"_s, u"secret-key"_s);
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().constFirst().header("Authorization"), "Bearer secret-key"_ba);
    QVERIFY(!stage.logText().contains("secret"_L1));
}

QTEST_MAIN(TestSurveyLog)
#include "tst_surveylog.moc"

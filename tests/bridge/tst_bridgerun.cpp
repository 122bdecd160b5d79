#include "tests/bridge/bridgestage.h"
#include "tests/support/entries.h"
#include "tests/support/testcase.h"

#include <QTcpServer>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

/// A port of this machine at which nobody listens.
quint16 deadPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// Fails what is asked of one question.
void failQuestion(BridgeStage &stage, const QString &question, int status)
{
    stage.endpoint.answerWith([question, status](const standin::Request &request) {
        return pairOf(request).endsWith(u' ' + question) ? Reply::status(status) : Reply::content(u"ok"_s);
    });
}

} // namespace

/// The run without a window.
class TestBridgeRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void each_pair_is_asked_once_and_stored_in_the_copy()
    {
        BridgeStage stage;
        const QString project = writeSurvey(stage.path(u"in.ormt"_s), 3, 2);
        const QByteArray before = readBytes(project);
        const auto ended = stage.runProject(project, u"out.ormt"_s, {u"--quiet"_s});
        QCOMPARE(ended.errors, QStringList());
        QCOMPARE(ended.output, QString());
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 6);
        QStringList asked = askedPairs(stage);
        asked.sort();
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)), asked);
        QCOMPARE(readBytes(project), before);
    }

    void an_answer_is_in_the_file_before_the_next_request_of_its_persona_data()
    {
        QTest::addColumn<QString>("jobs");
        QTest::newRow("one at a time") << u"1"_s;
        QTest::newRow("four at a time") << u"4"_s;
    }
    void an_answer_is_in_the_file_before_the_next_request_of_its_persona()
    {
        QFETCH(const QString, jobs);
        BridgeStage stage;
        QStringList wrong;
        QObject::connect(&stage.endpoint, &standin::ChatEndpoint::requestArrived, &stage.endpoint, [&](int index) {
            const QString pair = pairOf(stage.endpoint.requests().at(index));
            const QString persona = pair.section(u' ', 0, 0);
            const QStringList stored = answeredPairs(stage.path(u"out.ormt"_s)).filter(persona + u' ');
            if (QString(persona + " Q%1"_L1).arg(stored.size() + 1) != pair)
                wrong << pair + u": "_s + stored.join(u", "_s);
        });
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 5, 3), u"out.ormt"_s, {u"--jobs"_s, jobs});
        QCOMPARE(wrong, QStringList());
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 15);
    }

    void the_copy_holds_all_that_the_project_holds()
    {
        BridgeStage stage;
        const QString project = writeSurvey(stage.path(u"in.ormt"_s), 1, 1);
        SideDatabase file(project);
        QVERIFY(enterTag(file, u"uuid-P0001"_s, u"tag"_s));
        QVERIFY(setBoilerplate(file, u"before"_s, u"after"_s));
        QVERIFY(enter(file, AnswerEntered{.persona = u"uuid-P0001"_s, .question = 1, .number = 7}));
        const auto ended = stage.runProject(project, u"out.ormt"_s);
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 0);
        SideDatabase copy(stage.path(u"out.ormt"_s));
        QCOMPARE(everyRow(copy.database()), everyRow(file.database()));
    }

    void a_failed_pair_stays_open_and_a_run_in_place_asks_it_alone()
    {
        BridgeStage stage;
        const QString out = stage.path(u"out.ormt"_s);
        failQuestion(stage, u"Q2"_s, 400);
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 2, 3), out);
        QCOMPARE(ended.status, 1);
        QCOMPARE(askedPairs(stage).size(), 6);
        QCOMPARE(answeredPairs(out), (QStringList{u"P0001 Q1"_s, u"P0001 Q3"_s, u"P0002 Q1"_s, u"P0002 Q3"_s}));

        stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"later"_s); });
        QCOMPARE(stage.goOn(out).status, 0);
        QCOMPARE(askedPairs(stage).sliced(6), (QStringList{u"P0001 Q2"_s, u"P0002 Q2"_s}));
        QCOMPARE(answeredPairs(out).size(), 6);

        QCOMPARE(stage.goOn(out).status, 0);
        QCOMPARE(askedPairs(stage).size(), 8);
    }

    void a_project_without_pairs_is_through_at_once()
    {
        BridgeStage stage;
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 0, 3), u"out.ormt"_s);
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 0);
    }

    void where_nobody_listens_the_status_says_so_after_the_first_request()
    {
        BridgeStage stage;
        const QString to = u"http://127.0.0.1:%1/v1"_s.arg(deadPort());
        const auto ended = stage.run({u"--to"_s, to, u"--retries"_s, u"0"_s, u"--run"_s,
                                      writeSurvey(stage.path(u"in.ormt"_s), 3, 2), u"--save"_s, u"out.ormt"_s});
        QCOMPARE(ended.status, 4);
        QCOMPARE(ended.errors.filter(u"orrinet-bridge: no endpoint at %1: "_s.arg(to)).size(), 1);
        QVERIFY2(ended.errors.last().contains(u"1 requests sent"_s), qPrintable(ended.errors.last()));
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)), QStringList());
    }

    void an_endpoint_that_has_answered_is_there_data()
    {
        QTest::addColumn<Reply>("first");
        QTest::newRow("and then falls silent") << Reply::content(u"ok"_s);
        QTest::newRow("with a failure") << Reply::status(500);
    }
    void an_endpoint_that_has_answered_is_there()
    {
        QFETCH(const Reply, first);
        BridgeStage stage;
        stage.endpoint.queue(first);
        stage.endpoint.answerWith(
            [](const standin::Request &) { return Reply().ending(Reply::End::DroppedBeforeHead); });
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 2, 2), u"out.ormt"_s, {u"--retries"_s, u"0"_s});
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), 4);
    }

    void a_wrong_option_is_a_matter_of_usage()
    {
        BridgeStage stage;
        const QString project = writeSurvey(stage.path(u"in.ormt"_s), 1, 1);
        QCOMPARE(stage.run({u"--run"_s, project}).status, 2);
        QCOMPARE(stage.runProject(project, u"out.ormt"_s, {u"--in-place"_s}).status, 2);
        QCOMPARE(stage.runProject(project, u"out.ormt"_s, {u"--jobs"_s, u"0"_s}).status, 2);
        QCOMPARE(stage.runProject(project, u"out.ormt"_s, {u"--key-env"_s, u"NO_SUCH_KEY"_s}).status, 2);
        QVERIFY(!QFile::exists(stage.path(u"out.ormt"_s)));
        QCOMPARE(stage.endpoint.requests().size(), 0);
    }
};

ORRINET_TEST(TestBridgeRun)
#include "tst_bridgerun.moc"

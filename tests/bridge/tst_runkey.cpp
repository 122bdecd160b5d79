// The key of a run without a window: where it comes from, where it goes and where it never stands.

#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QDirIterator>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

const QString userKey = u"sk-of-the-user-0123456789"_s;
const QString otherKey = u"sk-of-another-9876543210"_s;

/// The keys that the endpoint was shown, each once.
QSet<QByteArray> keysShown(const BridgeStage &stage)
{
    QSet<QByteArray> keys;
    for (const standin::Request &request : stage.endpoint.requests())
        keys << request.header("Authorization");
    return keys;
}

/// Every file and folder below a folder of the home, with its bytes.
QMap<QString, QByteArray> filesOf(const BridgeStage &stage, const QString &below)
{
    QMap<QString, QByteArray> files;
    QDirIterator found(stage.path(below), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (found.hasNext()) {
        const QString path = found.next();
        files.insert(path, QFileInfo(path).isFile() ? readBytes(path) : QByteArray());
    }
    return files;
}

} // namespace

class TestRunKey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void without_a_key_the_run_asks_all_the_same_and_stores_none()
    {
        BridgeStage stage;
        const QString temporary = stage.path(u"tmp"_s);
        QVERIFY(QDir().mkpath(temporary));
        stage.setVariable(u"TMPDIR"_s, temporary);
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 2, 2), u"out.ormt"_s);
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 4);
        QCOMPARE(keysShown(stage), QSet<QByteArray>{QByteArray()});
        QVERIFY(!QFile::exists(stage.path(u".config"_s)));
        QCOMPARE(filesOf(stage, u"tmp"_s).keys(), QStringList());
    }

    void settings_without_a_key_stay_as_they_are()
    {
        BridgeStage stage;
        stage.setKey({});
        const QMap<QString, QByteArray> before = filesOf(stage, u".config"_s);
        QVERIFY(!before.isEmpty());
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"out.ormt"_s);
        QCOMPARE(ended.status, 0);
        QCOMPARE(keysShown(stage), QSet<QByteArray>{QByteArray()});
        QCOMPARE(filesOf(stage, u".config"_s), before);
    }

    void the_key_of_the_preferences_goes_to_the_endpoint()
    {
        BridgeStage stage;
        stage.setKey(userKey);
        const QMap<QString, QByteArray> before = filesOf(stage, u".config"_s);
        QCOMPARE(stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"out.ormt"_s).status, 0);
        QCOMPARE(keysShown(stage), QSet<QByteArray>{QByteArray("Bearer " + userKey.toUtf8())});
        QCOMPARE(filesOf(stage, u".config"_s), before);
    }

    void a_key_of_the_environment_goes_in_its_place_data()
    {
        QTest::addColumn<QString>("inPreferences");
        QTest::newRow("where the preferences have one") << userKey;
        QTest::newRow("where they have none") << QString();
    }
    void a_key_of_the_environment_goes_in_its_place()
    {
        QFETCH(const QString, inPreferences);
        BridgeStage stage;
        stage.setKey(inPreferences);
        stage.setVariable(u"MY_KEY"_s, otherKey);
        const QMap<QString, QByteArray> before = filesOf(stage, u".config"_s);
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"out.ormt"_s, {u"--key-env"_s, u"MY_KEY"_s});
        QCOMPARE(ended.status, 0);
        QCOMPARE(keysShown(stage), QSet<QByteArray>{QByteArray("Bearer " + otherKey.toUtf8())});
        QCOMPARE(filesOf(stage, u".config"_s), before);
    }

    void the_key_is_in_no_record_and_no_line()
    {
        BridgeStage stage;
        stage.setKey(userKey);
        // An endpoint that says it back wherever it can.
        stage.endpoint.answerWith([](const standin::Request &request) {
            const QByteArray key = request.header("Authorization");
            const QByteArray body = "{\"error\":{\"message\":\"" + key + "\"}}";
            Reply reply = Reply::status(pairOf(request).endsWith(u'1') ? 401 : 500, body)
                              .with("Content-Type", "application/" + key.sliced(7));
            reply.reason = "No " + key;
            return reply;
        });
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"out.ormt"_s,
                                            {u"--record"_s, u"record"_s, u"--retries"_s, u"0"_s});
        QCOMPARE(ended.status, 1);
        QCOMPARE(ended.errors.filter(u"[key]"_s).size(), 2);
        QCOMPARE(ended.errors.filter(userKey), QStringList());
        const QByteArray record = readBytes(stage.path(u"record"_s));
        QCOMPARE(record.count('\n'), 2);
        QVERIFY(!record.contains(userKey.toUtf8()));
        QVERIFY(!readBytes(stage.path(u"out.ormt"_s)).contains(userKey.toUtf8()));
    }

    void test_mode_has_no_say()
    {
        BridgeStage stage;
        stage.setVariable(u"ORRINET_TEST_MODE"_s, u"1"_s);
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"out.ormt"_s);
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 2);
        QCOMPARE(storedAnswers(stage.path(u"out.ormt"_s)).filter(u"test response"_s), QStringList());
    }

    void the_system_s_proxy_and_a_root_of_the_user_s_lead_to_a_hosted_endpoint()
    {
        BridgeStage stage;
        stage.setKey(userKey);
        const QStringList root = stage.throughProxy();
        const auto ended = stage.run(
            root + QStringList{u"--run"_s, writeSurvey(stage.path(u"in.ormt"_s), 1, 2), u"--save"_s, u"out.ormt"_s});
        QCOMPARE(ended.status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 2);
        QCOMPARE(stage.endpoint.requests().first().connectTarget, u"api.openai.com:443"_s);
        QCOMPARE(keysShown(stage), QSet<QByteArray>{QByteArray("Bearer " + userKey.toUtf8())});
    }

    void an_endpoint_that_nobody_vouches_for_is_shown_nothing_data()
    {
        QTest::addColumn<standin::Identity>("identity");
        QTest::addColumn<bool>("hasRoot");
        QTest::newRow("without its root") << standin::Identity::Good << false;
        QTest::newRow("of another host") << standin::Identity::WrongHost << true;
    }
    void an_endpoint_that_nobody_vouches_for_is_shown_nothing()
    {
        QFETCH(const standin::Identity, identity);
        QFETCH(const bool, hasRoot);
        BridgeStage stage;
        stage.setKey(userKey);
        stage.endpoint.setIdentity(identity);
        const QStringList root = stage.throughProxy();
        const auto ended =
            stage.run((hasRoot ? root : QStringList()) +
                      QStringList{u"--run"_s, writeSurvey(stage.path(u"in.ormt"_s), 2, 2), u"--save"_s, u"out.ormt"_s});
        QCOMPARE(ended.status, 4);
        QCOMPARE(stage.endpoint.requests().size(), 0);
        // A certificate does not get better.
        QCOMPARE(stage.endpoint.connections(), 1);
        QCOMPARE(ended.errors.filter(u"SSL handshake failed"_s).isEmpty(), false);
    }
};

ORRINET_TEST(TestRunKey)
#include "tst_runkey.moc"

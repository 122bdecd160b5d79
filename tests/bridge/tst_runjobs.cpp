// Several personas at a time against one at a time, and against the window.

#include "demo/examples.h"
#include "standin/respondent.h"
#include "tests/bridge/bridgestage.h"
#include "tests/support/messagelog.h"
#include "tests/support/seed.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

using Responder = std::function<Reply(const standin::Request &)>;

/// Everything that a run does to the outside.
struct Effects
{
    QList<QByteArray> requests; ///< sorted
    QStringList answers;

    bool operator==(const Effects &) const = default;
};

QList<QByteArray> bodies(const standin::ChatEndpoint &endpoint)
{
    QList<QByteArray> all;
    for (const standin::Request &request : endpoint.requests())
        all << request.body;
    std::ranges::sort(all);
    return all;
}

/// Answers by the request alone, which makes it the same in every order: now and then with a failure.
Responder respondOrFail(quint32 seed)
{
    return [seed](const standin::Request &request) {
        const QByteArray hash =
            QCryptographicHash::hash(QByteArray(QByteArray::number(seed) + request.body), QCryptographicHash::Sha256);
        static constexpr std::array failures{400, 401, 404, 500, 503};
        const auto chance = uchar(hash.at(0));
        if (chance < 20)
            return Reply::status(failures.at(uchar(hash.at(1)) % failures.size()));
        if (chance < 40)
            return Reply::json(hash.toHex());
        return standin::respond(request);
    };
}

/// A project that the window has saved: the personas and questions of examples/.
void saveExamples(const QString &path)
{
    QString failure;
    const auto examples = readExamples(QDir(QStringLiteral(ORRINET_SOURCE_FOLDER "/examples")), failure);
    QVERIFY2(examples, qPrintable(failure));
    SurveyStage stage;
    const qsizetype count = qEnvironmentVariableIsSet("ORRINET_LONG") ? examples->panel.size() : 3;
    for (const ExamplePersona &persona : examples->panel.first(count))
        stage.addPersona(persona.name, persona.narrative);
    for (const ExampleQuestion &question : examples->questionnaire)
        stage.addQuestion(
            question.prompt, question.type, question.reasoning,
            QString::fromUtf8(
                QJsonDocument(QJsonArray::fromStringList(question.labels)).toJson(QJsonDocument::Compact)));
    QVERIFY(stage.result("saveProjectToFile", path));
}

Effects windowRun(const QString &project, const QString &out, const Responder &respond)
{
    SurveyStage stage;
    // Each failure is a warning of the program's.
    const MessageLog log;
    stage.endpoint.answerWith(respond);
    stage.result("openProjectFromFile", project);
    stage.run();
    stage.result("saveProjectToFile", out);
    log.warnings();
    return {.requests = bodies(stage.endpoint), .answers = storedAnswers(out)};
}

Effects runWith(BridgeStage &stage, const QString &project, const Responder &respond, const QStringList &options)
{
    stage.endpoint.answerWith(respond);
    const QString out = stage.path(u"out.ormt"_s);
    stage.runProject(project, out, QStringList{u"--retries"_s, u"0"_s, u"--quiet"_s} + options);
    return {.requests = bodies(stage.endpoint), .answers = storedAnswers(out)};
}

void compareEffects(const Effects &effects, const Effects &expected)
{
    QCOMPARE(effects.requests.size(), expected.requests.size());
    for (qsizetype index = 0; index < expected.requests.size(); ++index)
        QCOMPARE(effects.requests.at(index), expected.requests.at(index));
    QCOMPARE(effects.answers, expected.answers);
}

} // namespace

class TestRunJobs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_example_survey_is_asked_and_stored_as_the_window_does()
    {
        const QTemporaryDir folder;
        const QString project = folder.filePath(u"examples.ormt"_s);
        saveExamples(project);
        const Effects window = windowRun(project, folder.filePath(u"window.ormt"_s), standin::respond);
        QVERIFY(!window.answers.isEmpty());
        QCOMPARE(window.answers.size(), window.requests.size());
        for (const QString &jobs : {u"1"_s, u"8"_s}) {
            BridgeStage stage;
            compareEffects(runWith(stage, project, standin::respond, {u"--format"_s, u"as-is"_s, u"--jobs"_s, jobs}),
                           window);
            QCOMPARE_LE(stage.endpoint.mostInFlight(), jobs.toInt());
        }
    }

    void random_failures_leave_the_same_pairs_open_as_in_the_window()
    {
        const bool isLong = qEnvironmentVariableIsSet("ORRINET_LONG");
        const int personas = isLong ? 200 : 9;
        const int questions = isLong ? 10 : 4;
        const quint32 seed = testSeed();
        const QTemporaryDir folder;
        const QString project = writeSurvey(folder.filePath(u"in.ormt"_s), personas, questions);
        const Effects window = windowRun(project, folder.filePath(u"window.ormt"_s), respondOrFail(seed));
        QCOMPARE(window.requests.size(), personas * questions);
        for (const QString &jobs : {u"1"_s, u"8"_s}) {
            BridgeStage stage;
            compareEffects(runWith(stage, project, respondOrFail(seed), {u"--jobs"_s, jobs}), window);
        }
    }

    void no_more_are_in_flight_than_wanted_and_so_many_are_data()
    {
        QTest::addColumn<int>("jobs");
        QTest::newRow("one") << 1;
        QTest::newRow("eight") << 8;
    }
    void no_more_are_in_flight_than_wanted_and_so_many_are()
    {
        QFETCH(const int, jobs);
        BridgeStage stage;
        stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"ok"_s).held(); });
        const int pairs = (jobs + 3) * 2;
        QProcess *process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), jobs + 3, 2), u"out.ormt"_s,
                                               {u"--jobs"_s, QString::number(jobs)});
        QVERIFY(stage.arrived(process, jobs));
        // One that is too many has the time to come; the test is as true where it comes later.
        QTimer pause;
        pause.setSingleShot(true);
        QObject::connect(&pause, &QTimer::timeout, &stage.endpoint, [&stage] {
            stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"ok"_s); });
            stage.endpoint.release();
        });
        pause.start(50);
        QCOMPARE(stage.waitForEnd(process).status, 0);
        QCOMPARE(stage.endpoint.mostInFlight(), jobs);
        QCOMPARE(stage.endpoint.requests().size(), pairs);
    }
};

ORRINET_TEST(TestRunJobs)
#include "tst_runjobs.moc"

// The program's runs against the plain recursion, on random projects.

#include "tests/support/entries.h"
#include "tests/support/seed.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"
#include "tests/survey/recursiverun.h"
#include "tests/survey/runtrace.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

using Respondent = RecursiveRun::Respondent;

namespace {

class RandomProject
{
public:
    RandomProject(Stage &onStage, quint32 seed)
        : stage(onStage)
        , random(seed)
    {
    }

    bool make() { return makeBoilerplate() && makePersonas() && makeQuestions() && makeResponses() && makeTriggers(); }

private:
    QVariant text()
    {
        static const QVariantList texts{
            QVariant(),          u""_s,           u" "_s,           u"one"_s, u" two, with blanks "_s,
            u"three\nlines\n"_s, u"\"quoted\""_s, u"\u00e9\u2713"_s};
        return texts.at(random.bounded(texts.size()));
    }

    bool makeBoilerplate()
    {
        if (random.bounded(4) == 0)
            return stage.exec(u"DELETE FROM boilerplate"_s);
        return setBoilerplate(stage, text(), text());
    }

    bool makePersonas()
    {
        bool made = true;
        personas = random.bounded(6);
        for (int index = 0; index < personas; ++index) {
            // Sorted by their bytes: upper case before lower case.
            const QString name = QChar(u"aBcDeF"_s.at((index * 5 + 2) % 6)) + QString::number(index);
            made = made && enter(stage, PersonaEntered{.uuid = QString::number(index),
                                                       .name = name,
                                                       .attributes = text(),
                                                       .systemPrompt = text()});
        }
        return made;
    }

    bool makeQuestions()
    {
        static const QVariantList types{u"text"_s,   u"numeric"_s, u"single_choice"_s, u"multi_choice"_s,
                                        u"likert"_s, u"ranking"_s, u"essay"_s,         QVariant()};
        static const QVariantList flags{0, 0, 0, 1, 2, QVariant()};
        bool made = true;
        questions = random.bounded(6);
        for (int id = 1; id <= questions; ++id)
            made = made && enter(stage, QuestionEntered{.id = id,
                                                        .order = (id * 5 % 7) - 3,
                                                        .prompt = text(),
                                                        .type = types.at(random.bounded(types.size())),
                                                        .judge = flags.at(random.bounded(flags.size()))});
        return made;
    }

    bool makeResponses()
    {
        bool made = true;
        for (int count = random.bounded(12); count > 0; --count) {
            const QString time = u"2001-02-03 00:00:%1"_s.arg(random.bounded(60), 2, 10, QChar(u'0'));
            made = made && enter(stage, AnswerEntered{.persona = QString::number(random.bounded(7)),
                                                      .question = random.bounded(7),
                                                      .text = text(),
                                                      .createdAt = time});
        }
        return made;
    }

    bool makeTriggers()
    {
        if (random.bounded(3) == 0 &&
            !stage.exec(u"CREATE TRIGGER refuse BEFORE INSERT ON responses WHEN NEW.question_id % 2 = 0 "
                        "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s))
            return false;
        // The time of an answer is then the same in the program and in its model, and a history has an order of its
        // own.
        return stage.exec(u"CREATE TRIGGER date AFTER INSERT ON responses BEGIN UPDATE responses SET created_at="
                          "'2001-02-03 00:00:'||printf('%02d', NEW.id * 37 % 60) WHERE id=NEW.id; END"_s);
    }

    Stage &stage;
    QRandomGenerator random;
    int personas = 0;
    int questions = 0;
};

} // namespace

class TestRandomRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_run_has_the_effects_of_the_recursion_data()
    {
        QTest::addColumn<Respondent>("respondent");
        QTest::newRow("test mode") << Respondent::TestMode;
        QTest::newRow("no key") << Respondent::NoKey;
    }
    void a_run_has_the_effects_of_the_recursion()
    {
        QFETCH(const Respondent, respondent);
        const quint32 seed = testSeed();
        qsizetype asked = 0;
        for (quint32 round = 0; round < 40; ++round) {
            Stage stage;
            Stage::setTestMode(respondent == Respondent::TestMode);
            RunTrace trace(stage);
            QVERIFY(RandomProject(stage, seed + round).make());
            compareRuns(stage, trace, respondent, asked);
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(u"round %1"_s.arg(round)));
        }
        QVERIFY(asked > 40);
    }

private:
    /// Two runs, the second of which asks what the first has left open.
    static void compareRuns(Stage &stage, RunTrace &trace, Respondent respondent, qsizetype &asked)
    {
        const QString file = stage.path(u"copy.db"_s);
        QVERIFY(stage.exec(u"VACUUM INTO ?"_s, {file}));
        SideDatabase copy(file);
        for (int run = 0; run < 2; ++run) {
            RecursiveRun expected(copy, respondent);
            expected.start();
            asked += expected.asked.size();
            trace.clear();
            stage.call("runSurvey");
            QCOMPARE(trace.events(), expected.events);
        }
        QCOMPARE(everyRow(stage.database()), everyRow(copy.database()));
    }
};

ORRINET_TEST(TestRandomRuns)
#include "tst_randomruns.moc"

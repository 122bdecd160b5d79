// A pair is asked only while COUNT(*) finds no row for it, whatever the columns of responses hold.

#include "survey/answeredpairs.h"
#include "tests/support/entries.h"
#include "tests/support/seed.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"
#include "tests/survey/recursiverun.h"
#include "tests/survey/runtrace.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

static const qint64 twoToThe32 = qint64(1) << 32;

/// The pairs of a project for which the check finds no row, in the order of a run.
static QStringList openPairs(Stage &stage)
{
    QStringList pairs;
    const Rows personas = stage.rows(u"SELECT uuid,attributes FROM personas ORDER BY name"_s);
    const Rows questions = stage.rows(u"SELECT question_id,prompt FROM questions ORDER BY order_num"_s);
    for (const QVariantList &persona : personas) {
        for (const QVariantList &question : questions) {
            const QVariant count =
                stage.value(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s,
                            {persona.at(0).toString(), question.at(0).toInt()});
            if (count == 0)
                pairs.append(persona.at(1).toString() + u' ' + question.at(1).toString());
        }
    }
    return pairs;
}

/// The same from the log of a run: first word of the system message, last of the question.
static QStringList askedPairs(const QStringList &events)
{
    static const QRegularExpression entry(
        uR"re(^log -> \[\{"content":"(\w+)","role":"system"\}.*\{"content":"(\w+)","role":"user"\}\]$)re"_s);
    QStringList pairs;
    for (const QString &event : events) {
        if (!event.startsWith("log -> "_L1))
            continue;
        const QRegularExpressionMatch match = entry.match(event);
        pairs.append(match.hasMatch() ? QString(match.captured(1) + u' ' + match.captured(2)) : event);
    }
    return pairs;
}

namespace {

struct Size
{
    int personas;
    int questions;
    int answers; ///< fewer than these
    int between; ///< so many personas with all answers before each odd one
};

/// A run that goes on with the next persona, and one that finds most of them answered and so no longer looks them up
/// one by one.
constexpr Size fewAnswers{.personas = 5, .questions = 5, .answers = 40, .between = 0};
constexpr Size mostlyAnswered{.personas = 4, .questions = 2, .answers = 80, .between = 8};

/// Tables as only a foreign hand fills them.
class OddProject
{
public:
    OddProject(Stage &onStage, quint32 seed, const Size &chosen)
        : stage(onStage)
        , size(chosen)
        , random(seed)
    {
    }

    bool make()
    {
        bool made = setBoilerplate(stage, QVariant(), QVariant());
        for (int index = 0; made && index < size.personas; ++index)
            made = addOddPersona(index);
        for (int index = 0; made && index < size.questions; ++index)
            made = addOddQuestion(index);
        made = made && stage.exec(u"INSERT INTO responses (persona_uuid, question_id) SELECT uuid, question_id "
                                  "FROM personas, questions WHERE attributes='answered'"_s);
        for (int count = random.bounded(size.answers); made && count > 0; --count) {
            made = stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer) VALUES (?,?,'old')"_s,
                              {oddUuid(), oddQuestionId()});
        }
        return made;
    }

private:
    QVariant one(const QVariantList &values) { return values.at(random.bounded(values.size())); }

    bool addOddPersona(int index)
    {
        const QString letter(QChar(u'a' + index));
        // The texts of two uuids may be the same, as one may be a blob.
        const QVariant uuid = one({letter, letter, QVariant(), letter.toUtf8(), u"a"_s.toUtf8(), QString(QChar(u'5')),
                                   QString(letter + u' '), letter.toUpper()});
        bool made = stage.exec(u"INSERT OR IGNORE INTO personas (uuid, name, attributes) VALUES (?,?,?)"_s,
                               {uuid, QString(QChar(u'y' - index)), QString(u'p' + letter)});
        if (random.bounded(8) == 0)
            made =
                made && stage.exec(u"INSERT OR IGNORE INTO personas (uuid, name, attributes) VALUES ('','z','pz')"_s);
        for (int count = 0; count < size.between; ++count) {
            const QString name = QChar(u'x' - index) + QString::number(count);
            made = made && enter(stage, PersonaEntered{.uuid = name, .name = name, .attributes = u"answered"_s});
        }
        return made;
    }

    bool addOddQuestion(int index)
    {
        const qint64 id = index + 1;
        const QVariant number = one({id, id, id, -id, 100 + id, (qint64(1) << 31) - id, -(qint64(1) << 31) + id});
        return stage.exec(u"INSERT OR IGNORE INTO questions (question_id, order_num, prompt) VALUES (?,?,?)"_s,
                          {number, 5 - index, u"q%1"_s.arg(id)});
    }

    QVariant oddUuid()
    {
        const QString letter(QChar(u'a' + random.bounded(size.personas + 1)));
        return one({letter, letter, letter, letter, letter.toUtf8(), letter.toUpper(), QString(letter + u' '),
                    QString(u' ' + letter), u""_s, u""_s.toUtf8(), QVariant(), 5, 5.5, QString(u'5')});
    }

    QVariant oddQuestionId()
    {
        const qint64 id = random.bounded(size.questions + 1);
        const QString digits = QString::number(id);
        const double real = static_cast<double>(id);
        const QVariantList equal{id,  id, id, id, digits, QString(u' ' + digits + u' '), QString(digits + ".0"_L1),
                                 real};
        const QVariantList unequal{-id,
                                   100 + id,
                                   QString(digits + u'x'),
                                   digits.toUtf8(),
                                   real + 0.5,
                                   QVariant(),
                                   u""_s,
                                   u"q"_s,
                                   1e30,
                                   id + twoToThe32,
                                   id - twoToThe32,
                                   (qint64(1) << 31) - id,
                                   -(qint64(1) << 31) + id};
        return one(equal + unequal +
                   QVariantList{std::numeric_limits<qint64>::max() - id, std::numeric_limits<qint64>::min() + id});
    }

    Stage &stage;
    Size size;
    QRandomGenerator random;
};

} // namespace

class TestSkipCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_run_asks_the_pairs_that_the_count_leaves_open_data() { addSizes(); }
    void a_run_asks_the_pairs_that_the_count_leaves_open()
    {
        QFETCH(const Size, size);
        const quint32 seed = testSeed();
        qsizetype pairs = 0;
        for (quint32 round = 0; round < 50; ++round) {
            Stage stage;
            const RunTrace trace(stage);
            QVERIFY(OddProject(stage, seed + round, size).make());
            const QStringList open = openPairs(stage);
            stage.call("runSurvey");
            QVERIFY2(askedPairs(trace.events()) == open, qPrintable(difference(stage, round, trace.events(), open)));
            pairs += open.size();
        }
        QVERIFY(pairs > 50);
    }

    void answers_given_in_the_run_count_too_data() { addSizes(); }
    void answers_given_in_the_run_count_too()
    {
        QFETCH(const Size, size);
        const quint32 seed = testSeed();
        qsizetype answers = 0;
        for (quint32 round = 0; round < 20; ++round) {
            Stage stage;
            Stage::setTestMode(true);
            QVERIFY(OddProject(stage, seed + round, size).make());
            const QString file = stage.path(u"copy.db"_s);
            QVERIFY(stage.exec(u"VACUUM INTO ?"_s, {file}));
            SideDatabase copy(file);
            RecursiveRun expected(copy, RecursiveRun::Respondent::TestMode);
            expected.start();
            const QVariant before = stage.value(u"SELECT coalesce(MAX(id),0) FROM responses"_s);
            stage.call("runSurvey");
            QList<std::pair<QString, int>> stored;
            const Rows rows =
                stage.rows(u"SELECT persona_uuid,question_id FROM responses WHERE id>? ORDER BY id"_s, {before});
            for (const QVariantList &row : rows)
                stored.append({row.at(0).toString(), row.at(1).toInt()});
            QVERIFY2(stored == expected.asked, qPrintable(u"round %1"_s.arg(round)));
            answers += stored.size();
        }
        QVERIFY(answers > 20);
    }

    void only_an_equal_row_closes_a_pair_data()
    {
        QTest::addColumn<QVariant>("uuid");
        QTest::addColumn<QVariant>("questionId");
        QTest::addColumn<bool>("closes");
        const QVariant uuid(u"uuid-A"_s);
        const auto row = [](const char *name, const QVariant &persona, const QVariant &question, bool closes = false) {
            QTest::newRow(name) << persona << question << closes;
        };
        row("the pair", uuid, 1, true);
        row("a number as text", uuid, u"1"_s, true);
        row("a number as text with blanks", uuid, u" 1 "_s, true);
        row("a real of the same value", uuid, 1.0, true);
        row("another real", uuid, 1.5);
        row("a number as blob", uuid, "1"_ba);
        row("text", uuid, u"1x"_s);
        row("no question", uuid, QVariant());
        row("another question", uuid, 2);
        row("the same low 32 bits", uuid, twoToThe32 + 1);
        row("the same low 32 bits, negative", uuid, 1 - twoToThe32);
        row("no persona", QVariant(), 1);
        row("empty uuid", u""_s, 1);
        row("uuid as blob", "uuid-A"_ba, 1);
        row("uuid in another case", u"UUID-A"_s, 1);
        row("uuid with a blank", u"uuid-A "_s, 1);
        row("another persona", u"uuid-B"_s, 1);
    }
    void only_an_equal_row_closes_a_pair()
    {
        QFETCH(const QVariant, uuid);
        QFETCH(const QVariant, questionId);
        QFETCH(const bool, closes);
        SideDatabase project(u":memory:"_s);
        QVERIFY(project.exec(schemaStatements()));
        QVERIFY(enter(project, AnswerEntered{.persona = uuid, .question = questionId}));
        AnsweredPairs pairs(project.database());
        // The first personas are looked up one by one, all others at once.
        for (int personas = 0; personas < 20; ++personas) {
            const auto answered = pairs.of(u"uuid-A"_s);
            QVERIFY(answered);
            QCOMPARE(answered->contains(1), closes);
        }
    }

private:
    static void addSizes()
    {
        QTest::addColumn<Size>("size");
        QTest::newRow("few answers") << fewAnswers;
        QTest::newRow("most personas answered") << mostlyAnswered;
    }

    static QString difference(Stage &stage, quint32 round, const QStringList &events, const QStringList &open)
    {
        QStringList lines{u"round %1"_s.arg(round), "asked: "_L1 + askedPairs(events).join(", "_L1),
                          "open: "_L1 + open.join(", "_L1)};
        return (lines + literals(stage.database(), u"SELECT persona_uuid,question_id FROM responses"_s)).join(u'\n');
    }
};

ORRINET_TEST(TestSkipCheck)
#include "tst_skipcheck.moc"

// A pair is asked only while COUNT(*) finds no row for it, whatever the columns of responses hold.

#include "tests/survey/literalwalk.h"
#include "tests/survey/walkkit.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSqlQuery>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

using Respondent = LiteralWalk::Respondent;
Q_DECLARE_METATYPE(LiteralWalk::Respondent)

static const qint64 twoToThe32 = qint64(1) << 32;

/// The pairs of a project for which the check finds no row, in the order of a run.
static QStringList openPairs(Stage &stage)
{
    QStringList pairs;
    const auto personas = stage.rows(u"SELECT uuid,attributes FROM personas ORDER BY name"_s);
    const auto questions = stage.rows(u"SELECT question_id,prompt FROM questions ORDER BY order_num"_s);
    for (const QVariantList &persona : personas) {
        for (const QVariantList &question : questions) {
            const int count = stage
                                  .value(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s,
                                         {persona.at(0).toString(), question.at(0).toInt()})
                                  .toInt();
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
};

/// A run that goes on with the next persona, and one that finds most of them answered.
constexpr Size fewAnswers{.personas = 5, .questions = 5, .answers = 40};
constexpr Size mostlyAnswered{.personas = 24, .questions = 1, .answers = 2500};

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
        const QString name(QChar(u'y' - index));
        return stage.exec(u"INSERT OR IGNORE INTO personas (uuid, name, attributes) VALUES (?,?,?)"_s,
                          {uuid, name, QString(u'p' + letter)}) &&
               (random.bounded(8) != 0 ||
                stage.exec(u"INSERT OR IGNORE INTO personas (uuid, name, attributes) VALUES ('','z','pz')"_s));
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
        return one({id,
                    id,
                    id,
                    id,
                    -id,
                    100 + id,
                    digits,
                    QString(u' ' + digits + u' '),
                    QString(digits + ".0"_L1),
                    QString(digits + u'x'),
                    digits.toUtf8(),
                    static_cast<double>(id),
                    static_cast<double>(id) + 0.5,
                    QVariant(),
                    u""_s,
                    u"q"_s,
                    1e30,
                    id + twoToThe32,
                    id - twoToThe32,
                    (qint64(1) << 31) - id,
                    -(qint64(1) << 31) + id,
                    std::numeric_limits<qint64>::max() - id,
                    std::numeric_limits<qint64>::min() + id});
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
        const quint32 seed = chosenSeed();
        qsizetype pairs = 0;
        for (quint32 round = 0; round < 100; ++round) {
            Stage stage;
            const RunTrace trace(stage);
            QVERIFY(OddProject(stage, seed + round, size).make());
            const QStringList open = openPairs(stage);
            stage.call("runSurvey");
            QVERIFY2(askedPairs(trace.events) == open, qPrintable(difference(stage, round, trace.events, open)));
            pairs += open.size();
        }
        QVERIFY(pairs > 100);
    }

    void answers_given_in_the_run_count_too_data() { addSizes(); }
    void answers_given_in_the_run_count_too()
    {
        QFETCH(const Size, size);
        const quint32 seed = chosenSeed();
        for (quint32 round = 0; round < 40; ++round) {
            Stage stage;
            const RunTrace trace(stage);
            Stage::setTestMode(true);
            QVERIFY(OddProject(stage, seed + round, size).make());
            const ProjectCopy copy(stage);
            LiteralWalk walk(ProjectCopy::database(), Respondent::TestMode);
            walk.run();
            const int before = stage.value(u"SELECT coalesce(MAX(id),0) FROM responses"_s).toInt();
            stage.call("runSurvey");
            const auto rows =
                stage.rows(u"SELECT persona_uuid,question_id FROM responses WHERE id>? ORDER BY id"_s, {before});
            QList<std::pair<QString, int>> stored;
            for (const QVariantList &row : rows)
                stored.append({row.at(0).toString(), row.at(1).toInt()});
            QVERIFY2(stored == walk.asked, qPrintable(u"round %1"_s.arg(round)));
        }
    }

    void only_an_equal_row_closes_a_pair_data()
    {
        QTest::addColumn<QVariant>("uuid");
        QTest::addColumn<QVariant>("questionId");
        QTest::addColumn<bool>("closes");
        const QVariant uuid(u"uuid-A"_s);
        QTest::newRow("the pair") << uuid << QVariant(1) << true;
        QTest::newRow("a number as text") << uuid << QVariant(u"1"_s) << true;
        QTest::newRow("a number as text with blanks") << uuid << QVariant(u" 1 "_s) << true;
        QTest::newRow("a real of the same value") << uuid << QVariant(1.0) << true;
        QTest::newRow("another real") << uuid << QVariant(1.5) << false;
        QTest::newRow("a number as blob") << uuid << QVariant(QByteArray("1")) << false;
        QTest::newRow("text") << uuid << QVariant(u"1x"_s) << false;
        QTest::newRow("no question") << uuid << QVariant() << false;
        QTest::newRow("another question") << uuid << QVariant(2) << false;
        QTest::newRow("the same low 32 bits") << uuid << QVariant(twoToThe32 + 1) << false;
        QTest::newRow("the same low 32 bits, negative") << uuid << QVariant(1 - twoToThe32) << false;
        QTest::newRow("no persona") << QVariant() << QVariant(1) << false;
        QTest::newRow("empty uuid") << QVariant(u""_s) << QVariant(1) << false;
        QTest::newRow("uuid as blob") << QVariant(QByteArray("uuid-A")) << QVariant(1) << false;
        QTest::newRow("uuid in another case") << QVariant(u"UUID-A"_s) << QVariant(1) << false;
        QTest::newRow("uuid with a blank") << QVariant(u"uuid-A "_s) << QVariant(1) << false;
        QTest::newRow("another persona") << QVariant(u"uuid-B"_s) << QVariant(1) << false;
    }
    void only_an_equal_row_closes_a_pair()
    {
        QFETCH(const QVariant, uuid);
        QFETCH(const QVariant, questionId);
        QFETCH(const bool, closes);
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(addQuestion(stage, 1, u"Q"_s));
        QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id) VALUES (?,?)"_s, {uuid, questionId}));
        stage.call("runSurvey");
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM responses"_s), closes ? 1 : 2);
    }

private:
    static void addSizes()
    {
        QTest::addColumn<Size>("size");
        QTest::newRow("few answers") << fewAnswers;
        QTest::newRow("most personas answered") << mostlyAnswered;
    }

    static quint32 chosenSeed()
    {
        const QString given = qEnvironmentVariable("ORRINET_TEST_SEED");
        const quint32 seed = given.isEmpty() ? QRandomGenerator::global()->generate() : given.toUInt();
        qInfo("ORRINET_TEST_SEED=%u", seed);
        return seed;
    }

    static QString difference(Stage &stage, quint32 round, const QStringList &events, const QStringList &open)
    {
        QStringList lines{u"round %1"_s.arg(round), "asked: "_L1 + askedPairs(events).join(", "_L1),
                          "open: "_L1 + open.join(", "_L1)};
        const auto rows = stage.rows(u"SELECT quote(persona_uuid),quote(question_id) FROM responses"_s);
        for (const QVariantList &row : rows)
            lines.append(row.at(0).toString() + u' ' + row.at(1).toString());
        return lines.join(u'\n');
    }
};

QTEST_MAIN(TestSkipCheck)
#include "tst_skipcheck.moc"

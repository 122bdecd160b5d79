#include "tests/inspect/samplesurvey.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <array>

using namespace Qt::StringLiterals;

// SQL expressions, so that values of any type get into columns of any type.

/// Among them: a lone byte and the replacement character that it reads as, a surrogate, an overlong form, a
/// noncharacter, a code point past the end, texts with a NUL, composed and decomposed letters.
static constexpr std::array oddUuids{"NULL",
                                     "''",
                                     "x''",
                                     "'a'",
                                     "'A'",
                                     "'a '",
                                     "x'61'",
                                     "7",
                                     "'7'",
                                     "'07'",
                                     "7.0",
                                     "7.5",
                                     "'7.5'",
                                     "CAST(x'ff' AS TEXT)",
                                     "CAST(x'fe' AS TEXT)",
                                     "CAST(x'efbfbd' AS TEXT)",
                                     "x'ff'",
                                     "CAST(x'eda080' AS TEXT)",
                                     "CAST(x'c180' AS TEXT)",
                                     "CAST(x'efbfbe' AS TEXT)",
                                     "CAST(x'f5808080' AS TEXT)",
                                     "CAST(x'6100' AS TEXT)",
                                     "CAST(x'610062' AS TEXT)",
                                     "CAST(x'610063' AS TEXT)",
                                     "x'610062'",
                                     "CAST(x'00' AS TEXT)",
                                     "CAST(x'c3a9' AS TEXT)",
                                     "CAST(x'65cc81' AS TEXT)"};
static constexpr std::array questionIds{"1", "2", "3", "-1", "0", "4294967297", "2147483648"};
static constexpr std::array answeredIds{"1",   "2",    "3",     "-1",    "0",           "4294967297", "2147483648",
                                        "1",   "2",    "'1'",   "'1x'",  "'2.0'",       "' 1'",       "''",
                                        "1.5", "NULL", "x'31'", "1e300", "-4294967295", "99"};
static constexpr std::array orderNumbers{"1", "2", "NULL", "'x'", "1.5", "x'00'"};
static constexpr std::array answerTimes{"'2026-01-01 00:00:00'",
                                        "'2026-01-01 00:00:00'",
                                        "'2026-01-01 00:00:01'",
                                        "'2025-12-31 23:59:59'",
                                        "NULL",
                                        "''",
                                        "'2026'",
                                        "2026",
                                        "2026.5",
                                        "'later'",
                                        "x''",
                                        "x'3230'",
                                        "9e999",
                                        "CURRENT_TIMESTAMP"};
static constexpr std::array answerTexts{"NULL",
                                        "NULL",
                                        "NULL",
                                        "''",
                                        "x''",
                                        "'yes'",
                                        "' '",
                                        "5",
                                        "0.5",
                                        "x'7965'",
                                        "CAST(x'79ff' AS TEXT)",
                                        "CAST(x'610062' AS TEXT)",
                                        "CAST(x'00' AS TEXT)"};
static constexpr std::array answerNumbers{"NULL",    "NULL",  "0",   "-0.0",  "3.14159265", "1234567", "'12'",
                                          "'words'", "x'31'", "x''", "9e999", "-1e-7",      "''"};
static constexpr std::array answerObjects{"NULL",
                                          "''",
                                          "x''",
                                          "'prose'",
                                          "12",
                                          "'[1]'",
                                          "'{\"answer\":[1]}'",
                                          "'{\"reasoning\":5}'",
                                          "'{\"reasoning\":\"why\"}'",
                                          "CAST('{\"reasoning\":\"blob\"}' AS BLOB)",
                                          "'{\"reasoning\":\"cut'",
                                          "CAST(x'7b22726561736f6e696e67223a22ff227d' AS TEXT)"};

/// What the two cells of a pair are to show, by a statement of their own.
static QStringList literalCells(Stage &stage, const QString &uuid, int questionId)
{
    const Rows rows = stage.rows(u"SELECT text_answer,numeric_answer,json_answer FROM responses "
                                 "WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"_s,
                                 {uuid, questionId});
    if (rows.isEmpty())
        return {QString(), QString()};
    const QVariantList &row = rows.first();
    const QString json = row.at(2).toString();
    QString shown = row.at(0).toString();
    if (shown.isEmpty())
        shown = row.at(1).isNull() ? json : QString::number(row.at(1).toDouble(), 'g', 6);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8(), &error);
    const bool isObject = error.error == QJsonParseError::NoError && document.isObject();
    return {shown, isObject ? document.object().value("reasoning"_L1).toString() : QString()};
}

/// The grid as a statement for each pair of cells fills it.
static QList<QStringList> literalGrid(Stage &stage)
{
    const auto personas = stage.rows(u"SELECT uuid,name FROM personas ORDER BY name"_s);
    const auto questions = stage.rows(u"SELECT question_id FROM questions ORDER BY order_num"_s);
    QList<QStringList> grid;
    for (const QVariantList &persona : personas) {
        QStringList row{persona.at(1).toString()};
        for (const QVariantList &question : questions)
            row << literalCells(stage, persona.at(0).toString(), question.at(0).toInt());
        grid.append(row);
    }
    return grid;
}

/// How many cells beside the names show something.
static qsizetype filledCells(const QList<QStringList> &grid)
{
    qsizetype filled = 0;
    for (const QStringList &row : grid)
        filled += row.size() - row.count(QString()) - 1;
    return filled;
}

static QString sqlText(const char *text)
{
    return QString::fromLatin1(text);
}

static bool emptyTables(Stage &stage)
{
    return stage.exec({u"DELETE FROM personas"_s, u"DELETE FROM questions"_s, u"DELETE FROM responses"_s});
}

/// Enters a persona P and a question, both of the number 1.
static bool enterOnePair(Stage &stage)
{
    return enter(stage, PersonaEntered{.uuid = u"1"_s, .name = u"P"_s}, QuestionEntered{.id = 1});
}

/// Of the answers to a pair the newest is shown. The grid is filled in one pass over the answers; here a statement for
/// each cell, the plain way to fill it, says what each cell is to show, on random tables.
class TestNewestAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { random.seed(testSeed()); }

    void the_later_answer_wins_data()
    {
        QTest::addColumn<QStringList>("times");
        QTest::addColumn<QString>("winner");
        QTest::newRow("later row") << QStringList{u"2026-01-01 00:00:00"_s, u"2026-01-01 00:00:01"_s} << u"1"_s;
        QTest::newRow("earlier row") << QStringList{u"2026-01-01 00:00:01"_s, u"2026-01-01 00:00:00"_s} << u"0"_s;
        QTest::newRow("row in between") << QStringList{u"2025-12-31 23:59:59"_s, u"2026-02-01 00:00:00"_s,
                                                       u"2026-01-31 23:59:59"_s}
                                        << u"1"_s;
    }
    void the_later_answer_wins()
    {
        QFETCH(const QStringList, times);
        QFETCH(const QString, winner);
        Stage stage;
        QVERIFY(enterOnePair(stage));
        for (qsizetype row = 0; row < times.size(); ++row)
            QVERIFY(enter(stage, AnswerEntered{.persona = 1, .question = 1, .text = row, .createdAt = times.at(row)}));
        QCOMPARE(cells(refreshedGrid(stage)), (QList<QStringList>{{u"P"_s, winner, QString()}}));
    }

    void the_later_answer_hides_all_of_the_earlier()
    {
        Stage stage;
        QVERIFY(enterOnePair(stage));
        QVERIFY(enter(stage, AnswerEntered{.persona = 1,
                                           .question = 1,
                                           .text = u"x"_s,
                                           .number = 1,
                                           .json = u"{\"reasoning\":\"why\"}"_s,
                                           .createdAt = u"2026-01-01 00:00:00"_s}));
        QCOMPARE(cells(refreshedGrid(stage)), (QList<QStringList>{{u"P"_s, u"x"_s, u"why"_s}}));
        QVERIFY(enter(stage, AnswerEntered{.persona = 1, .question = 1, .createdAt = u"2026-01-02 00:00:00"_s}));
        QCOMPARE(cells(refreshedGrid(stage)), (QList<QStringList>{{u"P"_s, QString(), QString()}}));
    }

    void personas_of_one_name_keep_their_answers()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.id = 1}));
        for (const auto &uuid : {u"a"_s, u"b"_s, u"c"_s}) {
            QVERIFY(enter(stage, PersonaEntered{.uuid = uuid, .name = u"Twin"_s},
                          AnswerEntered{.persona = uuid, .question = 1, .text = uuid}));
        }
        QStringList answers = columnTexts(refreshedGrid(stage), 1);
        answers.sort();
        QCOMPARE(answers, QStringList({u"a"_s, u"b"_s, u"c"_s}));
    }

    void answers_of_a_deleted_persona_or_question_are_not_shown()
    {
        Stage stage;
        QVERIFY(enterOnePair(stage));
        QVERIFY(enter(stage, AnswerEntered{.persona = 2, .question = 1, .text = u"orphan"_s},
                      AnswerEntered{.persona = 1, .question = 2, .text = u"orphan"_s},
                      AnswerEntered{.persona = 1, .question = 1, .text = u"kept"_s}));
        QCOMPARE(cells(refreshedGrid(stage)), (QList<QStringList>{{u"P"_s, u"kept"_s, QString()}}));
    }

    void every_cell_shows_what_its_own_statement_gives_data()
    {
        QTest::addColumn<int>("rounds");
        QTest::addColumn<int>("personas");
        QTest::addColumn<int>("questions");
        QTest::addColumn<int>("answers");
        QTest::newRow("few answers") << 100 << 6 << 4 << 12;
        QTest::newRow("many answers") << 100 << 12 << 4 << 120;
        QTest::newRow("many answers to few questions") << 50 << 8 << 2 << 400;
    }
    void every_cell_shows_what_its_own_statement_gives()
    {
        QFETCH(const int, rounds);
        QFETCH(const int, personas);
        QFETCH(const int, questions);
        QFETCH(const int, answers);
        Stage stage;
        qsizetype filled = 0;
        for (int round = 0; round < rounds; ++round) {
            QVERIFY(emptyTables(stage));
            addRandomPersonas(stage, personas);
            addRandomQuestions(stage, questions);
            addRandomAnswers(stage, answers);
            const auto literal = literalGrid(stage);
            QVERIFY(!literal.isEmpty());
            QCOMPARE(cells(refreshedGrid(stage)), literal);
            filled += filledCells(literal);
        }
        // The rounds would show nothing if the pairs never met.
        QCOMPARE_GT(filled, rounds / 4);
    }

    void each_odd_uuid_has_the_answers_that_its_own_statement_gives()
    {
        Stage stage;
        qsizetype filled = 0;
        for (const char *answered : oddUuids) {
            QVERIFY(emptyTables(stage));
            QVERIFY(enter(stage, QuestionEntered{.id = 1}));
            for (const char *uuid : oddUuids)
                addPersona(stage, sqlText(uuid));
            QVERIFY(
                stage.exec(u"INSERT INTO responses (persona_uuid,question_id,text_answer) VALUES (%1,1,'yes')"_s.arg(
                    sqlText(answered))));
            const auto literal = literalGrid(stage);
            QVERIFY2(cells(refreshedGrid(stage)) == literal, answered);
            filled += filledCells(literal);
        }
        // Most texts are found, and no blob is.
        QCOMPARE_GT(filled, qsizetype(oddUuids.size() / 2));
    }

    void a_uuid_that_changes_when_it_is_looked_up_has_the_answers_found_then_data()
    {
        QTest::addColumn<QString>("uuid");
        QTest::newRow("byte order mark") << u"CAST(x'efbbbf61' AS TEXT)"_s;
        QTest::newRow("swapped byte order mark") << u"x'efbfbee68480'"_s;
    }
    /// SQLite drops a byte order mark at the start of a bound text, and swaps the bytes behind a swapped one.
    void a_uuid_that_changes_when_it_is_looked_up_has_the_answers_found_then()
    {
        QFETCH(const QString, uuid);
        Stage stage;
        QVERIFY(
            enter(stage, QuestionEntered{.id = 1}, AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"yes"_s}));
        QVERIFY(stage.exec(u"INSERT INTO personas (uuid,name) VALUES (%1,'P')"_s.arg(uuid)));
        QCOMPARE(literalGrid(stage).constFirst().at(1), u"yes"_s);
        QCOMPARE(cells(refreshedGrid(stage)), literalGrid(stage));
    }

private:
    template<size_t Count>
    QString pick(const std::array<const char *, Count> &pool)
    {
        return sqlText(pool[random.bounded(quint32(Count))]);
    }
    /// A uuid that is taken is passed over.
    void addPersona(Stage &stage, const QString &uuid)
    {
        stage.exec(u"INSERT OR IGNORE INTO personas (uuid,name) VALUES (%1,'%2')"_s.arg(uuid).arg(random.bounded(3)));
    }
    void addRandomPersonas(Stage &stage, int count)
    {
        for (int index = 0; index < count; ++index)
            addPersona(stage, pick(oddUuids));
    }
    void addRandomQuestions(Stage &stage, int count)
    {
        for (int index = 0; index < count; ++index)
            stage.exec(u"INSERT OR IGNORE INTO questions (question_id,prompt,order_num) VALUES (%1,'Q',%2)"_s.arg(
                pick(questionIds), pick(orderNumbers)));
    }
    void addRandomAnswers(Stage &stage, int count)
    {
        for (int index = 0; index < count; ++index) {
            // Rows come in the order of their keys and out of it.
            const QString id = random.bounded(2) == 0 ? u"NULL"_s : QString::number(int(random.bounded(2000U)) - 1000);
            stage.exec(u"INSERT OR REPLACE INTO responses (id,persona_uuid,question_id,text_answer,numeric_answer,"
                       "json_answer,created_at) VALUES (%1,%2,%3,%4,%5,%6,%7)"_s.arg(
                           id, pick(oddUuids), pick(answeredIds), pick(answerTexts), pick(answerNumbers),
                           pick(answerObjects), pick(answerTimes)));
        }
    }

    QRandomGenerator random;
};

ORRINET_TEST(TestNewestAnswers)
#include "tst_newestanswers.moc"

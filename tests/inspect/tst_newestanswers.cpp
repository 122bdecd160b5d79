#include "tests/inspect/surveydata.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSqlQuery>
#include <QTest>

#include <array>
#include <span>

using namespace Qt::StringLiterals;

/// The grid is filled in one pass over the answers. Here a statement for each cell, the plain way to fill it, says what
/// each cell is to show, on random tables.
class TestNewestAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void every_cell_shows_what_its_own_statement_gives_data();
    void every_cell_shows_what_its_own_statement_gives();
    void each_odd_uuid_has_the_answers_that_its_own_statement_gives();
    void a_uuid_that_changes_when_it_is_looked_up_has_the_answers_found_then_data();
    void a_uuid_that_changes_when_it_is_looked_up_has_the_answers_found_then();

private:
    template<size_t Count>
    const char *pick(const std::array<const char *, Count> &pool)
    {
        return pool[random.bounded(quint32(Count))];
    }
    void addRandomPersonas(Stage &stage, int count);
    void addRandomQuestions(Stage &stage, int count);
    void addRandomAnswers(Stage &stage, int count);

    QRandomGenerator random;
};

// SQL expressions, so that values of any type get into columns of any type.

/// Among them: a lone byte and the replacement character that it reads as, a surrogate, an overlong form, a
/// noncharacter, a code point past the end, texts with a NUL, composed and decomposed letters.
static constexpr std::array uuids{"NULL",
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
static constexpr std::array times{"'2026-01-01 00:00:00'",
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
static std::pair<QString, QString> literalCells(const QSqlDatabase &database, const QString &uuid, int questionId)
{
    QSqlQuery query(database);
    query.prepare(u"SELECT text_answer,numeric_answer,json_answer FROM responses "
                  "WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"_s);
    query.addBindValue(uuid);
    query.addBindValue(questionId);
    if (!query.exec() || !query.next())
        return {};
    const QString json = query.value(2).toString();
    QString shown = query.value(0).toString();
    if (shown.isEmpty())
        shown = query.isNull(1) ? json : QString::number(query.value(1).toDouble(), 'g', 6);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8(), &error);
    const bool isObject = error.error == QJsonParseError::NoError && document.isObject();
    return {shown, isObject ? document.object().value("reasoning"_L1).toString() : QString()};
}

/// The grid as a statement for each pair of cells fills it.
static QList<QStringList> literalGrid(Stage &stage)
{
    const auto personas = stage.rows(u"SELECT uuid,name FROM personas ORDER BY name"_s);
    const auto questions =
        stage.rows(u"SELECT question_id,prompt,reasoning_required FROM questions ORDER BY order_num"_s);
    QList<QStringList> grid;
    for (const QVariantList &persona : personas) {
        QStringList row{persona.at(1).toString()};
        for (const QVariantList &question : questions) {
            const auto [answer, reason] =
                literalCells(stage.project(), persona.at(0).toString(), question.at(0).toInt());
            row << answer << reason;
        }
        grid.append(row);
    }
    return grid;
}

/// The grid as the program fills it; a missing item is no empty text.
static QList<QStringList> shownGrid(Stage &stage)
{
    const QTableWidget *table = refreshed(stage);
    QList<QStringList> grid = Stage::cells(table);
    for (int row = 0; row < table->rowCount(); ++row) {
        for (int column = 0; column < table->columnCount(); ++column) {
            if (table->item(row, column) == nullptr)
                grid[row][column] = u"(no item)"_s;
        }
    }
    return grid;
}

static QString sql(const char *text)
{
    return QString::fromLatin1(text);
}

static bool empty(Stage &stage)
{
    return stage.exec(u"DELETE FROM personas"_s) && stage.exec(u"DELETE FROM questions"_s) &&
           stage.exec(u"DELETE FROM responses"_s);
}

void TestNewestAnswers::initTestCase()
{
    const quint32 seed = qEnvironmentVariableIsSet("ORRINET_SEED") ? qEnvironmentVariable("ORRINET_SEED").toUInt()
                                                                   : QRandomGenerator::global()->generate();
    qInfo("ORRINET_SEED=%u", seed);
    random.seed(seed);
}

void TestNewestAnswers::addRandomPersonas(Stage &stage, int count)
{
    for (int index = 0; index < count; ++index) {
        // A uuid that is taken is passed over.
        QVERIFY(stage.exec(u"INSERT OR IGNORE INTO personas (uuid,name) VALUES (%1,'%2')"_s.arg(sql(pick(uuids)))
                               .arg(random.bounded(3))));
    }
}

void TestNewestAnswers::addRandomQuestions(Stage &stage, int count)
{
    for (int index = 0; index < count; ++index) {
        QVERIFY(stage.exec(u"INSERT OR IGNORE INTO questions (question_id,prompt,order_num) VALUES (%1,'Q',%2)"_s.arg(
            sql(pick(questionIds)), sql(pick(orderNumbers)))));
    }
}

void TestNewestAnswers::addRandomAnswers(Stage &stage, int count)
{
    for (int index = 0; index < count; ++index) {
        // Rows come in the order of their keys and out of it.
        const QString id = random.bounded(2) == 0 ? u"NULL"_s : QString::number(int(random.bounded(2000U)) - 1000);
        QVERIFY(stage.exec(u"INSERT OR REPLACE INTO responses (id,persona_uuid,question_id,text_answer,numeric_answer,"
                           "json_answer,created_at) VALUES (%1,%2,%3,%4,%5,%6,%7)"_s.arg(
                               id, sql(pick(uuids)), sql(pick(answeredIds)), sql(pick(answerTexts)),
                               sql(pick(answerNumbers)), sql(pick(answerObjects)), sql(pick(times)))));
    }
}

void TestNewestAnswers::every_cell_shows_what_its_own_statement_gives_data()
{
    QTest::addColumn<int>("rounds");
    QTest::addColumn<int>("personas");
    QTest::addColumn<int>("questions");
    QTest::addColumn<int>("answers");
    QTest::newRow("few answers") << 200 << 6 << 4 << 12;
    QTest::newRow("many answers") << 200 << 12 << 4 << 120;
    QTest::newRow("many answers to few questions") << 100 << 8 << 2 << 400;
}

void TestNewestAnswers::every_cell_shows_what_its_own_statement_gives()
{
    QFETCH(const int, rounds);
    QFETCH(const int, personas);
    QFETCH(const int, questions);
    QFETCH(const int, answers);
    Stage stage;
    qsizetype filled = 0;
    for (int round = 0; round < rounds; ++round) {
        QVERIFY(empty(stage));
        addRandomPersonas(stage, personas);
        addRandomQuestions(stage, questions);
        addRandomAnswers(stage, answers);
        const auto literal = literalGrid(stage);
        QVERIFY(!literal.isEmpty());
        QCOMPARE(shownGrid(stage), literal);
        for (const QStringList &row : literal)
            filled += row.size() - row.count(QString()) - 1;
    }
    // The rounds would show nothing if the pairs never met.
    QCOMPARE_GT(filled, rounds / 4);
}

void TestNewestAnswers::each_odd_uuid_has_the_answers_that_its_own_statement_gives()
{
    Stage stage;
    QVERIFY(addQuestion(stage, 1, u"Q"_s, 1));
    for (const char *answered : uuids) {
        QVERIFY(stage.exec(u"DELETE FROM personas"_s));
        QVERIFY(stage.exec(u"DELETE FROM responses"_s));
        for (const char *uuid : uuids)
            QVERIFY(stage.exec(u"INSERT OR IGNORE INTO personas (uuid,name) VALUES (%1,'P')"_s.arg(sql(uuid))));
        QVERIFY(stage.exec(
            u"INSERT INTO responses (persona_uuid,question_id,text_answer) VALUES (%1,1,'yes')"_s.arg(sql(answered))));
        QVERIFY2(shownGrid(stage) == literalGrid(stage), answered);
    }
}

void TestNewestAnswers::a_uuid_that_changes_when_it_is_looked_up_has_the_answers_found_then_data()
{
    QTest::addColumn<QString>("uuid");
    QTest::newRow("byte order mark") << u"CAST(x'efbbbf61' AS TEXT)"_s;
    QTest::newRow("swapped byte order mark") << u"x'efbfbee68480'"_s;
}

/// SQLite drops a byte order mark at the start of a bound text, and swaps the bytes behind a swapped one.
void TestNewestAnswers::a_uuid_that_changes_when_it_is_looked_up_has_the_answers_found_then()
{
    QFETCH(const QString, uuid);
    Stage stage;
    QVERIFY(addQuestion(stage, 1, u"Q"_s, 1));
    QVERIFY(stage.exec(u"INSERT INTO personas (uuid,name) VALUES (%1,'P')"_s.arg(uuid)));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"yes"_s, QVariant(), QVariant()}));
    QCOMPARE(literalGrid(stage).constFirst().at(1), u"yes"_s);
    QCOMPARE(shownGrid(stage), literalGrid(stage));
}

QTEST_MAIN(TestNewestAnswers)
#include "tst_newestanswers.moc"

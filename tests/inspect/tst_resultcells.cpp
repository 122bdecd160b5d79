#include "tests/inspect/surveydata.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What the two cells of a persona and a question show.
class TestResultCells : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cells_show_what_was_stored_data();
    void cells_show_what_was_stored();
    void numbers_are_shown_with_six_digits_data();
    void numbers_are_shown_with_six_digits();
    void the_first_column_with_content_is_shown_data();
    void the_first_column_with_content_is_shown();
    void reasoning_is_a_string_of_a_json_object_data();
    void reasoning_is_a_string_of_a_json_object();
    void a_pair_without_an_answer_is_empty();
    void the_later_answer_wins_data();
    void the_later_answer_wins();
    void the_later_answer_hides_all_of_the_earlier();
    void personas_of_one_name_keep_their_answers();
    void answers_to_a_deleted_question_are_not_shown();
    void answers_of_a_deleted_persona_are_not_shown();
};

/// The texts of the two cells of the one persona and question of a project with one answer.
static QStringList shown(Stage &stage, const QVariantList &columns)
{
    if (!addPersona(stage, u"a"_s, u"Persona A"_s) || !addQuestion(stage, 1, u"How?"_s, 1) ||
        !addAnswer(stage, u"a"_s, 1, columns))
        return {};
    return Stage::cells(refreshed(stage)).value(0).mid(1);
}

static QVariantList texts(const QVariant &text, const QVariant &number, const QVariant &json)
{
    return {text, number, json};
}

void TestResultCells::cells_show_what_was_stored_data()
{
    QTest::addColumn<QVariantList>("columns");
    QTest::addColumn<QStringList>("cells");
    const QVariant null;
    const auto row = [](const char *name, const QVariantList &columns, const QString &answer, const QString &reason) {
        QTest::newRow(name) << columns << QStringList{answer, reason};
    };
    const auto object = [](const QString &answer) { return u"{\"answer\":%1,\"reasoning\":\"why\"}"_s.arg(answer); };
    row("reply to a text question", {u"plain words"_s, null, null}, u"plain words"_s, {});
    row("label of an object", {u"B"_s, null, object(u"\"B\""_s)}, u"B"_s, u"why"_s);
    row("number of an object", {null, 7, object(u"\"7\""_s)}, u"7"_s, u"why"_s);
    row("words to a numeric question", {u"many"_s, null, object(u"\"many\""_s)}, u"many"_s, u"why"_s);
    row("number as text", {u"1.23457e+06"_s, null, object(u"1234567"_s)}, u"1.23457e+06"_s, u"why"_s);
    row("boolean", {u"true"_s, null, object(u"true"_s)}, u"true"_s, u"why"_s);
    for (const auto &answer : {u"[\"x\",\"y\"]"_s, u"{\"x\":1}"_s, u"null"_s})
        row(qPrintable(u"object with answer "_s + answer), {null, null, object(answer)}, object(answer), u"why"_s);
    row("object without an answer", {null, null, u"{\"reasoning\":\"why\"}"_s}, u"{\"reasoning\":\"why\"}"_s, u"why"_s);
    row("raw reply to a choice", {null, null, u"Rather B."_s}, u"Rather B."_s, {});
    row("raw array to a choice", {null, null, u"[\"B\"]"_s}, u"[\"B\"]"_s, {});
    row("bare number", {null, 12.5, null}, u"12.5"_s, {});
    row("bare words to a numeric question", {u"lots"_s, null, null}, u"lots"_s, {});
    row("unusable reply", {null, null, null}, {}, {});
}

void TestResultCells::cells_show_what_was_stored()
{
    QFETCH(const QVariantList, columns);
    QFETCH(const QStringList, cells);
    Stage stage;
    QCOMPARE(shown(stage, columns), cells);
}

void TestResultCells::numbers_are_shown_with_six_digits_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << u"0"_s;
    QTest::newRow("whole") << 42.0 << u"42"_s;
    QTest::newRow("negative") << -0.5 << u"-0.5"_s;
    QTest::newRow("cut to six digits") << 3.14159265 << u"3.14159"_s;
    QTest::newRow("six digits") << 123456.0 << u"123456"_s;
    QTest::newRow("seven digits") << 1234567.0 << u"1.23457e+06"_s;
    QTest::newRow("small") << 0.00000012 << u"1.2e-07"_s;
}

void TestResultCells::numbers_are_shown_with_six_digits()
{
    QFETCH(const double, number);
    QFETCH(const QString, text);
    Stage stage;
    QCOMPARE(shown(stage, {QVariant(), number, QVariant()}), (QStringList{text, QString()}));
}

void TestResultCells::the_first_column_with_content_is_shown_data()
{
    QTest::addColumn<QVariantList>("columns");
    QTest::addColumn<QString>("answer");
    const QVariant null;
    QTest::newRow("text before number") << texts(u"some"_s, 3, u"raw"_s) << u"some"_s;
    QTest::newRow("blank text counts") << texts(u" "_s, 3, u"raw"_s) << u" "_s;
    QTest::newRow("empty text, number") << texts(u""_s, 3, u"raw"_s) << u"3"_s;
    QTest::newRow("no text, number") << texts(null, 0, u"raw"_s) << u"0"_s;
    QTest::newRow("empty text, no number") << texts(u""_s, null, u"raw"_s) << u"raw"_s;
    QTest::newRow("nothing but JSON") << texts(null, null, u"raw"_s) << u"raw"_s;
    QTest::newRow("number that is no number") << texts(null, u"words"_s, u"raw"_s) << u"0"_s;
}

void TestResultCells::the_first_column_with_content_is_shown()
{
    QFETCH(const QVariantList, columns);
    QFETCH(const QString, answer);
    Stage stage;
    QCOMPARE(shown(stage, columns), (QStringList{answer, QString()}));
}

void TestResultCells::reasoning_is_a_string_of_a_json_object_data()
{
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("reason");
    QTest::newRow("string") << u"{\"reasoning\":\"why\"}"_s << u"why"_s;
    QTest::newRow("escapes") << u"{\"reasoning\":\"a\\n\\u00e9\"}"_s << u"a\né"_s;
    QTest::newRow("letters beyond ASCII") << u"{\"reasoning\":\"naïve 😀\"}"_s << u"naïve 😀"_s;
    QTest::newRow("white space around") << u" \n{ \"reasoning\" : \"why\" }\n"_s << u"why"_s;
    QTest::newRow("missing") << u"{\"answer\":\"x\"}"_s << QString();
    QTest::newRow("other case") << u"{\"Reasoning\":\"why\"}"_s << QString();
    QTest::newRow("number") << u"{\"reasoning\":5}"_s << QString();
    QTest::newRow("array") << u"{\"reasoning\":[\"why\"]}"_s << QString();
    QTest::newRow("null") << u"{\"reasoning\":null}"_s << QString();
    QTest::newRow("deeper") << u"{\"answer\":{\"reasoning\":\"why\"}}"_s << QString();
    QTest::newRow("in an array") << u"[{\"reasoning\":\"why\"}]"_s << QString();
    QTest::newRow("text behind the object") << u"{\"reasoning\":\"why\"} so"_s << QString();
    QTest::newRow("cut off") << u"{\"reasoning\":\"why\""_s << QString();
    QTest::newRow("prose") << u"reasoning: why"_s << QString();
    QTest::newRow("empty") << u""_s << QString();
}

void TestResultCells::reasoning_is_a_string_of_a_json_object()
{
    QFETCH(const QString, json);
    QFETCH(const QString, reason);
    Stage stage;
    QCOMPARE(shown(stage, {u"x"_s, QVariant(), json}), (QStringList{u"x"_s, reason}));
}

void TestResultCells::a_pair_without_an_answer_is_empty()
{
    Stage stage;
    QVERIFY(addPersona(stage, u"a"_s, u"Persona A"_s));
    QVERIFY(addQuestion(stage, 1, u"How?"_s, 1));
    const QTableWidget *table = refreshed(stage);
    QCOMPARE(Stage::cells(table), (QList<QStringList>{{u"Persona A"_s, QString(), QString()}}));
    QVERIFY(table->item(0, 1) != nullptr);
    QVERIFY(table->item(0, 2) != nullptr);
}

void TestResultCells::the_later_answer_wins_data()
{
    QTest::addColumn<QStringList>("times");
    QTest::addColumn<QString>("winner");
    QTest::newRow("later row") << QStringList{u"2026-01-01 00:00:00"_s, u"2026-01-01 00:00:01"_s} << u"1"_s;
    QTest::newRow("earlier row") << QStringList{u"2026-01-01 00:00:01"_s, u"2026-01-01 00:00:00"_s} << u"0"_s;
    QTest::newRow("row in between") << QStringList{u"2025-12-31 23:59:59"_s, u"2026-02-01 00:00:00"_s,
                                                   u"2026-01-31 23:59:59"_s}
                                    << u"1"_s;
}

void TestResultCells::the_later_answer_wins()
{
    QFETCH(const QStringList, times);
    QFETCH(const QString, winner);
    Stage stage;
    QVERIFY(addPersona(stage, u"a"_s, u"Persona A"_s));
    QVERIFY(addQuestion(stage, 1, u"How?"_s, 1));
    for (qsizetype row = 0; row < times.size(); ++row)
        QVERIFY(addAnswer(stage, u"a"_s, 1, {QString::number(row), QVariant(), QVariant()}, times.at(row)));
    QCOMPARE(Stage::cells(refreshed(stage)), (QList<QStringList>{{u"Persona A"_s, winner, QString()}}));
}

void TestResultCells::the_later_answer_hides_all_of_the_earlier()
{
    Stage stage;
    QVERIFY(addPersona(stage, u"a"_s, u"Persona A"_s));
    QVERIFY(addQuestion(stage, 1, u"How?"_s, 1));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"x"_s, 1, u"{\"reasoning\":\"why\"}"_s}));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {QVariant(), QVariant(), QVariant()}, u"2026-01-02 00:00:00"_s));
    QCOMPARE(Stage::cells(refreshed(stage)), (QList<QStringList>{{u"Persona A"_s, QString(), QString()}}));
}

void TestResultCells::personas_of_one_name_keep_their_answers()
{
    Stage stage;
    QVERIFY(addQuestion(stage, 1, u"How?"_s, 1));
    for (const auto &uuid : {u"a"_s, u"b"_s, u"c"_s}) {
        QVERIFY(addPersona(stage, uuid, u"Twin"_s));
        QVERIFY(addAnswer(stage, uuid, 1, {QString(u"from "_s + uuid), QVariant(), QVariant()}));
    }
    QList<QStringList> cells = Stage::cells(refreshed(stage));
    std::ranges::sort(cells, {}, [](const QStringList &row) { return row.at(1); });
    QCOMPARE(cells, (QList<QStringList>{{u"Twin"_s, u"from a"_s, QString()},
                                        {u"Twin"_s, u"from b"_s, QString()},
                                        {u"Twin"_s, u"from c"_s, QString()}}));
}

void TestResultCells::answers_to_a_deleted_question_are_not_shown()
{
    Stage stage;
    QVERIFY(addPersona(stage, u"a"_s, u"Persona A"_s));
    QVERIFY(addQuestion(stage, 2, u"How?"_s, 1));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"orphan"_s, QVariant(), QVariant()}));
    QVERIFY(addAnswer(stage, u"a"_s, 2, {u"kept"_s, QVariant(), QVariant()}));
    QCOMPARE(Stage::cells(refreshed(stage)), (QList<QStringList>{{u"Persona A"_s, u"kept"_s, QString()}}));
}

void TestResultCells::answers_of_a_deleted_persona_are_not_shown()
{
    Stage stage;
    QVERIFY(addPersona(stage, u"b"_s, u"Persona B"_s));
    QVERIFY(addQuestion(stage, 1, u"How?"_s, 1));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"orphan"_s, QVariant(), QVariant()}));
    QVERIFY(addAnswer(stage, u"b"_s, 1, {u"kept"_s, QVariant(), QVariant()}));
    QCOMPARE(Stage::cells(refreshed(stage)), (QList<QStringList>{{u"Persona B"_s, u"kept"_s, QString()}}));
}

QTEST_MAIN(TestResultCells)
#include "tst_resultcells.moc"

// Which rows of a file become rows of the project: tables are copied by position, and what does not fit is left out.

#include "tests/project/projectfile.h"

using namespace Qt::StringLiterals;

class TestProjectCopy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_table_that_does_not_fit_stays_empty_data();
    void a_table_that_does_not_fit_stays_empty();
    void columns_are_taken_by_position_data();
    void columns_are_taken_by_position();
    void other_things_in_the_file_stay_there();
    void a_pack_opens_as_a_project_of_its_personas();
    void a_table_that_the_project_lost_is_left_out();
    void nothing_of_the_project_before_is_left();
    void numbering_carries_on_data();
    void numbering_carries_on();
    void counts_of_other_tables_come_along();
};

void TestProjectCopy::a_table_that_does_not_fit_stays_empty_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QStringList>("statements");
    const auto add = [](const char *name, const QString &table, const QStringList &statements) {
        QTest::newRow(name) << table << (QStringList{"DROP TABLE "_L1 + table} + statements);
    };
    for (const auto tables = projectTables(); const QString &table : tables) {
        if (table != "boilerplate"_L1)
            add(qPrintable("no "_L1 + table), table, {});
    }
    add("fewer columns", u"personas"_s,
        {u"CREATE TABLE personas (uuid, name)"_s, u"INSERT INTO personas VALUES ('two', 'Number Two')"_s});
    add("more columns", u"personas"_s,
        {u"CREATE TABLE personas (a, b, c, d, e, f, g, h)"_s,
         u"INSERT INTO personas VALUES ('two', 'Number Two', 3, 4, 5, 6, 7, 8)"_s});
    add("one column too few", u"responses"_s,
        {u"CREATE TABLE responses (a, b, c, d, e, f, g, h, i, j)"_s,
         u"INSERT INTO responses VALUES (1, 2, 3, 4, 5, 6, 7, 8, 9, 10)"_s});
    add("a key twice", u"personas"_s,
        {u"CREATE TABLE personas (a, b, c, d, e, f, g)"_s,
         u"INSERT INTO personas VALUES ('two', 2, 3, 4, 5, 6, 7), ('two', 2, 3, 4, 5, 6, 7)"_s});
    add("a tag twice", u"tags"_s,
        {u"CREATE TABLE tags (id, name)"_s, u"INSERT INTO tags VALUES (1, 'odd'), (2, 'odd')"_s});
    add("a text for a number", u"tags"_s,
        {u"CREATE TABLE tags (id, name)"_s, u"INSERT INTO tags VALUES (1, 'odd'), ('x', 'even')"_s});
    add("another case of the name", u"metadata"_s,
        {u"CREATE TABLE Metadata (key, value)"_s, u"INSERT INTO Metadata VALUES ('k', 'v')"_s});
    add("a view", u"metadata"_s, {u"CREATE VIEW metadata AS SELECT 'k', 'v'"_s});
}

void TestProjectCopy::a_table_that_does_not_fit_stays_empty()
{
    QFETCH(const QString, table);
    QFETCH(const QStringList, statements);
    Stage stage;
    const QString schema = u"SELECT name, sql FROM sqlite_master ORDER BY name"_s;
    const Rows before = stage.rows(schema);
    // Nor does it keep the rows of the project before.
    QVERIFY(stage.exec(oneOfEach()));
    const QString path = writeProject(stage.path(u"odd.ormt"_s), oneOfEach() + statements);
    QVERIFY(stage.result("openProjectFromFile", path));
    QStringList fitting = projectTables();
    QVERIFY(fitting.removeOne(table));
    QCOMPARE(tableOfEachRow(stage), fitting);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, path));
    QCOMPARE(stage.rows(schema), before);
}

void TestProjectCopy::columns_are_taken_by_position_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QVariantList>("row");
    QTest::newRow("columns of other names") << QStringList{u"DROP TABLE metadata"_s, u"CREATE TABLE metadata (a, b)"_s,
                                                           u"INSERT INTO metadata VALUES ('k', 'v')"_s}
                                            << u"SELECT key, value FROM metadata"_s << QVariantList{u"k"_s, u"v"_s};
    QTest::newRow("columns in another order")
        << QStringList{u"DROP TABLE personas"_s,
                       u"CREATE TABLE personas (name, uuid, attributes, system_prompt, notes, created_at, modified_at)"_s,
                       u"INSERT INTO personas (uuid, name) VALUES ('two', 'Number Two')"_s}
        << u"SELECT uuid, name FROM personas"_s << QVariantList{u"Number Two"_s, u"two"_s};
    QTest::newRow("numbers where texts are")
        << QStringList{u"DROP TABLE metadata"_s, u"CREATE TABLE metadata (a, b)"_s,
                       u"INSERT INTO metadata VALUES (7, 1.5)"_s}
        << u"SELECT key, value, typeof(value) FROM metadata"_s << QVariantList{u"7"_s, u"1.5"_s, u"text"_s};
    QTest::newRow("rows that have no number yet")
        << QStringList{u"DROP TABLE tags"_s, u"CREATE TABLE tags (a, b)"_s,
                       u"INSERT INTO tags VALUES (41, 'odd'), (NULL, 'even')"_s}
        << u"SELECT id, name FROM tags WHERE name = 'even'"_s << QVariantList{42, u"even"_s};
}

void TestProjectCopy::columns_are_taken_by_position()
{
    QFETCH(const QStringList, statements);
    QFETCH(const QString, query);
    QFETCH(const QVariantList, row);
    Stage stage;
    const QString path = writeProject(stage.path(u"odd.ormt"_s), oneOfEach() + statements);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(stage.rows(query), Rows{row});
}

void TestProjectCopy::other_things_in_the_file_stay_there()
{
    Stage stage;
    const QString schema = u"SELECT type, name, sql FROM sqlite_master ORDER BY name"_s;
    const Rows before = stage.rows(schema);
    const QStringList more = {u"CREATE TABLE diary (entry TEXT)"_s, u"INSERT INTO diary VALUES ('private')"_s,
                              u"CREATE VIEW names AS SELECT name FROM personas"_s,
                              u"CREATE INDEX by_name ON personas (name)"_s,
                              u"CREATE TRIGGER shout AFTER INSERT ON personas BEGIN "
                              "UPDATE personas SET name = upper(name); END"_s};
    const QString path = writeProject(stage.path(u"more.ormt"_s), oneOfEach() + more);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(stage.rows(schema), before);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(SideDatabase(stage.path(u"saved.ormt"_s)).rows(schema), before);
}

void TestProjectCopy::a_pack_opens_as_a_project_of_its_personas()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s, u"odd"_s);
    stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
    QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
    stage.call("newProject");
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"pack.ornk"_s)));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QCOMPARE(columnTexts(personaTable(stage), 2), QStringList{u"odd"_s});
    QCOMPARE(questionModel(stage)->rowCount(), 0);
}

void TestProjectCopy::a_table_that_the_project_lost_is_left_out()
{
    Stage stage;
    QVERIFY(stage.exec(u"DROP TABLE metadata"_s));
    QVERIFY(stage.result("openProjectFromFile", writeOther(stage)));
    QVERIFY(!stage.database().tables(QSql::Tables).contains(u"metadata"_s));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(questionListIsWhole(stage));
}

void TestProjectCopy::nothing_of_the_project_before_is_left()
{
    Stage stage;
    QVERIFY(stage.exec(oneOfEach()));
    const QString path = writeDatabase(stage.path(u"other.ormt"_s), {u"CREATE TABLE metadata (key, value)"_s,
                                                                     u"INSERT INTO metadata VALUES ('k', 'v')"_s});
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(tableOfEachRow(stage), (QStringList{u"metadata"_s, u"boilerplate"_s}));
    QCOMPARE(stage.rows(u"SELECT * FROM metadata"_s), (Rows{{u"k"_s, u"v"_s}}));
    // Nor of its numbering, though the file has none.
    QCOMPARE(stage.count(u"sqlite_sequence"_s), 0);
}

void TestProjectCopy::numbering_carries_on_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<int>("next");
    const QString seven = u"INSERT INTO questions (question_id, order_num) VALUES (7, 1)"_s;
    QTest::newRow("behind the last question") << QStringList{seven} << 8;
    QTest::newRow("behind a question that is gone")
        << QStringList{seven, u"INSERT INTO questions (question_id) VALUES (40)"_s,
                       u"DELETE FROM questions WHERE question_id = 40"_s}
        << 41;
    QTest::newRow("with all questions gone") << QStringList{seven, u"DELETE FROM questions"_s} << 8;
    QTest::newRow("a count that lags behind") << QStringList{seven, u"UPDATE sqlite_sequence SET seq = 2"_s} << 8;
    QTest::newRow("an emptied count") << QStringList{seven, u"DELETE FROM sqlite_sequence"_s} << 8;
    QTest::newRow("a table that does not count")
        << QStringList{u"CREATE TABLE mine AS SELECT * FROM questions"_s, u"DROP TABLE questions"_s,
                       u"ALTER TABLE mine RENAME TO questions"_s, seven}
        << 8;
    QTest::newRow("no question ever") << QStringList() << 1;
}

void TestProjectCopy::numbering_carries_on()
{
    QFETCH(const QStringList, statements);
    QFETCH(const int, next);
    Stage stage;
    showQuestions(stage, 20);
    QVERIFY(stage.result("openProjectFromFile", writeProject(stage.path(u"other.ormt"_s), statements)));
    stage.call("insertQuestion", u"Next?"_s, u"text"_s, false);
    QCOMPARE(stage.value(u"SELECT question_id FROM questions WHERE prompt = 'Next?'"_s).toInt(), next);
}

void TestProjectCopy::counts_of_other_tables_come_along()
{
    Stage stage;
    const QStringList counts = {u"UPDATE sqlite_sequence SET seq = 50 WHERE name = 'responses'"_s,
                                u"INSERT INTO sqlite_sequence VALUES ('diary', 9)"_s};
    const QString path = writeProject(stage.path(u"other.ormt"_s), oneOfEach() + counts);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(stage.rows(u"SELECT name, seq FROM sqlite_sequence ORDER BY name"_s),
             (Rows{{u"diary"_s, 9}, {u"question_attachments"_s, 1}, {u"questions"_s, 1}, {u"responses"_s, 50}}));
    QVERIFY(stage.exec(u"INSERT INTO responses (text_answer) VALUES ('Well.')"_s));
    QCOMPARE(stage.value(u"SELECT MAX(id) FROM responses"_s).toInt(), 51);
}

ORRINET_TEST(TestProjectCopy)
#include "tst_projectcopy.moc"

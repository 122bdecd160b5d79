// The database in memory that holds a project, and how it is emptied for another one.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

Rows defaultBoilerplate()
{
    return {{u"Act as the following persona."_s, u""_s}};
}

/// The two ways by which another project takes the place of the one in the window.
void addWaysToReplace()
{
    QTest::addColumn<Act>("replace");
    QTest::newRow("new") << Act([](Stage &stage) { stage.action(u"New Project"_s)->trigger(); });
    QTest::newRow("opened") << Act(
        [](Stage &stage) { QVERIFY(stage.result("openProjectFromFile", writeOther(stage))); });
}

} // namespace

class TestProjectDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void project_is_a_database_in_memory()
    {
        Stage stage;
        const QSqlDatabase project = stage.database();
        QCOMPARE(project.driverName(), u"QSQLITE"_s);
        QCOMPARE(project.databaseName(), u":memory:"_s);
        QVERIFY(project.isOpen());
        QVERIFY(onlyProjectIsConnected());
    }

    void project_has_the_tables_of_the_script_as_they_stand_there();
    void new_project_holds_the_default_boilerplate_and_nothing_else();
    void foreign_keys_are_not_enforced();
    void tables_are_emptied_children_first_and_then_filled_data() { addWaysToReplace(); }
    void tables_are_emptied_children_first_and_then_filled();
    void question_list_goes_before_its_rows_data() { addWaysToReplace(); }
    void question_list_goes_before_its_rows();
    void numbering_starts_afresh_in_a_new_project();
    void new_project_asks_nothing_data();
    void new_project_asks_nothing();
    void new_project_goes_on_showing_a_pack();
    void new_project_leaves_the_schema_alone();
    void only_a_table_of_the_exact_name_is_emptied();
    void dropped_table_stays_missing();
    void dropped_boilerplate_and_tags_come_back_by_themselves();
    void table_that_cannot_be_emptied_keeps_its_rows_alone();
    void default_boilerplate_that_cannot_be_stored_is_shown_all_the_same();
};

void TestProjectDatabase::project_has_the_tables_of_the_script_as_they_stand_there()
{
    Stage stage;
    QStringList statements;
    for (const auto pieces = schemaStatements(); const QString &piece : pieces)
        statements.append(piece.trimmed());
    QCOMPARE(statements.size(), 8);
    QCOMPARE(
        stage.column(u"SELECT sql FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid"_s),
        statements);
    QCOMPARE(stage.column(u"SELECT name FROM sqlite_master WHERE sql NOT NULL AND name NOT LIKE 'sqlite\\_%' "
                          "ESCAPE '\\' ORDER BY rowid"_s),
             projectTables());
    QVERIFY(stage.database().tables(QSql::Tables).contains(u"sqlite_sequence"_s));
}

void TestProjectDatabase::new_project_holds_the_default_boilerplate_and_nothing_else()
{
    Stage stage;
    const QStringList atTheStart = everyRow(stage.database());
    QCOMPARE(stage.rows(u"SELECT preamble, postamble FROM boilerplate"_s), defaultBoilerplate());
    QCOMPARE(stage.value(u"SELECT typeof(postamble) FROM boilerplate"_s).toString(), u"text"_s);
    QCOMPARE(tableOfEachRow(stage), QStringList{u"boilerplate"_s});
    QCOMPARE(stage.count(u"sqlite_sequence"_s), 0);

    // A second row of boilerplate among them.
    QVERIFY(stage.exec(oneOfEach()));
    stage.call("newProject");
    QCOMPARE(everyRow(stage.database()), atTheStart);
}

void TestProjectDatabase::foreign_keys_are_not_enforced()
{
    Stage stage;
    QCOMPARE(stage.value(u"PRAGMA foreign_keys"_s).toInt(), 0);
    QVERIFY(stage.exec(oneOfEach()));
    QVERIFY(stage.exec(u"DELETE FROM questions"_s));
    QCOMPARE(stage.count(u"responses"_s), 1);
}

void TestProjectDatabase::tables_are_emptied_children_first_and_then_filled()
{
    QFETCH(const Act, replace);
    Stage stage;
    QVERIFY(stage.exec(oneOfEach()));
    QVERIFY(stage.exec(u"DELETE FROM boilerplate WHERE preamble = 'Pre.'"_s));
    keepJournal(stage);
    replace(stage);

    QStringList expected = {
        u"delete responses"_s, u"delete persona_tags"_s, u"delete tags"_s,        u"delete question_attachments"_s,
        u"delete questions"_s, u"delete personas"_s,     u"delete boilerplate"_s, u"delete metadata"_s};
    const bool opened = QLatin1StringView(QTest::currentDataTag()) == "opened"_L1;
    for (const auto filled = opened ? projectTables() : QStringList{u"boilerplate"_s}; const QString &table : filled)
        expected.append("insert "_L1 + table);
    // The refresh passes through the two text slots.
    for (int slot = 0; slot < 2; ++slot)
        expected << u"delete boilerplate"_s << u"insert boilerplate"_s;
    QCOMPARE(journal(stage), expected);
}

void TestProjectDatabase::question_list_goes_before_its_rows()
{
    QFETCH(const Act, replace);
    Stage stage;
    showQuestions(stage, 3);
    const QPointer<QSqlTableModel> before = questionModel(stage);
    int questionsAtItsEnd = -1;
    connect(before, &QObject::destroyed, this, [&] { questionsAtItsEnd = stage.count(u"questions"_s); });
    // The project was not marked as changed, so nothing is asked.
    replace(stage);
    QVERIFY(before.isNull());
    QCOMPARE(questionsAtItsEnd, 3);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(questionView(stage)->isColumnHidden(0));
}

void TestProjectDatabase::numbering_starts_afresh_in_a_new_project()
{
    Stage stage;
    showQuestions(stage, 3);
    stage.call("newProject");
    stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
    QCOMPARE(stage.value(u"SELECT question_id FROM questions"_s).toInt(), 1);
}

void TestProjectDatabase::new_project_asks_nothing_data()
{
    QTest::addColumn<bool>("testMode");
    QTest::newRow("plain") << false;
    QTest::newRow("test mode") << true;
}

void TestProjectDatabase::new_project_asks_nothing()
{
    QFETCH(const bool, testMode);
    Stage stage;
    Stage::setTestMode(testMode);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(asksNothing([&stage] { stage.action(u"New Project"_s)->trigger(); }));
    QCOMPARE(stage.count(u"personas"_s), 0);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestProjectDatabase::new_project_goes_on_showing_a_pack()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s, u"odd"_s);
    QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
    stage.call("loadPack", stage.path(u"pack.ornk"_s));
    stage.call("newProject");
    QCOMPARE(shownPersonas(stage), QStringList());
    stage.call("applyTagFilter");
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestProjectDatabase::new_project_leaves_the_schema_alone()
{
    Stage stage;
    QVERIFY(stage.exec({u"CREATE TABLE scratch (note TEXT)"_s, u"INSERT INTO scratch VALUES ('kept')"_s,
                        u"ALTER TABLE metadata ADD COLUMN third TEXT"_s}));
    stage.call("newProject");
    QCOMPARE(stage.column(u"SELECT note FROM scratch"_s), QStringList{u"kept"_s});
    QCOMPARE(stage.count(u"pragma_table_info('metadata')"_s), 3);
}

void TestProjectDatabase::only_a_table_of_the_exact_name_is_emptied()
{
    Stage stage;
    QVERIFY(stage.exec({u"DROP TABLE metadata"_s, u"CREATE TABLE Metadata (key TEXT, value TEXT)"_s,
                        u"INSERT INTO Metadata VALUES ('key', 'value')"_s}));
    stage.call("newProject");
    QCOMPARE(stage.count(u"Metadata"_s), 1);
}

void TestProjectDatabase::dropped_table_stays_missing()
{
    Stage stage;
    QStringList tables = stage.database().tables(QSql::Tables);
    for (const auto table : {"metadata"_L1, "question_attachments"_L1, "responses"_L1}) {
        QVERIFY(stage.exec("DROP TABLE "_L1 + table));
        QVERIFY(tables.removeOne(table));
    }
    stage.call("newProject");
    QCOMPARE(stage.database().tables(QSql::Tables), tables);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestProjectDatabase::dropped_boilerplate_and_tags_come_back_by_themselves()
{
    Stage stage;
    QVERIFY(stage.exec({u"DROP TABLE boilerplate"_s, u"DROP TABLE tags"_s, u"DROP TABLE persona_tags"_s}));
    stage.call("newProject");
    QCOMPARE(stage.rows(u"SELECT preamble, postamble FROM boilerplate"_s), defaultBoilerplate());
    QVERIFY(!stage.database().tables(QSql::Tables).contains(u"tags"_s));

    stage.call("insertPersona", u"Number One"_s, u"Calm."_s, u"odd"_s);
    QCOMPARE(stage.column(u"SELECT name FROM tags"_s), QStringList{u"odd"_s});
    QCOMPARE(stage.count(u"persona_tags"_s), 1);
    QCOMPARE(stage.count(u"pragma_foreign_key_list('persona_tags')"_s), 0);
}

void TestProjectDatabase::table_that_cannot_be_emptied_keeps_its_rows_alone()
{
    Stage stage;
    QVERIFY(stage.exec(oneOfEach()));
    QVERIFY(stage.exec(u"CREATE TRIGGER guard BEFORE DELETE ON responses BEGIN SELECT RAISE(ABORT, 'no'); END"_s));
    stage.call("newProject");
    QCOMPARE(tableOfEachRow(stage), (QStringList{u"boilerplate"_s, u"responses"_s}));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestProjectDatabase::default_boilerplate_that_cannot_be_stored_is_shown_all_the_same()
{
    Stage stage;
    QVERIFY(stage.exec(u"CREATE TRIGGER guard BEFORE INSERT ON boilerplate BEGIN SELECT RAISE(ABORT, 'no'); END"_s));
    preambleEdit(stage)->setPlainText(u"Mine."_s);
    stage.call("newProject");
    QCOMPARE(preambleEdit(stage)->toPlainText(), u"Act as the following persona."_s);
    QCOMPARE(stage.count(u"boilerplate"_s), 0);
}

ORRINET_TEST(TestProjectDatabase)
#include "tst_projectdatabase.moc"

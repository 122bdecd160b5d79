// A project written to a file: what the file holds, and what becomes of the window's own state.

#include "tests/project/projectfile.h"

#include <QComboBox>
#include <QGroupBox>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

/// The question chooser of the conversation box.
static QComboBox *questionChooser(Stage &stage)
{
    return stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->findChildren<QComboBox *>().at(1);
}

class TestProjectFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_saved_project_is_a_plain_database_of_its_tables()
    {
        Stage stage;
        stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
        const QString path = stage.path(u"saved.ormt"_s);
        QVERIFY(stage.result("saveProjectToFile", path));
        QVERIFY(readBytes(path).startsWith(QByteArray("SQLite format 3\0", 16)));
        SideFile file(path);
        const QString schema = u"SELECT type, name, sql FROM sqlite_master ORDER BY name"_s;
        QCOMPARE(file.rows(schema), stage.rows(schema));
        QCOMPARE(file.value(u"PRAGMA user_version"_s).toInt(), 0);
        QCOMPARE(file.value(u"PRAGMA application_id"_s).toInt(), 0);
        QCOMPARE(file.rows(u"SELECT name, seq FROM sqlite_sequence"_s), (Rows{{u"questions"_s, 1}}));
    }

    void saving_leaves_one_file_and_no_connection()
    {
        Stage stage;
        QVERIFY(QDir(stage.path(QString())).mkdir(u"files"_s));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"files/saved.ormt"_s)));
        QCOMPARE(QDir(stage.path(u"files"_s)).entryList(QDir::Files | QDir::Hidden), QStringList{u"saved.ormt"_s});
        QVERIFY(onlyProjectIsConnected());
    }

    void an_extension_is_neither_added_nor_looked_at_data();
    void an_extension_is_neither_added_nor_looked_at();
    void an_empty_file_is_filled();
    void saving_to_a_new_name_works_every_time();
    void a_change_after_saving_is_not_in_the_file();
    void a_pending_edit_is_written_before_the_file();
    void a_pending_edit_that_is_refused_does_not_hinder_the_saving();
    void saving_reads_the_question_list_again_and_nothing_else();
    void a_file_taken_away_can_be_saved_again();
};

void TestProjectFiles::an_extension_is_neither_added_nor_looked_at_data()
{
    QTest::addColumn<QString>("name");
    for (const auto name : {"plain"_L1, "twice.ormt.ormt"_L1, "picture.png"_L1, "UPPER.ORMT"_L1, ".hidden"_L1})
        QTest::newRow(name.data()) << QString(name);
}

void TestProjectFiles::an_extension_is_neither_added_nor_looked_at()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QFETCH(const QString, name);
    QVERIFY(stage.result("saveProjectToFile", stage.path(name)));
    QCOMPARE(QDir(stage.path(QString())).entryList(QDir::Files | QDir::Hidden), QStringList{name});
    stage.call("newProject");
    QVERIFY(stage.result("openProjectFromFile", stage.path(name)));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestProjectFiles::an_empty_file_is_filled()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QString path = stage.path(u"empty.ormt"_s);
    QVERIFY(writeBytes(path, {}));
    QVERIFY(stage.result("saveProjectToFile", path));
    QCOMPARE(SideFile(path).value(u"SELECT name FROM personas"_s).toString(), u"Number One"_s);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestProjectFiles::saving_to_a_new_name_works_every_time()
{
    Stage stage;
    QString path;
    for (int turn = 1; turn <= 4; ++turn) {
        stage.call("insertPersona", u"Number %1"_s.arg(turn), u"Calm."_s);
        path = stage.path(u"saved%1.ormt"_s.arg(turn));
        QVERIFY(stage.result("saveProjectToFile", path));
        QVERIFY(!stage.asksBeforeClosing());
    }
    for (int turn = 1; turn <= 4; ++turn) {
        SideFile file(stage.path(u"saved%1.ormt"_s.arg(turn)));
        QCOMPARE(file.value(u"SELECT COUNT(*) FROM personas"_s).toInt(), turn);
    }
    QVERIFY(savesTo(stage, path));
}

void TestProjectFiles::a_change_after_saving_is_not_in_the_file()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    const QByteArray before = readBytes(path);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
    QCOMPARE(readBytes(path), before);
}

void TestProjectFiles::a_pending_edit_is_written_before_the_file()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 2));
    QSqlTableModel *model = questionModel(stage);
    // A refused edit stays in the model, and so does a new row that was not submitted.
    QVERIFY(stage.exec(u"CREATE TEMP TRIGGER guard BEFORE UPDATE ON questions BEGIN SELECT RAISE(ABORT, 'no'); END"_s));
    QVERIFY(!model->setData(model->index(0, 2), u"Edited?"_s));
    QVERIFY(stage.exec(u"DROP TRIGGER guard"_s));
    QVERIFY(model->isDirty());
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    QCOMPARE(SideFile(path).rows(u"SELECT prompt FROM questions ORDER BY order_num"_s),
             (Rows{{u"Edited?"_s}, {u"Question 2"_s}}));
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestProjectFiles::a_pending_edit_that_is_refused_does_not_hinder_the_saving()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 2));
    QSqlTableModel *model = questionModel(stage);
    QVERIFY(stage.exec(u"CREATE TEMP TRIGGER guard BEFORE UPDATE ON questions BEGIN SELECT RAISE(ABORT, 'no'); END"_s));
    QVERIFY(!model->setData(model->index(0, 2), u"Edited?"_s));
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    QCOMPARE(SideFile(path).rows(u"SELECT prompt FROM questions ORDER BY order_num"_s),
             (Rows{{u"Question 1"_s}, {u"Question 2"_s}}));
    QVERIFY(questionListIsWhole(stage));
}

void TestProjectFiles::saving_reads_the_question_list_again_and_nothing_else()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 2));
    const QPointer<QSqlTableModel> model = questionModel(stage);
    const auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
    const int columns = grid->columnCount();
    const int offered = questionChooser(stage)->count();
    QVERIFY(stage.exec(u"INSERT INTO questions (order_num, prompt) VALUES (3, 'Late?')"_s));
    QVERIFY(stage.exec(u"INSERT INTO personas (uuid, name) VALUES ('one', 'Number One')"_s));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(questionModel(stage), model.data());
    QCOMPARE(model->rowCount(), 3);
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(grid->columnCount(), columns);
    QCOMPARE(questionChooser(stage)->count(), offered);
    QVERIFY(shownPersonas(stage).isEmpty());
}

void TestProjectFiles::a_file_taken_away_can_be_saved_again()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(QFile::remove(path));
    stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
    stage.action(u"Save"_s)->trigger();
    QCOMPARE(SideFile(path).value(u"SELECT COUNT(*) FROM personas"_s).toInt(), 2);
    QVERIFY(!stage.asksBeforeClosing());
}

QTEST_MAIN(TestProjectFiles)
#include "tst_projectfiles.moc"

// A project written to a file: what the file holds, and what becomes of the window's own state.

#include "tests/project/projectfile.h"
#include "tests/support/entries.h"

#include <QDir>
#include <QLineEdit>
#include <QPointer>

using namespace Qt::StringLiterals;

namespace {

/// Saves under a new name and gives the rows of a query on the file.
Rows rowsSaved(Stage &stage, const QString &name, const QString &query)
{
    const QString path = stage.path(name);
    return stage.result("saveProjectToFile", path) ? SideDatabase(path).rows(query) : Rows();
}

} // namespace

class TestSavedProject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_saved_project_is_a_plain_database_of_its_tables();
    void an_extension_is_neither_added_nor_looked_at_data();
    void an_extension_is_neither_added_nor_looked_at();
    void an_empty_file_is_filled();
    void saving_to_a_new_name_works_every_time();
    void a_change_after_saving_is_not_in_the_file();
    void a_pending_edit_is_tried_again_before_the_file_is_written_data();
    void a_pending_edit_is_tried_again_before_the_file_is_written();
    void a_cell_that_is_being_edited_is_not_written();
    void saving_reads_the_question_list_again_and_nothing_else();
    void a_file_taken_away_can_be_saved_again();
    void a_long_list_is_saved_and_whole_again_data();
    void a_long_list_is_saved_and_whole_again();
    void a_long_list_is_saved_after_each_kind_of_use_data();
    void a_long_list_is_saved_after_each_kind_of_use();
};

void TestSavedProject::a_saved_project_is_a_plain_database_of_its_tables()
{
    Stage stage;
    stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    QCOMPARE(filesIn(stage), QStringList{u"saved.ormt"_s});
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(readBytes(path).startsWith(QByteArray("SQLite format 3\0", 16)));
    SideDatabase file(path);
    const QString schema = u"SELECT type, name, sql FROM sqlite_master ORDER BY name"_s;
    QCOMPARE(file.rows(schema), stage.rows(schema));
    QCOMPARE(file.value(u"PRAGMA user_version"_s), QVariant(0LL));
    QCOMPARE(file.value(u"PRAGMA application_id"_s), QVariant(0LL));
    QCOMPARE(file.rows(u"SELECT name, seq FROM sqlite_sequence"_s), (Rows{{u"questions"_s, 1}}));
}

void TestSavedProject::an_extension_is_neither_added_nor_looked_at_data()
{
    QTest::addColumn<QString>("name");
    for (const auto name : {"plain"_L1, "twice.ormt.ormt"_L1, "picture.png"_L1, "UPPER.ORMT"_L1, ".hidden"_L1})
        QTest::newRow(name.data()) << QString(name);
}

void TestSavedProject::an_extension_is_neither_added_nor_looked_at()
{
    QFETCH(const QString, name);
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    QVERIFY(stage.result("saveProjectToFile", stage.path(name)));
    QCOMPARE(filesIn(stage), QStringList{name});
    stage.call("newProject");
    QVERIFY(stage.result("openProjectFromFile", stage.path(name)));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
}

void TestSavedProject::an_empty_file_is_filled()
{
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    const QString path = writeBytes(stage.path(u"empty.ormt"_s), {});
    QVERIFY(stage.result("saveProjectToFile", path));
    QCOMPARE(SideDatabase(path).column(u"SELECT name FROM personas"_s), QStringList{u"Number One"_s});
    QVERIFY(!stage.asksBeforeClosing());
}

void TestSavedProject::saving_to_a_new_name_works_every_time()
{
    Stage stage;
    QString path;
    for (int turn = 1; turn <= 4; ++turn) {
        stage.call("insertPersona", u"Number %1"_s.arg(turn), u"Calm."_s);
        path = stage.path(u"saved%1.ormt"_s.arg(turn));
        QVERIFY(stage.result("saveProjectToFile", path));
        QVERIFY(!stage.asksBeforeClosing());
    }
    for (int turn = 1; turn <= 4; ++turn)
        QCOMPARE(SideDatabase(stage.path(u"saved%1.ormt"_s.arg(turn))).count(u"personas"_s), turn);
    QVERIFY(savesTo(stage, path));
}

void TestSavedProject::a_change_after_saving_is_not_in_the_file()
{
    Stage stage;
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    const QByteArray before = readBytes(path);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
    QCOMPARE(readBytes(path), before);
}

void TestSavedProject::a_pending_edit_is_tried_again_before_the_file_is_written_data()
{
    QTest::addColumn<bool>("refusedAgain");
    QTest::newRow("accepted at last") << false;
    QTest::newRow("refused again") << true;
}

void TestSavedProject::a_pending_edit_is_tried_again_before_the_file_is_written()
{
    QFETCH(const bool, refusedAgain);
    Stage stage;
    showQuestions(stage, 2);
    QSqlTableModel *model = questionModel(stage);
    // A refused edit stays in the model.
    QVERIFY(stage.exec(u"CREATE TEMP TRIGGER guard BEFORE UPDATE ON questions BEGIN SELECT RAISE(ABORT, 'no'); END"_s));
    QVERIFY(!model->setData(model->index(0, 2), u"Edited?"_s));
    QVERIFY(model->isDirty());
    QVERIFY(refusedAgain || stage.exec(u"DROP TRIGGER guard"_s));
    QCOMPARE(rowsSaved(stage, u"saved.ormt"_s, u"SELECT prompt FROM questions ORDER BY order_num"_s),
             (Rows{{refusedAgain ? u"Question 1"_s : u"Edited?"_s}, {u"Question 2"_s}}));
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestSavedProject::a_cell_that_is_being_edited_is_not_written()
{
    Stage stage;
    showQuestions(stage, 2);
    const auto startEditing = [&stage] {
        questionView(stage)->setCurrentIndex(questionModel(stage)->index(0, 2));
        QTest::keyClick(questionView(stage), Qt::Key_F2);
        return questionView(stage)->findChild<QLineEdit *>();
    };
    QLineEdit *editor = startEditing();
    QVERIFY(editor != nullptr);
    QTest::keyClicks(editor, u"Half a que"_s);
    QCOMPARE(editor->text(), u"Half a que"_s);
    QCOMPARE(rowsSaved(stage, u"saved.ormt"_s, u"SELECT prompt FROM questions ORDER BY order_num"_s),
             (Rows{{u"Question 1"_s}, {u"Question 2"_s}}));
    QVERIFY(questionListIsWhole(stage));
    // A list that is taken away under the editor takes it along.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const QPointer<QLineEdit> second = startEditing();
    QVERIFY(!second.isNull());
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"saved.ormt"_s)));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(second.isNull());
    QVERIFY(questionListIsWhole(stage));
}

void TestSavedProject::saving_reads_the_question_list_again_and_nothing_else()
{
    Stage stage;
    showQuestions(stage, 2);
    const QPointer<QSqlTableModel> model = questionModel(stage);
    const int columns = resultsTable(stage)->columnCount();
    QVERIFY(enter(stage, QuestionEntered{.prompt = u"Late?"_s}, PersonaEntered{.uuid = u"one"_s}));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QCOMPARE(questionModel(stage), model.data());
    QCOMPARE(model->rowCount(), 3);
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(resultsTable(stage)->columnCount(), columns);
    QCOMPARE(ConversationBox(stage).question->count(), 2);
    QVERIFY(shownPersonas(stage).isEmpty());
}

void TestSavedProject::a_file_taken_away_can_be_saved_again()
{
    Stage stage;
    const QString path = writeOther(stage);
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(QFile::remove(path));
    stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
    stage.action(u"Save"_s)->trigger();
    QCOMPARE(SideDatabase(path).count(u"personas"_s), 2);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestSavedProject::a_long_list_is_saved_and_whole_again_data()
{
    QTest::addColumn<int>("questions");
    for (const int questions : {255, 256, 257, 300, 5000})
        QTest::addRow("%d", questions) << questions;
}

void TestSavedProject::a_long_list_is_saved_and_whole_again()
{
    QFETCH(const int, questions);
    Stage stage;
    const Rows expected = {{questions}};
    showQuestions(stage, questions);
    QCOMPARE(rowsSaved(stage, u"first.ormt"_s, u"SELECT COUNT(*) FROM questions"_s), expected);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(rowsSaved(stage, u"second.ormt"_s, u"SELECT COUNT(*) FROM questions"_s), expected);
    QCOMPARE(questionModel(stage)->rowCount(), questions);
    QVERIFY(!questionModel(stage)->canFetchMore());
}

void TestSavedProject::a_long_list_is_saved_after_each_kind_of_use_data()
{
    QTest::addColumn<Act>("use");
    QTest::newRow("an edited cell") << Act([](Stage &stage) {
        QVERIFY(questionModel(stage)->setData(questionModel(stage)->index(290, 2), u"Edited?"_s));
    });
    QTest::newRow("a question moved up") << pressingFor(280, u"Up"_s);
    QTest::newRow("a question moved down") << pressingFor(10, u"Down"_s);
    QTest::newRow("a deleted and a new one") << Act([](Stage &stage) {
        pressingFor(270, u"Delete"_s)(stage);
        stage.call("insertQuestion", u"New?"_s, u"text"_s, false);
    });
    QTest::newRow("a list read anew by its model") << calling("loadQuestions");
    QTest::newRow("a conversation") << pressing(u"Show"_s, u"Boilerplate"_s);
}

void TestSavedProject::a_long_list_is_saved_after_each_kind_of_use()
{
    QFETCH(const Act, use);
    Stage stage;
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    showQuestions(stage, 300);
    use(stage);
    const QString all = u"SELECT order_num, prompt FROM questions ORDER BY order_num"_s;
    const Rows saved = rowsSaved(stage, u"saved.ormt"_s, all);
    QCOMPARE(saved.size(), 300);
    QCOMPARE(saved, stage.rows(all));
    QVERIFY(questionListIsWhole(stage));
}

ORRINET_TEST(TestSavedProject)
#include "tst_savedproject.moc"

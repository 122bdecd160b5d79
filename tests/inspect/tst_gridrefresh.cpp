#include "tests/inspect/surveydata.h"
#include "tests/support/messagelog.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

/// When the grid is rebuilt and when it lags behind, and what a rebuilding leaves of it.
class TestGridRefresh : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void adding_a_question_refreshes_the_grid();
    void a_run_refreshes_the_grid_after_each_answer_and_at_its_end_data();
    void a_run_refreshes_the_grid_after_each_answer_and_at_its_end();
    void an_edited_cell_stays_in_the_widget_until_the_next_refresh();
    void a_refresh_ends_an_edit();
    void the_table_is_rebuilt_whole();
    void deleting_a_question_leaves_the_grid_as_it_is();
    void moving_a_question_leaves_the_grid_as_it_is_data();
    void moving_a_question_leaves_the_grid_as_it_is();
    void a_closed_project_leaves_the_grid_as_it_is();
};

void TestGridRefresh::adding_a_question_refreshes_the_grid()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    QVERIFY(stage.call("insertQuestion", u"Three"_s, u"text"_s, false));
    QCOMPARE(titles(resultsTable(stage)), surveyTitles() + QStringList({u"Three"_s, u"Reasoning for Three"_s}));
    QCOMPARE(resultsTable(stage)->rowCount(), 2);
}

void TestGridRefresh::a_run_refreshes_the_grid_after_each_answer_and_at_its_end_data()
{
    QTest::addColumn<bool>("answered");
    QTest::addColumn<QList<QStringList>>("cells");
    QTest::addColumn<int>("refreshes");
    QList<QStringList> full = surveyCells();
    for (QStringList &row : full)
        row[3] = u"test response"_s;
    QTest::newRow("answers") << true << full << 3;
    QTest::newRow("failures") << false << surveyCells() << 1;
}

void TestGridRefresh::a_run_refreshes_the_grid_after_each_answer_and_at_its_end()
{
    QFETCH(const bool, answered);
    QFETCH(const QList<QStringList>, cells);
    QFETCH(const int, refreshes);
    Stage stage;
    QVERIFY(addSurvey(stage));
    QTableWidget *table = refreshed(stage);
    Stage::setTestMode(answered);
    const MessageLog messages;
    const QSignalSpy cleared(table->model(), &QAbstractItemModel::modelReset);
    QVERIFY(stage.call("runSurvey"));
    QCOMPARE(cleared.size(), refreshes);
    QCOMPARE(Stage::cells(table), cells);
    QCOMPARE(messages.warnings(), QStringList(answered ? 0 : 2, u"survey error: OPENAI_API_KEY not set"_s));
}

void TestGridRefresh::an_edited_cell_stays_in_the_widget_until_the_next_refresh()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    QTableWidget *table = refreshed(stage);
    stage.find<QTabWidget>({})->setCurrentWidget(stage.page(u"Results"_s));
    stage.window()->show();
    const auto stored = stage.rows(u"SELECT * FROM responses"_s);

    table->setCurrentCell(1, 1);
    QTest::keyClick(table, Qt::Key_F2);
    auto *editor = table->findChild<QLineEdit *>();
    QVERIFY(editor != nullptr);
    QCOMPARE(editor->text(), u"b1"_s);
    QTest::keyClicks(editor, u"mine"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(table->item(1, 1)->text(), u"mine"_s);
    QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), stored);
    QVERIFY(!stage.asksBeforeClosing());

    QCOMPARE(Stage::cells(refreshed(stage)), surveyCells());
}

void TestGridRefresh::a_refresh_ends_an_edit()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    QTableWidget *table = refreshed(stage);
    stage.find<QTabWidget>({})->setCurrentWidget(stage.page(u"Results"_s));
    stage.window()->show();
    table->editItem(table->item(0, 1));
    QTest::keyClicks(table->findChild<QLineEdit *>(), u"mine"_s);
    QCOMPARE(Stage::cells(refreshed(stage)), surveyCells());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(table->findChild<QLineEdit *>() == nullptr);
}

void TestGridRefresh::the_table_is_rebuilt_whole()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    QTableWidget *table = refreshed(stage);
    table->item(0, 1)->setData(Qt::UserRole, 1);
    table->insertRow(0);
    table->insertColumn(1);
    table->setHorizontalHeaderItem(0, new QTableWidgetItem(u"Other"_s));
    refreshed(stage);
    QCOMPARE(titles(table), surveyTitles());
    QCOMPARE(Stage::cells(table), surveyCells());
    QVERIFY(!table->item(0, 1)->data(Qt::UserRole).isValid());

    QVERIFY(stage.exec(u"DELETE FROM personas"_s));
    QVERIFY(stage.exec(u"DELETE FROM questions"_s));
    refreshed(stage);
    QCOMPARE(titles(table), QStringList{u"Persona"_s});
    QCOMPARE(table->rowCount(), 0);
}

void TestGridRefresh::deleting_a_question_leaves_the_grid_as_it_is()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    QVERIFY(stage.call("loadQuestions"));
    auto *view = stage.find<QTableView>(u"questionView"_s);
    view->selectRow(0);
    stage.button(u"Delete"_s, u"Questions"_s)->click();
    QCOMPARE(stage.value(u"SELECT COUNT(*) FROM questions"_s).toInt(), 1);
    QCOMPARE(titles(resultsTable(stage)), surveyTitles());
    QCOMPARE(Stage::cells(resultsTable(stage)), surveyCells());

    QCOMPARE(titles(refreshed(stage)), (QStringList{u"Persona"_s, u"Two"_s, u"Reasoning for Two"_s}));
}

void TestGridRefresh::moving_a_question_leaves_the_grid_as_it_is_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("row");
    QTest::newRow("up") << u"Up"_s << 1;
    QTest::newRow("down") << u"Down"_s << 0;
}

void TestGridRefresh::moving_a_question_leaves_the_grid_as_it_is()
{
    QFETCH(const QString, button);
    QFETCH(const int, row);
    Stage stage;
    QVERIFY(addSurvey(stage));
    QVERIFY(stage.call("loadQuestions"));
    stage.find<QTableView>(u"questionView"_s)->selectRow(row);
    stage.button(button, u"Questions"_s)->click();
    QCOMPARE(titles(resultsTable(stage)), surveyTitles());

    QCOMPARE(titles(refreshed(stage)),
             (QStringList{u"Persona"_s, u"Two"_s, u"Reasoning for Two"_s, u"One"_s, u"Reasoning for One"_s}));
    QCOMPARE(Stage::cells(resultsTable(stage)).constFirst(),
             (QStringList{u"Persona A"_s, QString(), QString(), u"a1"_s, u"why"_s}));
}

void TestGridRefresh::a_closed_project_leaves_the_grid_as_it_is()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    const QTableWidget *table = refreshed(stage);
    stage.project().close();
    refreshed(stage);
    QCOMPARE(titles(table), surveyTitles());
    QCOMPARE(Stage::cells(table), surveyCells());
}

QTEST_MAIN(TestGridRefresh)
#include "tst_gridrefresh.moc"

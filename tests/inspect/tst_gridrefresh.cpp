#include "tests/inspect/samplesurvey.h"
#include "tests/support/messagelog.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// Opens the editor of a cell of the grid as a user does; null where none opens.
static QLineEdit *openGridEditor(Stage &stage, int row, int column)
{
    stage.find<QTabWidget>({})->setCurrentWidget(stage.page(u"Results"_s));
    stage.window()->show();
    QTableWidget *table = resultsTable(stage);
    table->setCurrentCell(row, column);
    QTest::keyClick(table, Qt::Key_F2);
    return table->findChild<QLineEdit *>();
}

/// When the grid is rebuilt and when it lags behind, and what a rebuilding leaves of it.
class TestGridRefresh : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_run_refreshes_the_grid_after_each_answer_and_at_its_end_data()
    {
        QTest::addColumn<bool>("answered");
        QTest::addColumn<QList<QStringList>>("shown");
        QTest::addColumn<int>("refreshes");
        QList<QStringList> full = surveyCells();
        for (QStringList &row : full)
            row[3] = u"test response"_s;
        QTest::newRow("answers") << true << full << 3;
        QTest::newRow("failures") << false << surveyCells() << 1;
    }
    void a_run_refreshes_the_grid_after_each_answer_and_at_its_end()
    {
        QFETCH(const bool, answered);
        QFETCH(const int, refreshes);
        Stage stage;
        QVERIFY(enterSurvey(stage));
        keepGridRebuilt(stage);
        QTableWidget *table = refreshedGrid(stage);
        Stage::setTestMode(answered);
        const MessageLog messages;
        const QSignalSpy cleared(table->model(), &QAbstractItemModel::modelReset);
        QVERIFY(stage.call("runSurvey"));
        QCOMPARE(cleared.size(), refreshes);
        QTEST(cells(table), "shown");
        QCOMPARE(messages.warnings(), QStringList(answered ? 0 : 2, u"survey error: OPENAI_API_KEY not set"_s));
    }

    void an_edited_cell_stays_in_the_widget_until_the_next_refresh()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        QTableWidget *table = refreshedGrid(stage);
        const auto stored = stage.rows(u"SELECT * FROM responses"_s);

        QLineEdit *editor = openGridEditor(stage, 1, 1);
        QVERIFY(editor != nullptr);
        QCOMPARE(editor->text(), u"b1"_s);
        QTest::keyClicks(editor, u"mine"_s);
        QSignalSpy changed(table, &QTableWidget::itemChanged);
        QTest::keyClick(editor, Qt::Key_Return);
        QVERIFY(!changed.isEmpty() || changed.wait(patience));
        QCOMPARE(table->item(1, 1)->text(), u"mine"_s);
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), stored);
        QVERIFY(!stage.asksBeforeClosing());

        QCOMPARE(cells(refreshedGrid(stage)), surveyCells());
    }

    void a_refresh_ends_an_edit()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        QTableWidget *table = refreshedGrid(stage);
        QLineEdit *editor = openGridEditor(stage, 0, 1);
        QVERIFY(editor != nullptr);
        QTest::keyClicks(editor, u"mine"_s);
        QCOMPARE(cells(refreshedGrid(stage)), surveyCells());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(table->findChild<QLineEdit *>() == nullptr);
    }

    void the_table_is_rebuilt_whole()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        QTableWidget *table = refreshedGrid(stage);
        table->item(0, 1)->setData(Qt::UserRole, 1);
        table->insertRow(0);
        table->insertColumn(1);
        table->setHorizontalHeaderItem(0, new QTableWidgetItem(u"Other"_s));
        refreshedGrid(stage);
        QCOMPARE(titles(table), surveyTitles());
        QCOMPARE(cells(table), surveyCells());
        QVERIFY(!table->item(0, 1)->data(Qt::UserRole).isValid());

        QVERIFY(stage.exec({u"DELETE FROM personas"_s, u"DELETE FROM questions"_s}));
        refreshedGrid(stage);
        QCOMPARE(titles(table), QStringList{u"Persona"_s});
        QCOMPARE(table->rowCount(), 0);
    }

    void an_answer_numbered_below_the_others_is_shown()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        refreshedGrid(stage);
        // As another program may number it; the newest answers are looked for above the last.
        QVERIFY(stage.exec(u"INSERT INTO responses (id, persona_uuid, question_id, text_answer, created_at) "
                           "VALUES (-1, 'a', 2, 'a2', '2001-02-03 04:05:06')"_s));
        QList<QStringList> expected = surveyCells();
        expected[0][3] = u"a2"_s;
        QCOMPARE(cells(refreshedGrid(stage)), expected);
    }

    void an_answer_that_is_taken_back_leaves_the_grid()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        refreshedGrid(stage);
        QVERIFY(stage.exec(u"BEGIN"_s));
        QVERIFY(enter(stage, AnswerEntered{.persona = u"a"_s, .question = 2, .text = u"a2"_s}));
        QList<QStringList> expected = surveyCells();
        expected[0][3] = u"a2"_s;
        QCOMPARE(cells(refreshedGrid(stage)), expected);
        QVERIFY(stage.exec(u"ROLLBACK"_s));
        QCOMPARE(cells(refreshedGrid(stage)), surveyCells());
    }

    void a_closed_project_leaves_the_grid_as_it_is()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        const QTableWidget *table = refreshedGrid(stage);
        stage.database().close();
        refreshedGrid(stage);
        QCOMPARE(titles(table), surveyTitles());
        QCOMPARE(cells(table), surveyCells());
    }
};

ORRINET_TEST(TestGridRefresh)
#include "tst_gridrefresh.moc"

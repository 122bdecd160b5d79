// Editing in place: a cell that is left is written to the table at once, and nothing else happens.

#include "tests/questions/questionlist.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QAbstractItemDelegate>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

/// The editor that a key opens in a cell of the list, null where none opens.
static QLineEdit *openCellEditor(Stage &stage, int row, const QString &column, Qt::Key key)
{
    QTableView *view = questionView(stage);
    view->setCurrentIndex(questionCell(stage, row, column));
    QTest::keyClick(view, key);
    return view->findChild<QLineEdit *>();
}

/// Leaves the editor with a key; false where it stays open.
static bool leaveCellEditor(Stage &stage, QLineEdit *editor, Qt::Key key)
{
    QSignalSpy closed(questionView(stage)->itemDelegate(), &QAbstractItemDelegate::closeEditor);
    QTest::keyClick(editor, key);
    return !closed.isEmpty() || closed.wait(patience);
}

static Rows allColumns(Stage &stage)
{
    return stage.rows(u"SELECT * FROM questions ORDER BY question_id"_s);
}

class TestQuestionEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_field_is_written_when_it_is_left_and_alone_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("order_num") << QVariant(9);
        QTest::newRow("prompt") << QVariant(u"Where?"_s);
        QTest::newRow("answer_type") << QVariant(u"nonsense"_s);
        QTest::newRow("labels") << QVariant(u"[\"broken"_s);
        QTest::newRow("reasoning_required") << QVariant(5);
        QTest::newRow("judge_question") << QVariant(1);
        QTest::newRow("ask_when") << QVariant(u"never"_s);
    }
    void a_field_is_written_when_it_is_left_and_alone()
    {
        QFETCH(const QVariant, value);
        Stage stage;
        QVERIFY(listQuestions(stage, 3));
        QVERIFY(showQuestions(stage));
        const QModelIndex index = questionCell(stage, 1, QString::fromLatin1(QTest::currentDataTag()));
        const Rows before = allColumns(stage);
        const auto offered = offeredQuestions(stage);
        const auto gridTitles = titles(resultsTable(stage));
        QCOMPARE(gridTitles.size(), 7);

        auto *editor = openCellEditor(stage, 1, QString::fromLatin1(QTest::currentDataTag()), Qt::Key_F2);
        QVERIFY(editor != nullptr);
        editor->selectAll();
        QTest::keyClicks(editor, value.toString());
        QCOMPARE(allColumns(stage), before);
        QVERIFY(leaveCellEditor(stage, editor, Qt::Key_Return));

        Rows expected = before;
        expected[1][index.column()] = value;
        QVERIFY(expected != before);
        QCOMPARE(allColumns(stage), expected);
        QCOMPARE(index.data(), value);
        QCOMPARE(offeredQuestions(stage), offered);
        QCOMPARE(titles(resultsTable(stage)), gridTitles);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void typing_starts_the_editor_and_leaving_for_the_next_cell_writes()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        QVERIFY(showQuestions(stage));
        auto *editor = openCellEditor(stage, 0, u"prompt"_s, Qt::Key_X);
        QVERIFY(editor != nullptr);
        QTest::keyClicks(editor, u"yz"_s);
        QVERIFY(leaveCellEditor(stage, editor, Qt::Key_Tab));
        QCOMPARE(numbering(stage), u"1xyz 2B"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void an_edit_that_is_given_up_writes_nothing()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        QVERIFY(showQuestions(stage));
        auto *editor = openCellEditor(stage, 0, u"prompt"_s, Qt::Key_F2);
        QVERIFY(editor != nullptr);
        QTest::keyClicks(editor, u"xyz"_s);
        QVERIFY(leaveCellEditor(stage, editor, Qt::Key_Escape));
        QCOMPARE(numbering(stage), u"1A 2B"_s);
    }

    void a_number_that_is_edited_moves_the_row_at_the_next_refresh()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 3));
        QVERIFY(questionModel(stage)->setData(questionCell(stage, 0, u"order_num"_s), 9));
        QCOMPARE(numbering(stage), u"9A 2B 3C"_s);
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList({u"A"_s, u"B"_s, u"C"_s}));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList({u"B"_s, u"C"_s, u"A"_s}));
        QCOMPARE(offeredQuestions(stage).constLast(), QVariantList({u"9"_s, 1}));
    }

    void an_edit_the_table_refuses_leaves_the_row()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        QVERIFY(forbid(stage, u"UPDATE ON questions"_s));
        QVERIFY(!questionModel(stage)->setData(questionCell(stage, 0, u"prompt"_s), u"x"_s));
        QCOMPARE(numbering(stage), u"1A 2B"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestQuestionEditing)
#include "tst_questionediting.moc"

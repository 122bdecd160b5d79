// Editing in place: a cell that is left is written to the table at once, and nothing else happens.

#include "tests/questions/questionnaire.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

static void addEditableColumns()
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

/// The column of the table that the data row names.
static QString testedColumn()
{
    return QString::fromLatin1(QTest::currentDataTag());
}

static QVariant storedValue(Stage &stage, int id)
{
    return stage.value(u"SELECT %1 FROM questions WHERE question_id = ?"_s.arg(testedColumn()), {id});
}

static bool showQuestions(Stage &stage)
{
    stage.find<QTabWidget>(QString())->setCurrentWidget(stage.page(u"Questions"_s));
    stage.window()->show();
    stage.window()->activateWindow();
    return QTest::qWaitForWindowActive(stage.window());
}

class TestQuestionEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_field_is_written_at_once_and_alone_data() { addEditableColumns(); }
    void a_field_is_written_at_once_and_alone()
    {
        QFETCH(const QVariant, value);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        Rows expected = stage.rows(u"SELECT * FROM questions ORDER BY question_id"_s);
        const auto offered = offeredQuestions(stage);
        const auto titles = gridTitles(stage);

        const QModelIndex index = questionCell(stage, 1, testedColumn());
        QVERIFY(questionModel(stage)->setData(index, value));
        expected[1][index.column()] = value;
        QCOMPARE(stage.rows(u"SELECT * FROM questions ORDER BY question_id"_s), expected);
        QCOMPARE(index.data(), value);
        QCOMPARE(offeredQuestions(stage), offered);
        QCOMPARE(gridTitles(stage), titles);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_field_typed_into_the_list_is_written_when_it_is_left_data() { addEditableColumns(); }
    void a_field_typed_into_the_list_is_written_when_it_is_left()
    {
        QFETCH(const QVariant, value);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        const QString others = u"SELECT modified_at, created_at, serial FROM questions"_s;
        const auto before = stage.rows(others);
        const auto titles = gridTitles(stage);
        QVERIFY(showQuestions(stage));

        QTableView *view = questionView(stage);
        view->setFocus();
        view->setCurrentIndex(questionCell(stage, 1, testedColumn()));
        QTest::keyClick(view, Qt::Key_F2);
        auto *editor = view->findChild<QLineEdit *>();
        QVERIFY(editor != nullptr);
        editor->selectAll();
        QTest::keyClicks(editor, value.toString());
        QVERIFY(storedValue(stage, 2) != value);
        QSignalSpy written(questionModel(stage), &QAbstractItemModel::dataChanged);
        QTest::keyClick(editor, Qt::Key_Return);
        QVERIFY(!written.isEmpty() || written.wait());

        QCOMPARE(storedValue(stage, 2), value);
        QVERIFY(storedValue(stage, 1) != value);
        QCOMPARE(stage.rows(others), before);
        QCOMPARE(gridTitles(stage), titles);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void typing_starts_the_editor_and_leaving_for_the_next_cell_writes()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 2));
        QVERIFY(showQuestions(stage));
        QTableView *view = questionView(stage);
        view->setFocus();
        view->setCurrentIndex(questionCell(stage, 0, u"prompt"_s));
        QTest::keyClick(view, Qt::Key_X);
        auto *editor = view->findChild<QLineEdit *>();
        QVERIFY(editor != nullptr);
        QTest::keyClicks(editor, u"yz"_s);
        QSignalSpy written(questionModel(stage), &QAbstractItemModel::dataChanged);
        QTest::keyClick(editor, Qt::Key_Tab);
        QVERIFY(!written.isEmpty() || written.wait());
        QCOMPARE(numbering(stage), u"1xyz 2B"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void an_edit_that_is_given_up_writes_nothing()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 2));
        QVERIFY(showQuestions(stage));
        QTableView *view = questionView(stage);
        view->setFocus();
        view->setCurrentIndex(questionCell(stage, 0, u"prompt"_s));
        QTest::keyClick(view, Qt::Key_F2);
        auto *editor = view->findChild<QLineEdit *>();
        QVERIFY(editor != nullptr);
        QTest::keyClicks(editor, u"xyz"_s);
        QSignalSpy closed(view->itemDelegate(), &QAbstractItemDelegate::closeEditor);
        QTest::keyClick(editor, Qt::Key_Escape);
        QVERIFY(!closed.isEmpty() || closed.wait());
        QCOMPARE(numbering(stage), u"1A 2B"_s);
    }

    void a_number_that_is_edited_moves_the_row_at_the_next_refresh()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        QVERIFY(questionModel(stage)->setData(questionCell(stage, 0, u"order_num"_s), 9));
        QCOMPARE(numbering(stage), u"9A 2B 3C"_s);
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList({u"A"_s, u"B"_s, u"C"_s}));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList({u"B"_s, u"C"_s, u"A"_s}));
        QCOMPARE(offeredQuestions(stage).constLast(), QVariantList({u"9"_s, 1}));
    }

    void an_edit_the_table_refuses_leaves_the_row()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 2));
        QVERIFY(forbid(stage, u"UPDATE ON questions"_s));
        QVERIFY(!questionModel(stage)->setData(questionCell(stage, 0, u"prompt"_s), u"x"_s));
        QCOMPARE(numbering(stage), u"1A 2B"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestQuestionEditing)
#include "tst_questionediting.moc"

// The list of the Questions tab: what it shows, what can be done in it, and what is refreshed with it.

#include "tests/questions/questionlist.h"
#include "tests/support/testcase.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

/// The titles of the columns that are shown, or of those that are hidden.
static QStringList listTitles(Stage &stage, bool hidden)
{
    const QTableView *view = questionView(stage);
    QStringList all;
    for (int column = 0; column < view->model()->columnCount(); ++column) {
        if (view->isColumnHidden(column) == hidden)
            all.append(view->model()->headerData(column, Qt::Horizontal).toString());
    }
    return all;
}

static QStringList shownTitles()
{
    return {u"order_num"_s,          u"prompt"_s,         u"answer_type"_s, u"labels"_s,
            u"reasoning_required"_s, u"judge_question"_s, u"ask_when"_s};
}

static QStringList hiddenTitles()
{
    return {u"question_id"_s,       u"description"_s,    u"model"_s,
            u"temperature"_s,       u"search_enabled"_s, u"depends_on_question_id"_s,
            u"depends_on_answer"_s, u"serial"_s,         u"created_at"_s,
            u"modified_at"_s};
}

class TestQuestionList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void model_and_delegate_are_the_plain_ones_and_each_field_is_written()
    {
        Stage stage;
        const QSqlTableModel *model = questionModel(stage);
        QCOMPARE(QLatin1StringView(model->metaObject()->className()), "QSqlTableModel"_L1);
        QCOMPARE(model->parent(), stage.window());
        QCOMPARE(model->tableName(), u"questions"_s);
        QCOMPARE(model->database().connectionName(), u"project"_s);
        QCOMPARE(model->editStrategy(), QSqlTableModel::OnFieldChange);
        const QAbstractItemDelegate *delegate = questionView(stage)->itemDelegate();
        QCOMPARE(QLatin1StringView(delegate->metaObject()->className()), "QStyledItemDelegate"_L1);
    }

    void the_titles_of_the_shown_columns_are_the_field_names()
    {
        Stage stage;
        QCOMPARE(listTitles(stage, false), shownTitles());
        QCOMPARE(listTitles(stage, true), hiddenTitles());
    }

    void cells_show_what_the_table_holds()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.order = 3}));
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"single_choice"_s, true, u"[\"Yes\",\"No\"]"_s));
        QStringList shown;
        for (const auto all = shownTitles(); const QString &title : all)
            shown.append(columnTexts(stage, title).at(1));
        QCOMPARE(shown, QStringList({u"4"_s, u"What?"_s, u"single_choice"_s, u"[\"Yes\",\"No\"]"_s, u"1"_s, u"0"_s,
                                     u"always"_s}));
    }

    void questions_can_be_edited_but_not_dragged()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 1));
        const QStringList editable = shownTitles();
        for (const QString &column : editable) {
            const Qt::ItemFlags flags = questionCell(stage, 0, column).flags();
            QVERIFY2(flags.testFlag(Qt::ItemIsEditable), qUtf8Printable(column));
            QVERIFY2(!flags.testAnyFlags(Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled), qUtf8Printable(column));
        }
    }

    // The mode of the list would let a row be moved, but its model moves none.
    void a_dragged_question_stays_where_it_is()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 3) && showQuestions(stage));
        const Rows before = stage.rows(u"SELECT * FROM questions"_s);
        const QTableView *view = questionView(stage);
        const QPoint from = view->visualRect(questionCell(stage, 0, u"prompt"_s)).center();
        const QPoint to = view->visualRect(questionCell(stage, 2, u"prompt"_s)).center();
        QCOMPARE_GT((to - from).manhattanLength(), 2 * QApplication::startDragDistance());
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, from);
        QTest::mouseMove(view->viewport(), (from + to) / 2);
        QTest::mouseMove(view->viewport(), to);
        QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, to);
        QVERIFY(view->findChild<QDrag *>() == nullptr);

        const QModelIndexList row{questionCell(stage, 0, u"prompt"_s)};
        const std::unique_ptr<QMimeData> data(questionModel(stage)->mimeData(row));
        const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent entered(to, actions, data.get(), Qt::LeftButton, {});
        QDragMoveEvent moved(to, actions, data.get(), Qt::LeftButton, {});
        QDropEvent dropped(to, actions, data.get(), Qt::LeftButton, {});
        for (QDropEvent *event : {static_cast<QDropEvent *>(&entered), static_cast<QDropEvent *>(&moved), &dropped}) {
            QCoreApplication::sendEvent(view->viewport(), event);
            QVERIFY(!event->isAccepted());
        }
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList({u"A"_s, u"B"_s, u"C"_s}));
        QCOMPARE(stage.rows(u"SELECT * FROM questions"_s), before);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void without_questions_there_are_headers_only()
    {
        Stage stage;
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QCOMPARE(questionModel(stage)->columnCount(), shownTitles().size() + hiddenTitles().size());
        QCOMPARE(offeredQuestions(stage), Rows());
        QVERIFY(ConversationBox(stage).group->isHidden());
    }

    void the_conversation_box_is_shown_while_a_refresh_finds_questions()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"A"_s, u"text"_s, false));
        const QGroupBox *box = ConversationBox(stage).group;
        QVERIFY(!box->isHidden());
        questionView(stage)->selectRow(0);
        press(stage, u"Delete"_s);
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QVERIFY(!box->isHidden());
        QVERIFY(stage.call("loadQuestions"));
        QVERIFY(box->isHidden());
    }

    void rows_and_chooser_follow_the_numbers()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.id = 5, .order = 10, .prompt = u"C"_s},
                      QuestionEntered{.id = 6, .order = 2, .prompt = u"B"_s},
                      QuestionEntered{.id = 9, .order = 1, .prompt = u"A"_s}));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList({u"A"_s, u"B"_s, u"C"_s}));
        QCOMPARE(offeredQuestions(stage), Rows({{u"1"_s, 9}, {u"2"_s, 6}, {u"10"_s, 5}}));
        // A refresh reads again and does not add.
        const QSqlTableModel *model = questionModel(stage);
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(offeredQuestions(stage).size(), 3);
        QCOMPARE(questionModel(stage), model);
        QCOMPARE(model->rowCount(), 3);
    }

    // Each link of the refresh stands on the one before.
    void list_chooser_box_and_results_are_refreshed_in_this_order()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{}));
        const ConversationBox box(stage);
        QStringList events;
        const QObject context;
        connect(questionModel(stage), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"list: chooser %1, box %2"_s.arg(box.question->count()).arg(!box.group->isHidden()));
        });
        connect(box.question->model(), &QAbstractItemModel::rowsInserted, &context, [&] {
            events.append(
                u"chooser: list %1, box %2"_s.arg(questionModel(stage)->rowCount()).arg(!box.group->isHidden()));
        });
        connect(resultsTable(stage)->model(), &QAbstractItemModel::modelReset, &context,
                [&] { events.append(u"results: box %1"_s.arg(!box.group->isHidden())); });
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(events.value(0), u"list: chooser 0, box 0"_s);
        QCOMPARE(events.value(1), u"chooser: list 1, box 0"_s);
        QCOMPARE(events.value(2), u"results: box 1"_s);
    }

    void a_new_project_gets_a_model_of_its_own_with_the_same_columns_hidden()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        const QPointer<QSqlTableModel> old = questionModel(stage);
        bool hadModel = true;
        const QObject context;
        // The refresh that makes the new model empties the persona list first.
        connect(personaTable(stage)->model(), &QAbstractItemModel::modelReset, &context,
                [&] { hadModel = questionView(stage)->model() != nullptr; });
        QVERIFY(stage.call("newProject"));
        QVERIFY(old.isNull());
        QVERIFY(!hadModel);
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QCOMPARE(listTitles(stage, false), shownTitles());
        QCOMPARE(listTitles(stage, true), hiddenTitles());
        QVERIFY(ConversationBox(stage).group->isHidden());
    }
};

ORRINET_TEST(TestQuestionList)
#include "tst_questionlist.moc"

#include "tests/questions/questionnaire.h"

#include <QBoxLayout>
#include <QPointer>
#include <QTest>

using namespace Qt::StringLiterals;

/// The titles of the columns that are shown, or of those that are hidden.
static QStringList columns(Stage &stage, bool hidden)
{
    const QTableView *view = questionView(stage);
    QStringList titles;
    for (int column = 0; column < view->model()->columnCount(); ++column) {
        if (view->isColumnHidden(column) == hidden)
            titles.append(view->model()->headerData(column, Qt::Horizontal).toString());
    }
    return titles;
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
    void the_view_selects_single_rows_and_keeps_the_usual_ways_of_editing()
    {
        Stage stage;
        const QTableView *view = questionView(stage);
        QCOMPARE(view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(view->selectionMode(), QAbstractItemView::SingleSelection);
        QCOMPARE(view->dragDropMode(), QAbstractItemView::InternalMove);
        QCOMPARE(view->editTriggers(), QTableView().editTriggers());
        QCOMPARE(QLatin1StringView(view->itemDelegate()->metaObject()->className()), "QStyledItemDelegate"_L1);
    }

    void the_page_has_the_list_above_its_four_buttons()
    {
        Stage stage;
        const QWidget *page = stage.page(u"Questions"_s);
        const auto *layout = qobject_cast<QVBoxLayout *>(page->layout());
        QCOMPARE(layout->count(), 2);
        QCOMPARE(layout->itemAt(0)->widget(), questionView(stage));
        const auto *buttons = qobject_cast<QHBoxLayout *>(layout->itemAt(1)->layout());
        QCOMPARE(buttons->count(), 5);
        const QStringList texts{u"Add"_s, u"Delete"_s, u"Up"_s, u"Down"_s};
        for (int index = 0; index < texts.size(); ++index)
            QCOMPARE(qobject_cast<QPushButton *>(buttons->itemAt(index)->widget())->text(), texts.at(index));
        QVERIFY(buttons->itemAt(4)->spacerItem() != nullptr);
    }

    void the_model_is_a_plain_table_model_that_writes_each_field()
    {
        Stage stage;
        const QSqlTableModel *model = questionModel(stage);
        QCOMPARE(QLatin1StringView(model->metaObject()->className()), "QSqlTableModel"_L1);
        QCOMPARE(model->parent(), stage.window());
        QCOMPARE(model->tableName(), u"questions"_s);
        QCOMPARE(model->database().connectionName(), u"project"_s);
        QCOMPARE(model->editStrategy(), QSqlTableModel::OnFieldChange);
    }

    void the_titles_of_the_shown_columns_are_the_field_names()
    {
        Stage stage;
        QCOMPARE(columns(stage, false), shownTitles());
        QCOMPARE(columns(stage, true), hiddenTitles());
    }

    void cells_show_what_the_table_holds_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("order_num") << u"4"_s;
        QTest::newRow("prompt") << u"What?"_s;
        QTest::newRow("answer_type") << u"single_choice"_s;
        QTest::newRow("labels") << u"[\"Yes\",\"No\"]"_s;
        QTest::newRow("reasoning_required") << u"1"_s;
        QTest::newRow("judge_question") << u"0"_s;
        QTest::newRow("ask_when") << u"always"_s;
    }
    void cells_show_what_the_table_holds()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num) VALUES (3)"_s));
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"single_choice"_s, true, u"[\"Yes\",\"No\"]"_s));
        QTEST(shownColumn(stage, QString::fromLatin1(QTest::currentDataTag())).at(1), "text");
    }

    void questions_can_be_edited_but_not_dragged()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 1));
        const QStringList editable = shownTitles();
        for (const QString &column : editable) {
            const Qt::ItemFlags flags = questionCell(stage, 0, column).flags();
            QVERIFY2(flags.testFlag(Qt::ItemIsEditable), qUtf8Printable(column));
            QVERIFY2(!flags.testAnyFlags(Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled), qUtf8Printable(column));
        }
    }

    void without_questions_there_are_headers_only()
    {
        Stage stage;
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QCOMPARE(questionModel(stage)->columnCount(), shownTitles().size() + hiddenTitles().size());
        QCOMPARE(questionChooser(stage)->count(), 0);
        QVERIFY(conversationGroup(stage)->isHidden());
    }

    void the_first_question_shows_the_conversation_box()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"A"_s, u"text"_s, false));
        QVERIFY(!conversationGroup(stage)->isHidden());
    }

    void deleting_the_last_question_leaves_the_conversation_box_until_the_next_refresh()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 1));
        questionView(stage)->selectRow(0);
        press(stage, u"Delete"_s);
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QVERIFY(!conversationGroup(stage)->isHidden());
        QVERIFY(stage.call("loadQuestions"));
        QVERIFY(conversationGroup(stage)->isHidden());
    }

    void rows_and_chooser_follow_the_numbers()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (question_id, order_num, prompt) "
                           "VALUES (5, 10, 'C'), (6, 2, 'B'), (9, 1, 'A')"_s));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList({u"A"_s, u"B"_s, u"C"_s}));
        QCOMPARE(offeredQuestions(stage),
                 Rows({QVariantList{u"1"_s, 9}, QVariantList{u"2"_s, 6}, QVariantList{u"10"_s, 5}}));
        // A refresh reads again and does not add.
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(offeredQuestions(stage).size(), 3);
        QCOMPARE(questionModel(stage)->rowCount(), 3);
    }

    void a_refresh_of_the_questions_refreshes_the_results()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO personas (uuid, name) VALUES ('u1', 'A')"_s));
        QVERIFY(enterQuestions(stage, 1));
        QCOMPARE(gridTitles(stage), QStringList({u"Persona"_s, u"A"_s, u"Reasoning for A"_s}));
        QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->rowCount(), 1);
        QVERIFY(!stage.asksBeforeClosing());
    }

    // Each link of the refresh stands on the one before.
    void list_chooser_box_and_results_are_refreshed_in_this_order()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num) VALUES (1)"_s));
        QStringList events;
        const QObject context;
        connect(questionModel(stage), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"list: chooser %1, box %2"_s.arg(questionChooser(stage)->count())
                              .arg(!conversationGroup(stage)->isHidden()));
        });
        connect(questionChooser(stage)->model(), &QAbstractItemModel::rowsInserted, &context, [&] {
            events.append(u"chooser: list %1, box %2"_s.arg(questionModel(stage)->rowCount())
                              .arg(!conversationGroup(stage)->isHidden()));
        });
        const auto *results = stage.find<QTableWidget>(u"resultsTable"_s);
        connect(results->model(), &QAbstractItemModel::modelReset, &context,
                [&] { events.append(u"results: box %1"_s.arg(!conversationGroup(stage)->isHidden())); });
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(events.value(0), u"list: chooser 0, box 0"_s);
        QCOMPARE(events.value(1), u"chooser: list 1, box 0"_s);
        QCOMPARE(events.value(2), u"results: box 1"_s);
    }

    void a_new_project_gets_a_model_of_its_own_with_the_same_columns_hidden()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 2));
        const QPointer<QSqlTableModel> old = questionModel(stage);
        bool hadModel = true;
        const QObject context;
        // The refresh that makes the new model empties the persona list first.
        connect(stage.find<QTableWidget>(u"personaTable"_s)->model(), &QAbstractItemModel::modelReset, &context,
                [&] { hadModel = questionView(stage)->model() != nullptr; });
        QVERIFY(stage.call("newProject"));
        QVERIFY(old.isNull());
        QVERIFY(!hadModel);
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QCOMPARE(columns(stage, false), shownTitles());
        QCOMPARE(columns(stage, true), hiddenTitles());
        QVERIFY(conversationGroup(stage)->isHidden());
    }

    void a_refresh_keeps_the_model()
    {
        Stage stage;
        const QSqlTableModel *model = questionModel(stage);
        QVERIFY(enterQuestions(stage, 2));
        QCOMPARE(questionModel(stage), model);
    }
};

QTEST_MAIN(TestQuestionList)
#include "tst_questionlist.moc"

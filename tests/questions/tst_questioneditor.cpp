// The question dialog: its form, what it takes from a question, and what it stores.

#include "tests/questions/questionform.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// All of a question but its identity and its times.
static Rows questionRows(Stage &stage)
{
    return stage.rows(u"SELECT order_num, prompt, answer_type, IFNULL(labels, 'none'), reasoning_required, "
                      "judge_question, ask_when, serial FROM questions ORDER BY question_id"_s);
}

class TestQuestionEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_the_form_stand_in_their_order()
    {
        Stage stage;
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            QStringList rows;
            for (int row = 0; row < form.layout->rowCount(); ++row) {
                const QLayoutItem *caption = form.layout->itemAt(row, QFormLayout::LabelRole);
                const QWidget *control = form.content(row)->widget();
                const auto *box = qobject_cast<const QCheckBox *>(control);
                const auto *label = caption != nullptr ? qobject_cast<const QLabel *>(caption->widget()) : nullptr;
                rows.append(
                    QStringList{label != nullptr ? label->text() : u"-"_s,
                                QString::fromLatin1(control != nullptr ? control->metaObject()->className() : "row"),
                                box != nullptr ? box->text() : QString()}
                        .join(u'|'));
            }
            const QStringList expected{u"Prompt|QPlainTextEdit|"_s,
                                       u"Type|QComboBox|"_s,
                                       u"Labels|LabelSection|"_s,
                                       u"-|QCheckBox|Provide reasoning"_s,
                                       u"-|QCheckBox|Adjudicated Question"_s,
                                       u"-|QCheckBox|Allow web search first"_s,
                                       u"Ask|QComboBox|"_s,
                                       u"-|row|"_s,
                                       u"-|QDialogButtonBox|"_s};
            QCOMPARE(rows, expected);
            QCOMPARE(items(form.type), QStringList({u"Option"_s, u"Multiple Choice"_s, u"Text"_s, u"Numeric"_s,
                                                    u"Likert Scale"_s, u"Rank Choices"_s}));
            QCOMPARE(items(form.ask), QStringList({u"always"_s, u"when the answer to question"_s}));
            QVERIFY(!form.type->isEditable());
            QCOMPARE(form.prompt->minimumHeight(), 80);
            const auto *buttons = form.dialog->findChild<QDialogButtonBox *>();
            QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        }));
    }

    void dialog_has_no_title_and_is_gone_when_it_is_closed()
    {
        Stage stage;
        QVERIFY(editQuestion(stage, -1, [&](const QuestionForm &form) {
            QVERIFY(form.dialog->windowTitle().isEmpty());
            QCOMPARE(form.dialog->parentWidget(), stage.window());
            QVERIFY(form.dialog->isModal());
            QVERIFY(!form.dialog->testAttribute(Qt::WA_DontShowOnScreen));
        }));
        QVERIFY(stage.window()->findChildren<QDialog *>().isEmpty());
    }

    void new_question_starts_as_an_option_with_reasoning()
    {
        Stage stage;
        const Modal modal(inQuestionForm([](const QuestionForm &form) {
            QCOMPARE(form.prompt->toPlainText(), QString());
            QCOMPARE(form.type->currentText(), u"Option"_s);
            QCOMPARE(form.labels(), QStringList());
            QVERIFY(form.reasoning()->isChecked());
            QVERIFY(!form.box(u"Adjudicated Question"_s)->isChecked());
            QVERIFY(!form.box(u"Allow web search first"_s)->isChecked());
            QCOMPARE(form.ask->currentIndex(), 0);
            QVERIFY(form.ok->isEnabled());
            form.accept();
        }));
        press(stage, u"Add"_s);
        QVERIFY(modal.wasAnswered());
        QCOMPARE(questionRows(stage), Rows({{1, u""_s, u"single_choice"_s, u"[]"_s, 1, 0, u"always"_s, 1}}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void no_row_of_the_list_means_a_new_question_data()
    {
        QTest::addColumn<int>("row");
        QTest::newRow("before the first") << -1;
        QTest::newRow("far before") << -7;
        QTest::newRow("behind the last") << 2;
        QTest::newRow("far behind") << 99;
    }
    void no_row_of_the_list_means_a_new_question()
    {
        QFETCH(const int, row);
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        QVERIFY(editQuestion(stage, row, [](const QuestionForm &form) {
            QCOMPARE(form.prompt->toPlainText(), QString());
            form.prompt->setPlainText(u"C"_s);
            form.accept();
        }));
        QCOMPARE(numbering(stage), u"1A 2B 3C"_s);
    }

    void row_of_the_list_decides_which_question_is_opened()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 3));
        // The order of the list is no longer that of the identities.
        QVERIFY(stage.exec(u"UPDATE questions SET order_num = 4 - order_num"_s) && stage.call("loadQuestions"));
        questionView(stage)->selectRow(1);
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            QCOMPARE(form.prompt->toPlainText(), u"C"_s);
            form.prompt->setPlainText(u"D"_s);
            form.accept();
        }));
        QCOMPARE(numbering(stage), u"3A 2B 1D"_s);
    }

    void ok_changes_the_stored_columns_alone()
    {
        const QString prompt = u" <b>'\"How\"</b>\n\nmany?\n"_s;
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.type = u"ranking"_s, .labels = u"[\"A\"]"_s, .reasoning = 1},
                      AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"kept"_s}));
        QVERIFY(stage.exec(u"UPDATE questions SET description='d', judge_question=1, model='m', temperature=0.5, "
                           "search_enabled=0, ask_when='never', depends_on_question_id=7, depends_on_answer='x', "
                           "serial=4"_s));
        QVERIFY(stage.call("loadQuestions"));
        const QString others =
            u"SELECT question_id, order_num, description, judge_question, model, temperature, "
            "search_enabled, ask_when, depends_on_question_id, depends_on_answer, serial, created_at "
            "FROM questions"_s;
        const Rows before = stage.rows(others);
        QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) {
            form.prompt->setPlainText(prompt);
            form.type->setCurrentText(u"Numeric"_s);
            form.reasoning()->click();
            QVERIFY(form.addLabel(u"B"_s));
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT prompt, answer_type, labels, reasoning_required FROM questions"_s),
                 Rows({{prompt, u"numeric"_s, u"[\"A\",\"B\"]"_s, 0}}));
        QCOMPARE(stage.rows(others), before);
        QCOMPARE(stage.column(u"SELECT text_answer FROM responses WHERE question_id=1"_s), QStringList(u"kept"_s));
        QVERIFY(titles(resultsTable(stage)).contains(prompt));
        QVERIFY(
            editQuestion(stage, 0, [&](const QuestionForm &form) { QCOMPARE(form.prompt->toPlainText(), prompt); }));
    }

    void ok_without_a_change_counts_as_one()
    {
        Stage stage;
        QVERIFY(listQuestion(stage, {.prompt = u"Which?"_s, .type = u"ranking"_s, .labels = u"[\"A\"]"_s}));
        const Rows before = questionRows(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) { form.accept(); }));
        QCOMPARE(questionRows(stage), before);
        QCOMPARE(stage.count(u"questions WHERE modified_at > '2001-02-03 04:05:06'"_s), 1);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_dialog_that_is_given_up_leaves_no_trace_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<FormAct>("leave");
        const FormAct cancel = [](const QuestionForm &form) { form.press(u"Cancel"_s); };
        const FormAct close = [](const QuestionForm &form) { form.dialog->close(); };
        const FormAct escape = [](const QuestionForm &form) { QTest::keyClick(form.dialog, Qt::Key_Escape); };
        QTest::newRow("new, cancelled") << -1 << cancel;
        QTest::newRow("existing, cancelled") << 0 << cancel;
        QTest::newRow("existing, closed") << 0 << close;
        QTest::newRow("existing, left by Escape") << 0 << escape;
    }
    void a_dialog_that_is_given_up_leaves_no_trace()
    {
        QFETCH(const int, row);
        QFETCH(const FormAct, leave);
        Stage stage;
        QVERIFY(listQuestion(stage, {.prompt = u"Which?"_s, .type = u"Option?"_s, .labels = u"damaged"_s}));
        const Rows before = stage.rows(u"SELECT * FROM questions"_s);
        QVERIFY(editQuestion(stage, row, [&](const QuestionForm &form) {
            form.prompt->setPlainText(u"Changed"_s);
            form.type->setCurrentText(u"Text"_s);
            QVERIFY(form.addLabel(u"A"_s));
            leave(form);
            QVERIFY(!form.dialog->isVisible());
        }));
        QCOMPARE(stage.rows(u"SELECT * FROM questions"_s), before);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void test_mode_enters_a_new_question_without_a_dialog()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 1));
        Stage::setTestMode(true);
        QVERIFY(asksNothing([&] {
            press(stage, u"Add"_s);
            stage.call("editQuestion", 2);
        }));
        const QVariantList entered{u"Test question?"_s, u"text"_s, u"none"_s, 0, 0, u"always"_s, 1};
        QCOMPARE(questionRows(stage).mid(1), Rows({QVariantList{2} + entered, QVariantList{3} + entered}));
    }

    void test_mode_keeps_the_dialog_of_a_question_off_the_screen()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 1));
        Stage::setTestMode(true);
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            QVERIFY(form.dialog->testAttribute(Qt::WA_DontShowOnScreen));
            QCOMPARE(form.prompt->toPlainText(), u"A"_s);
            form.prompt->setPlainText(u"B"_s);
            form.accept();
        }));
        QCOMPARE(numbering(stage), u"1B"_s);
    }

    void double_click_opens_the_dialog_and_then_the_cell()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        QVERIFY(showQuestions(stage));
        QTableView *view = questionView(stage);
        const QModelIndex cell = questionCell(stage, 1, u"ask_when"_s);
        view->scrollTo(cell);
        const Modal modal(inQuestionForm([&](const QuestionForm &form) {
            QCOMPARE(form.prompt->toPlainText(), u"B"_s);
            QVERIFY(view->findChild<QLineEdit *>() == nullptr);
            form.press(u"Cancel"_s);
        }));
        const QPoint position = view->visualRect(cell).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, position);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, position);
        QVERIFY(modal.wasAnswered());
        const auto *editor = qobject_cast<QLineEdit *>(view->indexWidget(cell));
        QVERIFY(editor != nullptr);
        QCOMPARE(editor->text(), u"always"_s);
    }
};

ORRINET_TEST(TestQuestionEditor)
#include "tst_questioneditor.moc"

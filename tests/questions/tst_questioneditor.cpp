// The question dialog: its form, what it takes from a question, and what it stores.

#include "tests/questions/questionform.h"

#include <QApplication>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// All of a question but its identity and its times.
static Rows questions(Stage &stage)
{
    return stage.rows(u"SELECT order_num, prompt, answer_type, labels, reasoning_required, judge_question, ask_when, "
                      "serial FROM questions ORDER BY question_id"_s);
}

class TestQuestionEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_the_form_stand_in_their_order();
    void dialog_has_no_title_and_is_gone_when_it_is_closed();
    void new_question_starts_as_an_option_with_reasoning();
    void no_row_of_the_list_means_a_new_question_data();
    void no_row_of_the_list_means_a_new_question();
    void row_of_the_list_decides_which_question_is_opened();
    void ok_changes_the_stored_columns_alone();
    void ok_without_a_change_counts_as_one();
    void prompt_is_stored_as_it_stands_data();
    void prompt_is_stored_as_it_stands();
    void a_dialog_that_is_given_up_leaves_no_trace_data();
    void a_dialog_that_is_given_up_leaves_no_trace();
    void a_failing_statement_is_not_seen();
    void test_mode_enters_a_new_question_without_a_dialog();
    void test_mode_keeps_the_dialog_of_a_question_off_the_screen();
    void double_click_opens_the_dialog_and_then_the_cell();
};

void TestQuestionEditor::rows_of_the_form_stand_in_their_order()
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
                                   u"Labels|"_s + QString::fromLatin1(form.section->metaObject()->className()) + u'|',
                                   u"-|QCheckBox|Provide reasoning"_s,
                                   u"-|QCheckBox|Adjudicated Question"_s,
                                   u"-|QCheckBox|Allow web search first"_s,
                                   u"Ask|QComboBox|"_s,
                                   u"-|row|"_s,
                                   u"-|QDialogButtonBox|"_s};
        QCOMPARE(rows, expected);
        QCOMPARE(QuestionForm::texts(form.type), QStringList({u"Option"_s, u"Multiple Choice"_s, u"Text"_s,
                                                              u"Numeric"_s, u"Likert Scale"_s, u"Rank Choices"_s}));
        QCOMPARE(QuestionForm::texts(form.ask), QStringList({u"always"_s, u"when the answer to question"_s}));
        QVERIFY(!form.type->isEditable());
        QCOMPARE(form.prompt->minimumHeight(), 80);
        const auto *buttons = form.dialog->findChild<QDialogButtonBox *>();
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    }));
}

void TestQuestionEditor::dialog_has_no_title_and_is_gone_when_it_is_closed()
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

void TestQuestionEditor::new_question_starts_as_an_option_with_reasoning()
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
    QCOMPARE(questions(stage), Rows({{1, u""_s, u"single_choice"_s, u"[]"_s, 1, 0, u"always"_s, 1}}));
    QVERIFY(stage.asksBeforeClosing());
}

void TestQuestionEditor::no_row_of_the_list_means_a_new_question_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("before the first") << -1;
    QTest::newRow("far before") << -7;
    QTest::newRow("behind the last") << 2;
    QTest::newRow("far behind") << 99;
}

void TestQuestionEditor::no_row_of_the_list_means_a_new_question()
{
    QFETCH(const int, row);
    Stage stage;
    QVERIFY(enterQuestions(stage, 2));
    QVERIFY(editQuestion(stage, row, [](const QuestionForm &form) {
        QCOMPARE(form.prompt->toPlainText(), QString());
        form.prompt->setPlainText(u"C"_s);
        form.accept();
    }));
    QCOMPARE(numbering(stage), u"1A 2B 3C"_s);
}

void TestQuestionEditor::row_of_the_list_decides_which_question_is_opened()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 3));
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

void TestQuestionEditor::ok_changes_the_stored_columns_alone()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"ranking"_s, u"[\"A\"]"_s));
    QVERIFY(stage.exec(u"UPDATE questions SET description='d', judge_question=1, model='m', temperature=0.5, "
                       "search_enabled=0, ask_when='never', depends_on_question_id=7, depends_on_answer='x', "
                       "serial=4"_s));
    QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer) VALUES ('p', 1, 'kept')"_s));
    QVERIFY(stage.call("loadQuestions"));
    const QString others = u"SELECT question_id, order_num, description, judge_question, model, temperature, "
                           "search_enabled, ask_when, depends_on_question_id, depends_on_answer, serial, created_at "
                           "FROM questions"_s;
    const Rows before = stage.rows(others);
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        form.prompt->setPlainText(u"How many?"_s);
        form.type->setCurrentText(u"Numeric"_s);
        form.reasoning()->setChecked(false);
        QVERIFY(form.addLabel(u"B"_s));
        form.accept();
    }));
    QCOMPARE(stage.rows(u"SELECT prompt, answer_type, labels, reasoning_required FROM questions"_s),
             Rows({{u"How many?"_s, u"numeric"_s, u"[\"A\",\"B\"]"_s, 0}}));
    QCOMPARE(stage.rows(others), before);
    QCOMPARE(stage.value(u"SELECT text_answer FROM responses WHERE question_id=1"_s), QVariant(u"kept"_s));
    QVERIFY(gridTitles(stage).contains(u"How many?"_s));
}

void TestQuestionEditor::ok_without_a_change_counts_as_one()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"ranking"_s, u"[\"A\"]"_s));
    const Rows before = questions(stage);
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) { form.accept(); }));
    QCOMPARE(questions(stage), before);
    QVERIFY(stage.value(u"SELECT modified_at FROM questions"_s) != QVariant(u"2001-02-03 04:05:06"_s));
    QVERIFY(stage.asksBeforeClosing());
}

void TestQuestionEditor::prompt_is_stored_as_it_stands_data()
{
    QTest::addColumn<QString>("prompt");
    QTest::newRow("empty") << u""_s;
    QTest::newRow("lines") << u"One\n\nTwo\n"_s;
    QTest::newRow("white space") << u"  "_s;
    QTest::newRow("markup and quotes") << u"<b>'\"?</b>"_s;
}

void TestQuestionEditor::prompt_is_stored_as_it_stands()
{
    QFETCH(const QString, prompt);
    Stage stage;
    QVERIFY(enterQuestion(stage, u"text"_s));
    QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) {
        form.prompt->setPlainText(prompt);
        form.accept();
    }));
    QCOMPARE(stage.value(u"SELECT prompt FROM questions"_s), QVariant(prompt));
    QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) { QCOMPARE(form.prompt->toPlainText(), prompt); }));
}

using Leave = void (*)(const QuestionForm &form);
Q_DECLARE_METATYPE(Leave)

void TestQuestionEditor::a_dialog_that_is_given_up_leaves_no_trace_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<Leave>("leave");
    const Leave cancel = [](const QuestionForm &form) { form.press(u"Cancel"_s); };
    const Leave close = [](const QuestionForm &form) { form.dialog->close(); };
    const Leave escape = [](const QuestionForm &form) { QTest::keyClick(form.dialog, Qt::Key_Escape); };
    QTest::newRow("new, cancelled") << -1 << cancel;
    QTest::newRow("new, closed") << -1 << close;
    QTest::newRow("new, left by Escape") << -1 << escape;
    QTest::newRow("existing, cancelled") << 0 << cancel;
    QTest::newRow("existing, closed") << 0 << close;
    QTest::newRow("existing, left by Escape") << 0 << escape;
}

void TestQuestionEditor::a_dialog_that_is_given_up_leaves_no_trace()
{
    QFETCH(const int, row);
    QFETCH(const Leave, leave);
    Stage stage;
    QVERIFY(enterQuestion(stage, u"Option?"_s, u"damaged"_s));
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

void TestQuestionEditor::a_failing_statement_is_not_seen()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 1));
    QVERIFY(forbid(stage, u"UPDATE ON questions"_s));
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        form.prompt->setPlainText(u"B"_s);
        form.accept();
    }));
    QCOMPARE(numbering(stage), u"1A"_s);
    QVERIFY(stage.asksBeforeClosing());
}

void TestQuestionEditor::test_mode_enters_a_new_question_without_a_dialog()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 1));
    Stage::setTestMode(true);
    const Modal modal([](QWidget *window) { window->close(); });
    press(stage, u"Add"_s);
    QVERIFY(stage.call("editQuestion", 2));
    // A dialog would have run its loop, in which the answer comes.
    QVERIFY(!modal.wasAnswered());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    const QVariantList entered{u"Test question?"_s, u"text"_s, QVariant(QMetaType::fromType<QString>()), 0, 0,
                               u"always"_s,         1};
    QCOMPARE(questions(stage).mid(1), Rows({QVariantList{2} + entered, QVariantList{3} + entered}));
    QVERIFY(stage.value(u"SELECT labels IS NULL FROM questions WHERE order_num = 2"_s).toBool());
}

void TestQuestionEditor::test_mode_keeps_the_dialog_of_a_question_off_the_screen()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 1));
    Stage::setTestMode(true);
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        QVERIFY(form.dialog->testAttribute(Qt::WA_DontShowOnScreen));
        QCOMPARE(form.prompt->toPlainText(), u"A"_s);
        form.prompt->setPlainText(u"B"_s);
        form.accept();
    }));
    QCOMPARE(numbering(stage), u"1B"_s);
}

void TestQuestionEditor::double_click_opens_the_dialog_and_then_the_cell()
{
    Stage stage;
    QVERIFY(enterQuestions(stage, 2));
    stage.find<QTabWidget>(QString())->setCurrentWidget(stage.page(u"Questions"_s));
    stage.window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.window()));
    QTableView *view = questionView(stage);
    const QModelIndex cell = questionCell(stage, 1, u"ask_when"_s);
    view->scrollTo(cell);
    const Modal modal(inQuestionForm([&](const QuestionForm &form) {
        QCOMPARE(form.prompt->toPlainText(), u"B"_s);
        QVERIFY(view->findChild<QLineEdit *>() == nullptr);
    }));
    const QPoint position = view->visualRect(cell).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, position);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, position);
    QVERIFY(modal.wasAnswered());
    QVERIFY(view->findChild<QLineEdit *>() != nullptr);
    QVERIFY(view->isPersistentEditorOpen(cell) || view->indexWidget(cell) != nullptr);
}

QTEST_MAIN(TestQuestionEditor)
#include "tst_questioneditor.moc"

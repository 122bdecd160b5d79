// The label list of the question dialog: how it is filled and stored, its buttons, and when it lets the dialog be
// accepted.

#include "tests/questions/questionform.h"

#include <QBoxLayout>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Act = void (*)(const QuestionForm &form);
Q_DECLARE_METATYPE(Act)

static bool editInPlace(const QuestionForm &form, int row, const QString &text)
{
    form.list->setCurrentRow(row);
    QTest::keyClick(form.list, Qt::Key_F2);
    auto *editor = form.list->findChild<QLineEdit *>();
    if (editor == nullptr)
        return false;
    editor->selectAll();
    QTest::keyClick(editor, Qt::Key_Delete);
    QTest::keyClicks(editor, text);
    QSignalSpy changed(form.list, &QListWidget::itemChanged);
    QTest::keyClick(editor, Qt::Key_Return);
    return !changed.isEmpty() || changed.wait();
}

/// Works in the dialog of a question with these labels.
template<typename Work>
static bool withLabels(Stage &stage, const QString &labels, Work work)
{
    return enterQuestion(stage, u"single_choice"_s, labels) && editQuestion(stage, 0, work);
}

class TestLabelSection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stored_labels_fill_the_list_and_are_stored_in_compact_form_data();
    void stored_labels_fill_the_list_and_are_stored_in_compact_form();
    void parts_stand_in_their_order();
    void add_asks_for_a_label();
    void add_takes_any_text_but_the_empty_one_data();
    void add_takes_any_text_but_the_empty_one();
    void remove_takes_the_current_label_data();
    void remove_takes_the_current_label();
    void buttons_move_the_current_label_within_the_list_data();
    void buttons_move_the_current_label_within_the_list();
    void moved_label_can_be_moved_on();
    void order_on_the_screen_is_the_order_stored();
    void labels_are_edited_in_place_data();
    void labels_are_edited_in_place();
    void an_added_label_is_edited_in_place_too();
    void scale_needs_two_labels();
    void only_a_scale_needs_labels_data();
    void only_a_scale_needs_labels();
    void ok_is_looked_at_again_only_after_some_actions_data();
    void ok_is_looked_at_again_only_after_some_actions();
};

void TestLabelSection::stored_labels_fill_the_list_and_are_stored_in_compact_form_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QString>("storedAgain");
    const QStringList none;

    QTest::newRow("two") << QVariant(u"[\"Yes\",\"No\"]"_s) << QStringList{u"Yes"_s, u"No"_s} << u"[\"Yes\",\"No\"]"_s;
    QTest::newRow("white space between") << QVariant(u" [ \"b\" ,\n\"a\" ]\n"_s) << QStringList{u"b"_s, u"a"_s}
                                         << u"[\"b\",\"a\"]"_s;
    QTest::newRow("equal and empty") << QVariant(u"[\"\",\"a\",\"a\"]"_s) << QStringList{u""_s, u"a"_s, u"a"_s}
                                     << u"[\"\",\"a\",\"a\"]"_s;
    QTest::newRow("escapes") << QVariant(u"[\"\\\"q\\\"\",\"b\\\\s\",\"1\\n2\",\"\\u00e4/\"]"_s)
                             << QStringList{u"\"q\""_s, u"b\\s"_s, u"1\n2"_s, u"ä/"_s}
                             << u"[\"\\\"q\\\"\",\"b\\\\s\",\"1\\n2\",\"ä/\"]"_s;
    QTest::newRow("no strings") << QVariant(u"[1,2]"_s) << QStringList{u""_s, u""_s} << u"[\"\",\"\"]"_s;
    QTest::newRow("some strings") << QVariant(u"[\"a\",null,[\"b\"],true,\"c\"]"_s)
                                  << QStringList{u"a"_s, u""_s, u""_s, u""_s, u"c"_s}
                                  << u"[\"a\",\"\",\"\",\"\",\"c\"]"_s;
    QTest::newRow("empty array") << QVariant(u"[]"_s) << none << u"[]"_s;
    QTest::newRow("null") << QVariant() << none << u"[]"_s;
    QTest::newRow("empty text") << QVariant(u""_s) << none << u"[]"_s;
    QTest::newRow("damaged") << QVariant(u"[\"Yes\",\"No"_s) << none << u"[]"_s;
    QTest::newRow("object") << QVariant(u"{\"a\":[\"b\"]}"_s) << none << u"[]"_s;
    QTest::newRow("word") << QVariant(u"Yes, No"_s) << none << u"[]"_s;
    QTest::newRow("number") << QVariant(12) << none << u"[]"_s;
}

void TestLabelSection::stored_labels_fill_the_list_and_are_stored_in_compact_form()
{
    QFETCH(const QVariant, stored);
    QFETCH(const QStringList, shown);
    Stage stage;
    QVERIFY(enterQuestion(stage, u"ranking"_s, stored));
    QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) {
        QCOMPARE(form.labels(), shown);
        form.accept();
    }));
    QTEST(storedLabels(stage).toString(), "storedAgain");
}

void TestLabelSection::parts_stand_in_their_order()
{
    Stage stage;
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        const auto *rows = qobject_cast<QVBoxLayout *>(form.section->layout());
        QVERIFY(rows != nullptr);
        QCOMPARE(rows->count(), 2);
        const auto *first = qobject_cast<QHBoxLayout *>(rows->itemAt(0)->layout());
        const auto *second = qobject_cast<QHBoxLayout *>(rows->itemAt(1)->layout());
        QVERIFY(first != nullptr && second != nullptr);

        QCOMPARE(first->count(), 3);
        const QLayout *left = first->itemAt(0)->layout();
        const QLayout *right = first->itemAt(2)->layout();
        QVERIFY(qobject_cast<const QVBoxLayout *>(left) != nullptr);
        QVERIFY(qobject_cast<const QVBoxLayout *>(right) != nullptr);
        QCOMPARE(left->itemAt(0)->widget(), form.label(u"Far left"_s));
        QVERIFY(left->itemAt(1)->spacerItem() != nullptr);
        QCOMPARE(first->itemAt(1)->widget(), form.list);
        QCOMPARE(form.list->selectionMode(), QAbstractItemView::SingleSelection);
        QVERIFY(right->itemAt(0)->spacerItem() != nullptr);
        QCOMPARE(right->itemAt(1)->widget(), form.label(u"Far right"_s));

        QStringList captions;
        for (int place = 0; place < second->count(); ++place)
            captions.append(qobject_cast<QPushButton *>(second->itemAt(place)->widget())->text());
        QCOMPARE(captions, QStringList({u"Add"_s, u"Remove"_s, u"Up"_s, u"Down"_s}));
    }));
}

void TestLabelSection::add_asks_for_a_label()
{
    Stage stage;
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        const Modal question([&form](QWidget *window) {
            auto *input = qobject_cast<QInputDialog *>(window);
            QVERIFY(input != nullptr);
            QCOMPARE(input->windowTitle(), u"Add Label"_s);
            QCOMPARE(input->labelText(), u"Label:"_s);
            QCOMPARE(input->textValue(), QString());
            QCOMPARE(input->textEchoMode(), QLineEdit::Normal);
            QCOMPARE(input->parentWidget(), form.dialog);
            input->reject();
        });
        form.press(u"Add"_s);
        QVERIFY(question.wasAnswered());
    }));
}

void TestLabelSection::add_takes_any_text_but_the_empty_one_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<bool>("added");

    QTest::newRow("word") << u"C"_s << true << true;
    QTest::newRow("duplicate") << u"A"_s << true << true;
    QTest::newRow("white space alone") << u"  "_s << true << true;
    QTest::newRow("white space around") << u" C "_s << true << true;
    QTest::newRow("other letters") << u"größer"_s << true << true;
    QTest::newRow("empty") << u""_s << true << false;
    QTest::newRow("cancelled") << u"C"_s << false << false;
    QTest::newRow("cancelled while empty") << u""_s << false << false;
}

void TestLabelSection::add_takes_any_text_but_the_empty_one()
{
    QFETCH(const QString, text);
    QFETCH(const bool, accepted);
    QFETCH(const bool, added);
    Stage stage;
    const QStringList before{u"A"_s, u"B"_s};
    const QStringList expected = added ? before + QStringList{text} : before;
    QVERIFY(withLabels(stage, u"[\"A\",\"B\"]"_s, [&](const QuestionForm &form) {
        form.list->setCurrentRow(0);
        QVERIFY(form.addLabel(text, accepted));
        QCOMPARE(form.labels(), expected);
        QCOMPARE(form.list->currentRow(), added ? 2 : 0);
        form.accept();
    }));
    QCOMPARE(storedLabels(stage), QVariant(u"[\"%1\"]"_s.arg(expected.join(u"\",\""_s))));
}

void TestLabelSection::remove_takes_the_current_label_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<QString>("stored");

    QTest::newRow("first") << 0 << u"[\"B\",\"C\"]"_s;
    QTest::newRow("middle") << 1 << u"[\"A\",\"C\"]"_s;
    QTest::newRow("last") << 2 << u"[\"A\",\"B\"]"_s;
    QTest::newRow("none current") << -1 << u"[\"A\",\"B\",\"C\"]"_s;
}

void TestLabelSection::remove_takes_the_current_label()
{
    QFETCH(const int, current);
    Stage stage;
    QVERIFY(withLabels(stage, u"[\"A\",\"B\",\"C\"]"_s, [&](const QuestionForm &form) {
        form.list->setCurrentRow(current);
        QVERIFY(form.press(u"Remove"_s));
        form.accept();
    }));
    QTEST(storedLabels(stage).toString(), "stored");
}

void TestLabelSection::buttons_move_the_current_label_within_the_list_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("current");
    QTest::addColumn<QString>("order");
    QTest::addColumn<int>("currentAfter");

    QTest::newRow("up from the top") << u"Up"_s << 0 << u"ABC"_s << 0;
    QTest::newRow("up from the middle") << u"Up"_s << 1 << u"BAC"_s << 0;
    QTest::newRow("up from the bottom") << u"Up"_s << 2 << u"ACB"_s << 1;
    QTest::newRow("up with none current") << u"Up"_s << -1 << u"ABC"_s << -1;
    QTest::newRow("down from the top") << u"Down"_s << 0 << u"BAC"_s << 1;
    QTest::newRow("down from the middle") << u"Down"_s << 1 << u"ACB"_s << 2;
    QTest::newRow("down from the bottom") << u"Down"_s << 2 << u"ABC"_s << 2;
    QTest::newRow("down with none current") << u"Down"_s << -1 << u"ABC"_s << -1;
}

void TestLabelSection::buttons_move_the_current_label_within_the_list()
{
    QFETCH(const QString, button);
    QFETCH(const int, current);
    Stage stage;
    QVERIFY(withLabels(stage, u"[\"A\",\"B\",\"C\"]"_s, [&](const QuestionForm &form) {
        form.list->setCurrentRow(current);
        QVERIFY(form.press(button));
        QTEST(form.labels().join(QString()), "order");
        QTEST(form.list->currentRow(), "currentAfter");
    }));
}

void TestLabelSection::moved_label_can_be_moved_on()
{
    Stage stage;
    QVERIFY(withLabels(stage, u"[\"A\",\"B\",\"C\",\"D\"]"_s, [](const QuestionForm &form) {
        form.list->setCurrentRow(3);
        for (int time = 0; time < 4; ++time)
            form.press(u"Up"_s);
        QCOMPARE(form.labels().join(QString()), u"DABC"_s);
        form.press(u"Down"_s);
        form.press(u"Down"_s);
        QCOMPARE(form.labels().join(QString()), u"ABDC"_s);
    }));
}

void TestLabelSection::order_on_the_screen_is_the_order_stored()
{
    Stage stage;
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        QVERIFY(form.addLabel(u"first"_s));
        QVERIFY(form.addLabel(u"second"_s));
        form.accept();
    }));
    QCOMPARE(storedLabels(stage), QVariant(u"[\"first\",\"second\"]"_s));
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        QCOMPARE(form.labels(), QStringList({u"first"_s, u"second"_s}));
        form.list->setCurrentRow(1);
        form.press(u"Up"_s);
        form.accept();
    }));
    QCOMPARE(storedLabels(stage), QVariant(u"[\"second\",\"first\"]"_s));
}

void TestLabelSection::labels_are_edited_in_place_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("another word") << u"C"_s;
    QTest::newRow("emptied") << u""_s;
    QTest::newRow("same as another") << u"A"_s;
}

void TestLabelSection::labels_are_edited_in_place()
{
    QFETCH(const QString, text);
    Stage stage;
    QVERIFY(withLabels(stage, u"[\"A\",\"B\"]"_s, [&](const QuestionForm &form) {
        QCOMPARE(form.list->editTriggers(), QListWidget().editTriggers());
        QVERIFY(editInPlace(form, 1, text));
        form.accept();
    }));
    QCOMPARE(storedLabels(stage), QVariant(u"[\"A\",\"%1\"]"_s.arg(text)));
}

void TestLabelSection::an_added_label_is_edited_in_place_too()
{
    Stage stage;
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        QVERIFY(form.addLabel(u"A"_s));
        QVERIFY(editInPlace(form, 0, u"B"_s));
        form.accept();
    }));
    QCOMPARE(storedLabels(stage), QVariant(u"[\"B\"]"_s));
}

void TestLabelSection::scale_needs_two_labels()
{
    Stage stage;
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        form.type->setCurrentText(u"Likert Scale"_s);
        QVERIFY(!form.ok->isEnabled());
        QVERIFY(form.addLabel(u"never"_s));
        QVERIFY(!form.ok->isEnabled());
        QVERIFY(form.addLabel(u"always"_s));
        QVERIFY(form.ok->isEnabled());
        form.press(u"Remove"_s);
        QVERIFY(!form.ok->isEnabled());
        form.type->setCurrentText(u"Option"_s);
        QVERIFY(form.ok->isEnabled());
        form.type->setCurrentText(u"Likert Scale"_s);
        QVERIFY(!form.ok->isEnabled());
        form.type->setCurrentText(u"Option"_s);
        form.accept();
    }));
    QCOMPARE(storedLabels(stage), QVariant(u"[\"never\"]"_s));
}

void TestLabelSection::only_a_scale_needs_labels_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::newRow("single_choice") << true;
    QTest::newRow("multi_choice") << true;
    QTest::newRow("text") << true;
    QTest::newRow("numeric") << true;
    QTest::newRow("likert") << false;
    QTest::newRow("ranking") << true;
}

void TestLabelSection::only_a_scale_needs_labels()
{
    QFETCH(const bool, enabled);
    Stage stage;
    const QString type = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(enterQuestion(stage, type));
    QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) {
        QCOMPARE(form.ok->isEnabled(), enabled);
        form.accept();
    }));
    // A button that is not enabled can't be pressed: the question stays as it was.
    QCOMPARE(storedLabels(stage), enabled ? QVariant(u"[]"_s) : QVariant(QMetaType::fromType<QString>()));
    QCOMPARE(stage.value(u"SELECT answer_type FROM questions"_s), QVariant(type));
}

void TestLabelSection::ok_is_looked_at_again_only_after_some_actions_data()
{
    QTest::addColumn<Act>("act");
    QTest::addColumn<bool>("lookedAt");
    const auto add = [](const char *name, Act act, bool lookedAt) { QTest::newRow(name) << act << lookedAt; };

    add("add", [](const QuestionForm &form) { QVERIFY(form.addLabel(u"C"_s)); }, true);
    add("remove", [](const QuestionForm &form) { form.press(u"Remove"_s); }, true);
    add(
        "remove with none current",
        [](const QuestionForm &form) {
            form.list->setCurrentRow(-1);
            form.press(u"Remove"_s);
        },
        true);
    add("change of the type", [](const QuestionForm &form) { form.type->setCurrentText(u"Numeric"_s); }, true);
    add("cancelled add", [](const QuestionForm &form) { QVERIFY(form.addLabel(u"C"_s, false)); }, false);
    add("empty add", [](const QuestionForm &form) { QVERIFY(form.addLabel(QString())); }, false);
    add("up", [](const QuestionForm &form) { form.press(u"Up"_s); }, false);
    add(
        "down",
        [](const QuestionForm &form) {
            form.list->setCurrentRow(0);
            form.press(u"Down"_s);
        },
        false);
    add("edit in place", [](const QuestionForm &form) { QVERIFY(editInPlace(form, 0, u"C"_s)); }, false);
    add("same type again", [](const QuestionForm &form) { form.type->setCurrentText(u"Option"_s); }, false);
    add("reasoning", [](const QuestionForm &form) { form.reasoning()->toggle(); }, false);
    add("condition", [](const QuestionForm &form) { form.ask->setCurrentIndex(1); }, false);
}

void TestLabelSection::ok_is_looked_at_again_only_after_some_actions()
{
    QFETCH(const Act, act);
    QFETCH(const bool, lookedAt);
    Stage stage;
    QVERIFY(withLabels(stage, u"[\"A\",\"B\"]"_s, [&](const QuestionForm &form) {
        form.list->setCurrentRow(1);
        // A look at it would enable the button again, since this question needs no labels.
        form.ok->setEnabled(false);
        act(form);
        QCOMPARE(form.ok->isEnabled(), lookedAt);
    }));
}

QTEST_MAIN(TestLabelSection)
#include "tst_labelsection.moc"

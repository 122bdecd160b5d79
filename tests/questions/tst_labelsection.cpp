// The label list of the question dialog: how it is filled and stored, its buttons, and when it lets the dialog be
// accepted.

#include "tests/questions/questionform.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QBoxLayout>
#include <QInputDialog>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

static bool editLabelInPlace(const QuestionForm &form, int row, const QString &text)
{
    form.list->setCurrentRow(row);
    QTest::keyClick(form.list, Qt::Key_F2);
    auto *editor = qobject_cast<QLineEdit *>(form.list->indexWidget(form.list->currentIndex()));
    if (editor == nullptr)
        return false;
    editor->selectAll();
    QTest::keyClick(editor, Qt::Key_Delete);
    QTest::keyClicks(editor, text);
    QSignalSpy changed(form.list, &QListWidget::itemChanged);
    QTest::keyClick(editor, Qt::Key_Return);
    return !changed.isEmpty() || changed.wait(patience);
}

/// Works in the dialog of a question with these labels.
template<typename Work>
static bool withLabels(Stage &stage, const QString &labels, Work work)
{
    return listQuestion(stage, {.type = u"single_choice"_s, .labels = labels}) && editQuestion(stage, 0, work);
}

class TestLabelSection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stored_labels_fill_the_list_and_are_stored_in_compact_form_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QString>("storedAgain");

        QTest::newRow("array") << QVariant(u" [ \"b\\\\s\" ,\n\"\\u00e4\", 1, \"\" ]\n"_s)
                               << QStringList{u"b\\s"_s, u"ä"_s, u""_s, u""_s} << u"[\"b\\\\s\",\"ä\",\"\",\"\"]"_s;
        QTest::newRow("damaged") << QVariant(u"[\"Yes\",\"No"_s) << QStringList() << u"[]"_s;
        QTest::newRow("null") << QVariant() << QStringList() << u"[]"_s;
        QTest::newRow("number") << QVariant(12) << QStringList() << u"[]"_s;
    }
    void stored_labels_fill_the_list_and_are_stored_in_compact_form()
    {
        QFETCH(const QVariant, stored);
        QFETCH(const QStringList, shown);
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = u"ranking"_s, .labels = stored}));
        QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) {
            QCOMPARE(form.labels(), shown);
            form.accept();
        }));
        QTEST(storedLabels(stage).toString(), "storedAgain");
    }

    void parts_stand_in_their_order()
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

    void add_asks_for_a_label()
    {
        Stage stage;
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            const Modal question([&form](QWidget *window) {
                const auto *input = qobject_cast<QInputDialog *>(window);
                QVERIFY(input != nullptr);
                QCOMPARE(input->windowTitle(), u"Add Label"_s);
                QCOMPARE(input->labelText(), u"Label:"_s);
                QCOMPARE(input->textValue(), QString());
                QCOMPARE(input->textEchoMode(), QLineEdit::Normal);
                QCOMPARE(input->parentWidget(), form.dialog);
            });
            QVERIFY(form.press(u"Add"_s));
            QVERIFY(question.wasAnswered());
        }));
    }

    void add_takes_any_text_but_the_empty_one_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<bool>("added");

        QTest::newRow("word") << u"C"_s << true << true;
        QTest::newRow("duplicate") << u"A"_s << true << true;
        QTest::newRow("white space alone") << u"  "_s << true << true;
        QTest::newRow("white space around") << u" größer "_s << true << true;
        QTest::newRow("empty") << u""_s << true << false;
        QTest::newRow("cancelled") << u"C"_s << false << false;
    }
    void add_takes_any_text_but_the_empty_one()
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

    void buttons_act_on_the_current_label_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("current");
        QTest::addColumn<QString>("order");
        QTest::addColumn<QString>("currentAfter");

        QTest::newRow("remove the first") << u"Remove"_s << 0 << u"BC"_s << u"B"_s;
        QTest::newRow("remove from the middle") << u"Remove"_s << 1 << u"AC"_s << u"C"_s;
        QTest::newRow("remove the last") << u"Remove"_s << 2 << u"AB"_s << u"B"_s;
        QTest::newRow("remove with none current") << u"Remove"_s << -1 << u"ABC"_s << QString();
        QTest::newRow("up from the top") << u"Up"_s << 0 << u"ABC"_s << u"A"_s;
        QTest::newRow("up from the middle") << u"Up"_s << 1 << u"BAC"_s << u"B"_s;
        QTest::newRow("up from the bottom") << u"Up"_s << 2 << u"ACB"_s << u"C"_s;
        QTest::newRow("up with none current") << u"Up"_s << -1 << u"ABC"_s << QString();
        QTest::newRow("down from the top") << u"Down"_s << 0 << u"BAC"_s << u"A"_s;
        QTest::newRow("down from the middle") << u"Down"_s << 1 << u"ACB"_s << u"B"_s;
        QTest::newRow("down from the bottom") << u"Down"_s << 2 << u"ABC"_s << u"C"_s;
        QTest::newRow("down with none current") << u"Down"_s << -1 << u"ABC"_s << QString();
    }
    void buttons_act_on_the_current_label()
    {
        QFETCH(const QString, button);
        QFETCH(const int, current);
        Stage stage;
        QVERIFY(withLabels(stage, u"[\"A\",\"B\",\"C\"]"_s, [&](const QuestionForm &form) {
            form.list->setCurrentRow(current);
            QVERIFY(form.press(button));
            QTEST(form.labels().join(QString()), "order");
            const QListWidgetItem *item = form.list->currentItem();
            QTEST(item != nullptr ? item->text() : QString(), "currentAfter");
        }));
    }

    void order_on_the_screen_is_the_order_stored()
    {
        Stage stage;
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            for (const auto &label : {u"A"_s, u"B"_s, u"C"_s, u"D"_s})
                QVERIFY(form.addLabel(label));
            // A label that was moved is the current one, and can be moved on.
            for (int time = 0; time < 4; ++time)
                QVERIFY(form.press(u"Up"_s));
            QCOMPARE(form.labels().join(QString()), u"DABC"_s);
            form.accept();
        }));
        QCOMPARE(storedLabels(stage), QVariant(u"[\"D\",\"A\",\"B\",\"C\"]"_s));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            form.list->setCurrentRow(0);
            for (int time = 0; time < 2; ++time)
                QVERIFY(form.press(u"Down"_s));
            form.list->setCurrentRow(3);
            QVERIFY(form.press(u"Remove"_s));
            form.accept();
        }));
        QCOMPARE(storedLabels(stage), QVariant(u"[\"A\",\"B\",\"D\"]"_s));
    }

    void labels_are_edited_in_place_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("another word") << u"C"_s;
        QTest::newRow("emptied") << u""_s;
        QTest::newRow("same as another") << u"D"_s;
    }
    void labels_are_edited_in_place()
    {
        QFETCH(const QString, text);
        Stage stage;
        QVERIFY(withLabels(stage, u"[\"A\"]"_s, [&](const QuestionForm &form) {
            QCOMPARE(form.list->editTriggers(), QListWidget().editTriggers());
            QVERIFY(form.addLabel(u"B"_s));
            QVERIFY(editLabelInPlace(form, 1, u"D"_s));
            QVERIFY(editLabelInPlace(form, 0, text));
            form.accept();
        }));
        QCOMPARE(storedLabels(stage), QVariant(u"[\"%1\",\"D\"]"_s.arg(text)));
    }

    void scale_needs_two_labels()
    {
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = u"likert"_s, .labels = u"[\"A\"]"_s}));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            form.accept();
            QVERIFY(form.dialog->isVisible());
            form.type->setCurrentText(u"Text"_s);
            QVERIFY(form.ok->isEnabled());
            form.type->setCurrentText(u"Likert Scale"_s);
            QVERIFY(!form.ok->isEnabled());
            QVERIFY(form.addLabel(u"B"_s));
            QVERIFY(form.ok->isEnabled());
            QVERIFY(form.press(u"Remove"_s));
            QVERIFY(!form.ok->isEnabled());
            QVERIFY(form.addLabel(u"C"_s));
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT answer_type, labels FROM questions"_s), Rows({{u"likert"_s, u"[\"A\",\"C\"]"_s}}));
    }

    void ok_is_looked_at_again_only_after_some_actions_data()
    {
        QTest::addColumn<FormAct>("act");
        QTest::addColumn<bool>("lookedAt");
        const auto add = [](const char *name, bool lookedAt, FormAct act) { QTest::newRow(name) << act << lookedAt; };

        add("add", true, [](const QuestionForm &form) { QVERIFY(form.addLabel(u"C"_s)); });
        add("remove", true, [](const QuestionForm &form) { QVERIFY(form.press(u"Remove"_s)); });
        add("remove with none current", true, [](const QuestionForm &form) {
            form.list->setCurrentRow(-1);
            QVERIFY(form.press(u"Remove"_s));
        });
        add("change of the type", true, [](const QuestionForm &form) { form.type->setCurrentText(u"Numeric"_s); });
        add("cancelled add", false, [](const QuestionForm &form) { QVERIFY(form.addLabel(u"C"_s, false)); });
        add("empty add", false, [](const QuestionForm &form) { QVERIFY(form.addLabel(QString())); });
        add("up", false, [](const QuestionForm &form) { QVERIFY(form.press(u"Up"_s)); });
        add("down", false, [](const QuestionForm &form) {
            form.list->setCurrentRow(0);
            QVERIFY(form.press(u"Down"_s));
        });
        add("edit in place", false, [](const QuestionForm &form) { QVERIFY(editLabelInPlace(form, 0, u"C"_s)); });
        add("same type again", false, [](const QuestionForm &form) { form.type->setCurrentText(u"Option"_s); });
        add("reasoning", false, [](const QuestionForm &form) { form.reasoning()->click(); });
        add("condition", false, [](const QuestionForm &form) { form.ask->setCurrentIndex(1); });
    }
    void ok_is_looked_at_again_only_after_some_actions()
    {
        QFETCH(const FormAct, act);
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
};

ORRINET_TEST(TestLabelSection)
#include "tst_labelsection.moc"

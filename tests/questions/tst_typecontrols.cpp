// The type in the question dialog: how it is read and stored, and what it does to the other controls.

#include "tests/questions/questionform.h"
#include "tests/support/testcase.h"

#include <QEvent>
#include <QTest>

using namespace Qt::StringLiterals;

/// Records which controls of a dialog change their state, in the order of the changes.
class ControlChanges : public QObject
{
public:
    void watch(QWidget *widget, const QString &name)
    {
        widget->setObjectName(name);
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject *object, QEvent *event) override
    {
        const bool shown = event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent;
        if (shown || event->type() == QEvent::EnabledChange)
            names.append(object->objectName());
        return false;
    }
    QStringList names;
};

/// Compares the controls with the data row of the type.
static void checkTypeControls(const QuestionForm &form)
{
    QTEST(form.type->currentText(), "display");
    QTEST(form.shows(form.section), "list");
    QTEST(form.shows(form.list), "list");
    QTEST(form.shows(form.label(u"Far left"_s)), "captions");
    QTEST(form.shows(form.label(u"Far right"_s)), "captions");
    QTEST(form.reasoning()->isEnabled(), "reasoning");
    QTEST(form.reasoning()->isChecked(), "reasoning");
    QVERIFY(form.shows(form.label(u"Labels"_s)));
}

class TestTypeControls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void type_is_stored_and_decides_about_the_controls_data()
    {
        QTest::addColumn<QString>("display");
        QTest::addColumn<bool>("list");
        QTest::addColumn<bool>("captions");
        QTest::addColumn<bool>("reasoning");
        QTest::newRow("single_choice") << u"Option"_s << true << false << true;
        QTest::newRow("multi_choice") << u"Multiple Choice"_s << true << false << true;
        QTest::newRow("text") << u"Text"_s << false << false << false;
        QTest::newRow("numeric") << u"Numeric"_s << false << false << true;
        QTest::newRow("likert") << u"Likert Scale"_s << true << true << true;
        QTest::newRow("ranking") << u"Rank Choices"_s << true << false << true;
    }
    void type_is_stored_and_decides_about_the_controls()
    {
        QFETCH(const QString, display);
        const QString stored = QString::fromLatin1(QTest::currentDataTag());
        const bool isScale = stored == "likert"_L1;
        Stage stage;
        for (const auto &from : {u"Numeric"_s, u"Likert Scale"_s}) {
            QVERIFY(editQuestion(stage, -1, [&](const QuestionForm &form) {
                form.type->setCurrentText(from);
                form.type->setCurrentText(display);
                checkTypeControls(form);
                // Only a scale needs labels.
                QCOMPARE(form.ok->isEnabled(), !isScale);
                if (isScale)
                    QVERIFY(form.addLabel(u"A"_s) && form.addLabel(u"B"_s));
                form.accept();
            }));
        }
        // Opened and accepted once more, the question stays what it is.
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            checkTypeControls(form);
            form.accept();
        }));
        const QVariantList row{stored, isScale ? u"[\"A\",\"B\"]"_s : u"[]"_s};
        QCOMPARE(stage.rows(u"SELECT answer_type, labels FROM questions"_s), Rows({row, row}));
    }

    void unknown_type_becomes_an_option_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("unknown word") << QVariant(u"essay"_s);
        QTest::newRow("null") << QVariant();
    }
    void unknown_type_becomes_an_option()
    {
        QFETCH(const QVariant, stored);
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = stored}));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            QCOMPARE(form.type->currentText(), u"Option"_s);
            form.accept();
        }));
        QCOMPARE(stage.value(u"SELECT answer_type FROM questions"_s), QVariant(u"single_choice"_s));
    }

    void controls_follow_a_change_of_the_type_in_their_order()
    {
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = u"text"_s}));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            ControlChanges changes;
            changes.watch(form.section, u"section"_s);
            changes.watch(form.label(u"Far left"_s), u"left"_s);
            changes.watch(form.label(u"Far right"_s), u"right"_s);
            changes.watch(form.reasoning(), u"reasoning"_s);
            changes.watch(form.ok, u"ok"_s);
            form.type->setCurrentText(u"Likert Scale"_s);
            QCOMPARE(changes.names, QStringList({u"section"_s, u"left"_s, u"right"_s, u"reasoning"_s, u"ok"_s}));
        }));
    }

    void reasoning_is_taken_from_the_question_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<bool>("checked");
        QTest::newRow("no") << u"numeric"_s << QVariant(0) << false;
        QTest::newRow("yes") << u"numeric"_s << QVariant(1) << true;
        QTest::newRow("another number") << u"numeric"_s << QVariant(-3) << true;
        QTest::newRow("null") << u"numeric"_s << QVariant() << false;
        QTest::newRow("no number") << u"numeric"_s << QVariant(u"yes"_s) << false;
        QTest::newRow("yes for a text") << u"text"_s << QVariant(1) << false;
    }
    void reasoning_is_taken_from_the_question()
    {
        QFETCH(const QString, type);
        QFETCH(const QVariant, stored);
        QFETCH(const bool, checked);
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = type, .reasoning = stored}));
        QVERIFY(editQuestion(stage, 0, [&](const QuestionForm &form) {
            QCOMPARE(form.reasoning()->isChecked(), checked);
            form.accept();
        }));
        QCOMPARE(stage.value(u"SELECT reasoning_required FROM questions"_s), QVariant(checked ? 1 : 0));
    }

    void text_takes_reasoning_away_for_good()
    {
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = u"ranking"_s, .reasoning = 1}));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            QVERIFY(form.reasoning()->isChecked());
            form.type->setCurrentText(u"Text"_s);
            QVERIFY(!form.reasoning()->isChecked());
            QVERIFY(!form.reasoning()->isEnabled());
            form.type->setCurrentText(u"Numeric"_s);
            QVERIFY(form.reasoning()->isEnabled());
            QVERIFY(!form.reasoning()->isChecked());
            form.accept();
        }));
        QCOMPARE(stage.value(u"SELECT reasoning_required FROM questions"_s), QVariant(0));
    }

    void hidden_labels_are_stored_data()
    {
        QTest::addColumn<QString>("display");
        QTest::newRow("text") << u"Text"_s;
        QTest::newRow("numeric") << u"Numeric"_s;
    }
    void hidden_labels_are_stored()
    {
        QFETCH(const QString, display);
        Stage stage;
        QVERIFY(editQuestion(stage, -1, [&](const QuestionForm &form) {
            QVERIFY(form.addLabel(u"A"_s));
            form.type->setCurrentText(display);
            QVERIFY(!form.shows(form.section));
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT answer_type, labels FROM questions"_s),
                 Rows({{QString::fromLatin1(QTest::currentDataTag()), u"[\"A\"]"_s}}));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            form.type->setCurrentText(u"Option"_s);
            QVERIFY(form.shows(form.section));
            QCOMPARE(form.labels(), QStringList({u"A"_s}));
        }));
    }
};

ORRINET_TEST(TestTypeControls)
#include "tst_typecontrols.moc"

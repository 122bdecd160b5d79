// The persona dialog: its form, which persona it opens, and what it stores.

#include "tests/personas/personaform.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

using Leave = void (*)(const PersonaForm &form);
Q_DECLARE_METATYPE(Leave)

class TestPersonaEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dialog_is_a_form_of_three_fields_and_two_buttons()
    {
        Stage stage;
        QVERIFY(editPersona(stage, -1, [&stage](const PersonaForm &form) {
            QVERIFY(form.dialog->windowTitle().isEmpty());
            QVERIFY(form.dialog->isModal());
            QCOMPARE(form.dialog->parentWidget(), stage.window());
            QCOMPARE(form.layout->rowCount(), 4);
            const QStringList captions{u"Name"_s, u"Description"_s, u"Tags"_s};
            const QWidgetList fields{form.name, form.description, form.tags};
            for (int row = 0; row < 3; ++row) {
                const QWidget *label = form.layout->itemAt(row, QFormLayout::LabelRole)->widget();
                QCOMPARE(qobject_cast<const QLabel *>(label)->text(), captions.at(row));
                QVERIFY(fields.at(row) != nullptr);
                QCOMPARE(form.layout->itemAt(row, QFormLayout::FieldRole)->widget(), fields.at(row));
                QVERIFY(fields.at(row)->objectName().isEmpty());
                QVERIFY(fields.at(row)->property("placeholderText").toString().isEmpty());
            }
            QVERIFY(form.layout->itemAt(3, QFormLayout::LabelRole) == nullptr);
            const auto *buttons =
                qobject_cast<QDialogButtonBox *>(form.layout->itemAt(3, QFormLayout::FieldRole)->widget());
            QVERIFY(buttons != nullptr);
            QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
            QCOMPARE(form.description->minimumHeight(), 200);
        }));
        // It is gone when it is closed.
        QVERIFY(stage.window()->findChildren<QDialog *>().isEmpty());
    }

    void new_persona_starts_empty_and_may_stay_so()
    {
        Stage stage;
        const Modal modal(inPersonaForm([](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u""_s}));
            form.accept();
        }));
        stage.button(u"New"_s, u"Digital Twins"_s)->click();
        QVERIFY(modal.wasAnswered());
        QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s), Rows({{u""_s, u""_s}}));
        QCOMPARE(stage.count(u"persona_tags"_s), 0);
        QCOMPARE(stage.count(u"tags"_s), 0);
        QCOMPARE(personaTable(stage)->rowCount(), 1);
    }

    void a_row_that_is_not_there_means_a_new_persona_data()
    {
        QTest::addColumn<int>("row");
        QTest::newRow("before the first") << -1;
        QTest::newRow("behind the last") << 1;
    }

    void a_row_that_is_not_there_means_a_new_persona()
    {
        QFETCH(const int, row);
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(makeCurrent(stage, u"p"_s));
        const Rows before = stage.rows(u"SELECT * FROM personas"_s);
        QVERIFY(editPersona(stage, row, [](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u""_s}));
            form.type(u"Number Two"_s, u"Calm.\n\nMostly."_s, u"x, y  z,,x"_s);
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT * FROM personas WHERE uuid = 'p'"_s), before);
        QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas WHERE uuid <> 'p'"_s),
                 Rows({{u"Number Two"_s, u"Calm.\n\nMostly."_s}}));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"x"_s, u"y"_s, u"z"_s}));
    }

    void fields_show_the_persona_with_its_tags_in_order()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(enterBeekeeper(stage, u"q"_s, u"Number Two"_s, {u"c"_s}));
        // The text that a persona speaks from may be another; it is not to be seen here.
        QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u"a, b"_s}));
        }));
    }

    void double_click_opens_the_persona_of_its_row_data()
    {
        QTest::addColumn<int>("column");
        QTest::newRow("Name") << 0;
        QTest::newRow("UUID") << 1;
        QTest::newRow("Tags") << 2;
        QTest::newRow("Created") << 4;
        QTest::newRow("Modified") << 5;
    }

    void double_click_opens_the_persona_of_its_row()
    {
        QFETCH(const int, column);
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"p"_s, u"Number One"_s) && enterBeekeeper(stage, u"q"_s, u"Number Two"_s));
        refreshQuietly(stage);
        stage.call("toggleCreated", true);
        stage.call("toggleModified", true);
        stage.window()->resize(1000, 600);
        const Modal modal(inPersonaForm([](const PersonaForm &form) {
            QCOMPARE(form.name->text(), u"Number Two"_s);
            typeInto(form.name, u"Number Three"_s);
            form.accept();
        }));
        doubleClick(personaTable(stage), personaTable(stage)->model()->index(1, column));
        QVERIFY(modal.wasAnswered());
        QCOMPARE(stage.column(u"SELECT name FROM personas ORDER BY uuid"_s),
                 QStringList({u"Number One"_s, u"Number Three"_s}));
    }

    void narrative_keeps_the_double_click_to_itself()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        stage.window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(stage.window(), patience));
        const auto *narrative = qobject_cast<QPlainTextEdit *>(personaTable(stage)->cellWidget(0, 3));
        QVERIFY(narrative != nullptr && narrative->isReadOnly());
        const QSignalSpy clicked(personaTable(stage), &QTableWidget::cellDoubleClicked);
        QVERIFY(asksNothing([narrative] {
            QTest::mouseClick(narrative->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
            QTest::mouseDClick(narrative->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        }));
        QCOMPARE(clicked.count(), 0);
        // The click was one, and on a word.
        QCOMPARE(narrative->textCursor().selectedText(), u"keeps"_s);
    }

    void ok_stores_the_three_texts_and_no_more()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        const QString others = u"SELECT uuid, system_prompt, notes, created_at FROM personas"_s;
        const Rows before = stage.rows(others);
        QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
            form.type(u" Number Two "_s, u"One\nTwo\n"_s, u" c ,a"_s);
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s), Rows({{u" Number Two "_s, u"One\nTwo\n"_s}}));
        QCOMPARE(stage.rows(others), before);
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"c"_s, u"a"_s}));
        QCOMPARE(stage.count(u"responses"_s), 1);
        QCOMPARE(columnTexts(personaTable(stage), 0), QStringList{u" Number Two "_s});
    }

    void ok_without_a_change_counts_as_one()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        const QuietRefresh quiet(stage);
        const QString kept = u"SELECT uuid, name, attributes, system_prompt, notes, created_at FROM personas"_s;
        const Rows before = stage.rows(kept);
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"b"_s, u"a"_s}));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(editPersona(stage, 0, &PersonaForm::accept));
        QCOMPARE(stage.rows(kept), before);
        QVERIFY(stage.value(u"SELECT modified_at FROM personas"_s) != QVariant(u"2001-02-03 04:05:06"_s));
        // The links are written anew, in the order of the text.
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"a"_s, u"b"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_tag_with_a_blank_is_cut_in_two()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"p"_s, u"Number One"_s, {u"New York"_s, u"urban"_s}));
        refreshQuietly(stage);
        QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
            QCOMPARE(form.tags->text(), u"New York, urban"_s);
            form.accept();
        }));
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"New"_s, u"York"_s, u"urban"_s}));
    }

    void a_dialog_that_is_given_up_leaves_no_trace_data()
    {
        QTest::addColumn<Leave>("leave");
        QTest::newRow("cancelled") << Leave([](const PersonaForm &form) { pressButton(form.dialog, u"Cancel"_s); });
        QTest::newRow("closed") << Leave([](const PersonaForm &form) { form.dialog->close(); });
        QTest::newRow("left by Escape") << Leave(
            [](const PersonaForm &form) { QTest::keyClick(form.dialog, Qt::Key_Escape); });
    }

    void a_dialog_that_is_given_up_leaves_no_trace()
    {
        QFETCH(const Leave, leave);
        Stage stage;
        QVERIFY(showTagged(stage));
        const QStringList before = everyRow(stage.database());
        for (const int row : {-1, 0}) {
            QVERIFY(editPersona(stage, row, [&](const PersonaForm &form) {
                form.type(u"Number Two"_s, u"Calm."_s, u"c"_s);
                leave(form);
                QVERIFY(!form.dialog->isVisible());
            }));
        }
        QCOMPARE(everyRow(stage.database()), before);
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPersonaEditor)
#include "tst_personaeditor.moc"

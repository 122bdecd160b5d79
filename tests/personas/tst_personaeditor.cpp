// The persona dialog: its form, which persona it opens, and what it stores.

#include "tests/personas/personaform.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

using Leave = void (*)(const PersonaForm &form);
Q_DECLARE_METATYPE(Leave)

/// A double click as the mouse gives it: the view counts one only on a cell that was pressed before.
static void doubleClick(QWidget *widget, const QPoint &position)
{
    QTest::mouseClick(widget, Qt::LeftButton, {}, position);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, position);
}

class TestPersonaEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_the_form_stand_in_their_order();
    void dialog_has_no_title_and_is_gone_when_it_is_closed();
    void new_persona_starts_empty_and_may_stay_so();
    void a_row_that_is_not_there_means_a_new_persona_data();
    void a_row_that_is_not_there_means_a_new_persona();
    void fields_show_the_persona_with_its_tags_in_order();
    void double_click_opens_the_persona_of_its_row_data();
    void double_click_opens_the_persona_of_its_row();
    void narrative_keeps_the_double_click_to_itself();
    void ok_stores_the_three_texts_and_no_more();
    void ok_without_a_change_counts_as_one();
    void a_tag_with_a_blank_is_cut_in_two();
    void a_dialog_that_is_given_up_leaves_no_trace_data();
    void a_dialog_that_is_given_up_leaves_no_trace();
};

void TestPersonaEditor::rows_of_the_form_stand_in_their_order()
{
    Stage stage;
    QVERIFY(editPersona(stage, -1, [](const PersonaForm &form) {
        QCOMPARE(form.layout->rowCount(), 4);
        const QStringList captions{u"Name"_s, u"Description"_s, u"Tags"_s};
        const QWidgetList fields{form.name, form.description, form.tags};
        for (int row = 0; row < 3; ++row) {
            const QWidget *label = form.layout->itemAt(row, QFormLayout::LabelRole)->widget();
            QCOMPARE(qobject_cast<const QLabel *>(label)->text(), captions.at(row));
            QVERIFY(fields.at(row) != nullptr);
            QCOMPARE(form.layout->itemAt(row, QFormLayout::FieldRole)->widget(), fields.at(row));
        }
        QVERIFY(form.layout->itemAt(3, QFormLayout::LabelRole) == nullptr);
        const auto *buttons =
            qobject_cast<QDialogButtonBox *>(form.layout->itemAt(3, QFormLayout::FieldRole)->widget());
        QVERIFY(buttons != nullptr);
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(form.description->minimumHeight(), 200);
        for (const QWidget *field : fields)
            QVERIFY(field->objectName().isEmpty());
        QVERIFY(form.name->placeholderText().isEmpty() && form.tags->placeholderText().isEmpty());
        QVERIFY(form.description->placeholderText().isEmpty());
    }));
}

void TestPersonaEditor::dialog_has_no_title_and_is_gone_when_it_is_closed()
{
    Stage stage;
    QVERIFY(editPersona(stage, -1, [&](const PersonaForm &form) {
        QVERIFY(form.dialog->windowTitle().isEmpty());
        QVERIFY(form.dialog->isModal());
        QCOMPARE(form.dialog->parentWidget(), stage.window());
    }));
    QVERIFY(stage.window()->findChildren<QDialog *>().isEmpty());
}

void TestPersonaEditor::new_persona_starts_empty_and_may_stay_so()
{
    Stage stage;
    const Modal modal(inPersonaForm([](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u""_s}));
        form.accept();
    }));
    stage.button(u"New"_s)->click();
    QVERIFY(modal.wasAnswered());
    QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s), Rows({{u""_s, u""_s}}));
    QCOMPARE(count(stage, u"persona_tags"_s), 0);
    QCOMPARE(personaTable(stage)->rowCount(), 1);
}

void TestPersonaEditor::a_row_that_is_not_there_means_a_new_persona_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("before the first") << -1;
    QTest::newRow("far before") << -9;
    QTest::newRow("behind the last") << 1;
    QTest::newRow("far behind") << 40;
}

void TestPersonaEditor::a_row_that_is_not_there_means_a_new_persona()
{
    QFETCH(const int, row);
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(makeCurrent(stage, u"p"_s));
    const Rows before = stage.rows(u"SELECT * FROM personas"_s);
    QVERIFY(editPersona(stage, row, [](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u""_s}));
        form.setTexts(u"Number Two"_s, u"Calm.\n\nMostly."_s, u"x, y  z,,x"_s);
        form.accept();
    }));
    QCOMPARE(stage.rows(u"SELECT * FROM personas WHERE uuid = 'p'"_s), before);
    QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas WHERE uuid <> 'p'"_s),
             Rows({{u"Number Two"_s, u"Calm.\n\nMostly."_s}}));
    QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"x"_s, u"y"_s, u"z"_s}));
}

void TestPersonaEditor::fields_show_the_persona_with_its_tags_in_order()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(enterPersona(stage, u"q"_s, u"Number Two"_s) && enterTag(stage, u"q"_s, u"c"_s));
    // The text that a persona speaks from may be another; it is not to be seen here.
    QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u"a, b"_s}));
    }));
}

void TestPersonaEditor::double_click_opens_the_persona_of_its_row_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("Name") << 0;
    QTest::newRow("UUID") << 1;
    QTest::newRow("Tags") << 2;
    QTest::newRow("Created") << 4;
    QTest::newRow("Modified") << 5;
}

void TestPersonaEditor::double_click_opens_the_persona_of_its_row()
{
    QFETCH(const int, column);
    Stage stage;
    QVERIFY(enterPersona(stage, u"p"_s, u"Number One"_s) && enterPersona(stage, u"q"_s, u"Number Two"_s));
    refreshQuietly(stage);
    stage.call("toggleCreated", true);
    stage.call("toggleModified", true);
    stage.window()->resize(1000, 600);
    stage.window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.window()));
    QTableWidget *table = personaTable(stage);
    const Modal modal(inPersonaForm([](const PersonaForm &form) {
        QCOMPARE(form.name->text(), u"Number Two"_s);
        form.name->setText(u"Number Three"_s);
        form.accept();
    }));
    doubleClick(table->viewport(), table->visualRect(table->model()->index(1, column)).center());
    QVERIFY(modal.wasAnswered());
    QCOMPARE(::column(stage, u"SELECT name FROM personas ORDER BY uuid"_s),
             QStringList({u"Number One"_s, u"Number Three"_s}));
}

void TestPersonaEditor::narrative_keeps_the_double_click_to_itself()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    stage.window()->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.window()));
    QTableWidget *table = personaTable(stage);
    const auto *narrative = qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3));
    QVERIFY(narrative != nullptr && narrative->isReadOnly());
    const QSignalSpy clicked(table, &QTableWidget::cellDoubleClicked);
    const Modal modal([](QWidget *window) { window->close(); });
    doubleClick(narrative->viewport(), QPoint(5, 5));
    QCOMPARE(clicked.count(), 0);
    QVERIFY(!modal.wasAnswered());
}

void TestPersonaEditor::ok_stores_the_three_texts_and_no_more()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    const QString others = u"SELECT uuid, system_prompt, notes, created_at FROM personas"_s;
    const Rows before = stage.rows(others);
    QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
        form.setTexts(u" Number Two "_s, u"One\nTwo\n"_s, u" c ,a"_s);
        form.accept();
    }));
    QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s), Rows({{u" Number Two "_s, u"One\nTwo\n"_s}}));
    QCOMPARE(stage.rows(others), before);
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"c"_s, u"a"_s}));
    QCOMPARE(count(stage, u"responses"_s), 1);
    QCOMPARE(Stage::cells(personaTable(stage)).constFirst().constFirst(), u" Number Two "_s);
}

void TestPersonaEditor::ok_without_a_change_counts_as_one()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    const QuietRefresh quiet(stage);
    const QString kept = u"SELECT uuid, name, attributes, system_prompt, notes, created_at FROM personas"_s;
    const Rows before = stage.rows(kept);
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"b"_s, u"a"_s}));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(editPersona(stage, 0, acceptForm));
    QCOMPARE(stage.rows(kept), before);
    QVERIFY(stage.value(u"SELECT modified_at FROM personas"_s) != QVariant(u"2001-02-03 04:05:06"_s));
    // The links are written anew, in the order of the text.
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"a"_s, u"b"_s}));
    QVERIFY(stage.asksBeforeClosing());
}

void TestPersonaEditor::a_tag_with_a_blank_is_cut_in_two()
{
    Stage stage;
    QVERIFY(enterPersona(stage, u"p"_s, u"Number One"_s) && enterTag(stage, u"p"_s, u"New York"_s) &&
            enterTag(stage, u"p"_s, u"urban"_s));
    refreshQuietly(stage);
    QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
        QCOMPARE(form.tags->text(), u"New York, urban"_s);
        form.accept();
    }));
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"New"_s, u"York"_s, u"urban"_s}));
}

void TestPersonaEditor::a_dialog_that_is_given_up_leaves_no_trace_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<Leave>("leave");
    const Leave cancel = [](const PersonaForm &form) { pressButton(form.dialog, u"Cancel"_s); };
    const Leave close = [](const PersonaForm &form) { form.dialog->close(); };
    const Leave escape = [](const PersonaForm &form) { QTest::keyClick(form.dialog, Qt::Key_Escape); };
    QTest::newRow("new, cancelled") << -1 << cancel;
    QTest::newRow("new, closed") << -1 << close;
    QTest::newRow("new, left by Escape") << -1 << escape;
    QTest::newRow("existing, cancelled") << 0 << cancel;
    QTest::newRow("existing, closed") << 0 << close;
    QTest::newRow("existing, left by Escape") << 0 << escape;
}

void TestPersonaEditor::a_dialog_that_is_given_up_leaves_no_trace()
{
    QFETCH(const int, row);
    QFETCH(const Leave, leave);
    Stage stage;
    QVERIFY(enterTagged(stage));
    const auto state = [&stage] {
        return QList<Rows>{stage.rows(u"SELECT * FROM personas"_s), stage.rows(u"SELECT * FROM tags"_s),
                           stage.rows(u"SELECT * FROM persona_tags"_s)};
    };
    const auto before = state();
    QVERIFY(editPersona(stage, row, [&](const PersonaForm &form) {
        form.setTexts(u"Number Two"_s, u"Calm."_s, u"c"_s);
        leave(form);
        QVERIFY(!form.dialog->isVisible());
    }));
    QCOMPARE(state(), before);
    QVERIFY(!stage.asksBeforeClosing());
}

QTEST_MAIN(TestPersonaEditor)
#include "tst_personaeditor.moc"

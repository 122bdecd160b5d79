#include "tests/support/modal.h"
#include "tests/support/stage.h"

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSqlTableModel>
#include <QTableView>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

/// A modal window as a person sees it: its title, its labels and what its fields hold.
struct Seen
{
    QString title;
    QStringList labels;
    QStringList texts;
};

/// Does something that opens a modal window, and rejects that window.
Seen seenBy(const std::function<void()> &open)
{
    Seen seen;
    const Modal modal([&seen](QWidget *window) {
        seen.title = window->windowTitle();
        for (const auto all = window->findChildren<QLabel *>(); const QLabel *label : all)
            seen.labels.append(label->text().remove(u'&'));
        for (const auto all = window->findChildren<QLineEdit *>(); const QLineEdit *edit : all)
            seen.texts.append(edit->text());
        for (const auto all = window->findChildren<QPlainTextEdit *>(); const QPlainTextEdit *edit : all)
            seen.texts.append(edit->toPlainText());
        qobject_cast<QDialog *>(window)->reject();
    });
    open();
    return seen;
}

void addPersonasAndQuestions(Stage &stage)
{
    for (const auto name : {"Number One"_L1, "Number Two"_L1})
        stage.call("insertPersona", QString(name), u"Told of "_s.append(name), u"even,odd"_s);
    for (const auto prompt : {"First?"_L1, "Second?"_L1})
        stage.call("insertQuestion", QString(prompt), u"text"_s, false);
}

QStringList prompts(Stage &stage)
{
    QStringList all;
    for (const auto found = stage.rows(u"SELECT prompt FROM questions ORDER BY order_num"_s);
         const QVariantList &row : found)
        all.append(row.first().toString());
    return all;
}

int personas(Stage &stage)
{
    return stage.value(u"SELECT COUNT(*) FROM personas"_s).toInt();
}

} // namespace

class TestWiring : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void menu_entry_opens_its_window_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addRow("Open Project") << u"Open Project"_s;
        QTest::addRow("Save") << u"Save Project"_s;
        QTest::addRow("Save As") << u"Save Project"_s;
        QTest::addRow("Import Pack") << u"Open Persona Pack"_s;
        QTest::addRow("Export Pack") << u"Export Persona Pack"_s;
        QTest::addRow("Preferences") << u"Preferences"_s;
        QTest::addRow("About") << u"About Orrinet"_s;
    }

    void menu_entry_opens_its_window()
    {
        Stage stage;
        QAction *entry = stage.action(QString::fromLatin1(QTest::currentDataTag()));
        QTEST(seenBy([entry] { entry->trigger(); }).title, "title");
    }

    void new_project_drops_the_project()
    {
        Stage stage;
        addPersonasAndQuestions(stage);
        stage.action(u"New Project"_s)->trigger();
        QCOMPARE(personas(stage), 0);
    }

    void run_entry_and_run_button_start_the_same_run()
    {
        Stage stage;
        Stage::setTestMode(true);
        addPersonasAndQuestions(stage);
        stage.action(u"Run"_s)->trigger();
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM responses"_s).toInt(), 4);
        stage.exec(u"DELETE FROM responses"_s);
        stage.button(u"Run Survey"_s)->click();
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM responses"_s).toInt(), 4);
    }

    void import_in_test_mode_tells_outside_code_alone()
    {
        Stage stage;
        Stage::setTestMode(true);
        const QSignalSpy requested(stage.window(), &MainWindow::importRequested);
        stage.action(u"Import Pack"_s)->trigger();
        const QList<QVariantList> once = {{QString()}};
        QCOMPARE(requested, once);
        QCOMPARE(personas(stage), 0);
    }

    void new_button_opens_an_empty_persona()
    {
        Stage stage;
        addPersonasAndQuestions(stage);
        const Seen seen = seenBy([&stage] { stage.button(u"New"_s)->click(); });
        const QStringList labels = {u"Name"_s, u"Description"_s, u"Tags"_s};
        QCOMPARE(seen.labels, labels);
        QVERIFY(seen.texts.join(QString()).isEmpty());
    }

    void double_click_opens_the_persona_of_its_row()
    {
        Stage stage;
        addPersonasAndQuestions(stage);
        auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        for (int row = 0; row < 2; ++row) {
            const Seen seen = seenBy([table, row] { Q_EMIT table->cellDoubleClicked(row, 2); });
            QVERIFY2(seen.texts.contains(table->item(row, 0)->text()), qPrintable(seen.texts.join(u'|')));
        }
    }

    void copy_and_delete_take_the_current_persona()
    {
        Stage stage;
        addPersonasAndQuestions(stage);
        auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        const QString name = table->item(1, 0)->text();
        table->setCurrentCell(1, 0);
        stage.button(u"Copy"_s)->click();
        const QString count = u"SELECT COUNT(*) FROM personas WHERE name = ?"_s;
        QCOMPARE(stage.value(count, {name}).toInt(), 2);
        QCOMPARE(personas(stage), 3);

        table->setCurrentCell(0, 0);
        const QString gone = table->item(0, 1)->data(Qt::UserRole).toString();
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(personas(stage), 2);
        QVERIFY(!stage.value(u"SELECT uuid FROM personas WHERE uuid = ?"_s, {gone}).isValid());
    }

    void tag_filter_narrows_the_persona_list()
    {
        Stage stage;
        addPersonasAndQuestions(stage);
        stage.call("insertPersona", u"Number Three"_s, u"Calm."_s, u"third"_s);
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        QCOMPARE(table->rowCount(), 3);
        stage.find<QComboBox>(u"tagFilter"_s)->setCurrentText(u"third"_s);
        QCOMPARE(table->rowCount(), 1);
    }

    void typing_in_a_boilerplate_edit_stores_its_text_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addRow("preambleEdit") << u"preamble"_s;
        QTest::addRow("postambleEdit") << u"postamble"_s;
    }

    void typing_in_a_boilerplate_edit_stores_its_text()
    {
        QFETCH(QString, column);
        Stage stage;
        stage.find<QPlainTextEdit>(QString::fromLatin1(QTest::currentDataTag()))->setPlainText(u"Be brief."_s);
        QCOMPARE(stage.value("SELECT "_L1 + column + " FROM boilerplate"_L1).toString(), u"Be brief."_s);
    }

    void show_button_shows_the_conversation();
    void question_buttons_act_on_the_current_row();
    void add_button_opens_an_empty_question_whatever_is_selected();
    void double_click_opens_the_question_of_its_row();
};

void TestWiring::show_button_shows_the_conversation()
{
    Stage stage;
    addPersonasAndQuestions(stage);
    const auto *view = stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->findChild<QPlainTextEdit *>();
    QVERIFY(view->toPlainText().isEmpty());
    stage.button(u"Show"_s)->click();
    QVERIFY2(view->toPlainText().contains("First?"_L1), qPrintable(view->toPlainText()));
}

void TestWiring::question_buttons_act_on_the_current_row()
{
    Stage stage;
    addPersonasAndQuestions(stage);
    stage.call("insertQuestion", u"Third?"_s, u"text"_s, false);
    auto *view = stage.find<QTableView>(u"questionView"_s);
    view->selectRow(2);
    stage.button(u"Up"_s)->click();
    QCOMPARE(prompts(stage), (QStringList{u"First?"_s, u"Third?"_s, u"Second?"_s}));
    view->selectRow(0);
    stage.button(u"Down"_s)->click();
    QCOMPARE(prompts(stage), (QStringList{u"Third?"_s, u"First?"_s, u"Second?"_s}));
    view->selectRow(1);
    stage.button(u"Delete"_s, u"Questions"_s)->click();
    QCOMPARE(prompts(stage), (QStringList{u"Third?"_s, u"Second?"_s}));
}

void TestWiring::add_button_opens_an_empty_question_whatever_is_selected()
{
    Stage stage;
    addPersonasAndQuestions(stage);
    stage.find<QTableView>(u"questionView"_s)->selectRow(1);
    const Seen seen = seenBy([&stage] { stage.button(u"Add"_s)->click(); });
    QVERIFY(seen.labels.contains(u"Prompt"_s));
    QVERIFY(seen.texts.join(QString()).isEmpty());
}

void TestWiring::double_click_opens_the_question_of_its_row()
{
    Stage stage;
    addPersonasAndQuestions(stage);
    auto *view = stage.find<QTableView>(u"questionView"_s);
    const QStringList all = prompts(stage);
    for (int row = 0; row < 2; ++row) {
        const Seen seen = seenBy([view, row] { Q_EMIT view->doubleClicked(view->model()->index(row, 2)); });
        QVERIFY2(seen.texts.contains(all.at(row)), qPrintable(seen.texts.join(u'|')));
    }
}

QTEST_MAIN(TestWiring)
#include "tst_wiring.moc"

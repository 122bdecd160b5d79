#include "tests/support/entries.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableWidget>

using namespace Qt::StringLiterals;

namespace {

/// A modal window as a person sees it: its labels and what its fields hold.
struct Seen
{
    QStringList labels;
    QStringList texts;
};

/// Does something that opens a modal window, and gives that window up.
Seen seenBy(const std::function<void()> &open)
{
    Seen seen;
    const Modal modal([&seen](QWidget *window) {
        for (const auto all = window->findChildren<QLabel *>(); const QLabel *label : all)
            seen.labels.append(label->text().remove(u'&'));
        for (const auto all = window->findChildren<QLineEdit *>(); const QLineEdit *edit : all)
            seen.texts.append(edit->text());
        for (const auto all = window->findChildren<QPlainTextEdit *>(); const QPlainTextEdit *edit : all)
            seen.texts.append(edit->toPlainText());
    });
    open();
    return seen;
}

/// Shows the window with the page of a widget in front.
void bringForward(Stage &stage, QWidget *widget)
{
    stage.window()->show();
    auto *tabs = stage.window()->findChild<QTabWidget *>();
    for (int index = 0; index < tabs->count(); ++index) {
        if (tabs->widget(index)->isAncestorOf(widget))
            tabs->setCurrentIndex(index);
    }
}

/// Points at a cell and clicks twice. (A view takes the second click as one of a pair only after the first.)
void doubleClick(Stage &stage, QAbstractItemView *view, int row, int column)
{
    bringForward(stage, view);
    const QPoint where = view->visualRect(view->model()->index(row, column)).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, where);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, where);
}

void enterPersonasAndQuestions(Stage &stage)
{
    enter(
        stage, PersonaEntered{.uuid = u"one"_s, .name = u"Number One"_s, .attributes = u"Told of One"_s},
        PersonaEntered{.uuid = u"two"_s, .name = u"Number Two"_s, .attributes = u"Told of Two"_s, .tags = {u"even"_s}},
        QuestionEntered{.prompt = u"First?"_s}, QuestionEntered{.prompt = u"Second?"_s},
        QuestionEntered{.prompt = u"Third?"_s});
    stage.call("loadProject");
}

} // namespace

class TestWiring : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void run_entry_and_run_button_start_the_same_run()
    {
        Stage stage;
        Stage::setTestMode(true);
        enterPersonasAndQuestions(stage);
        stage.action(u"Run"_s)->trigger();
        QCOMPARE(stage.count(u"responses"_s), 6);
        stage.exec(u"DELETE FROM responses"_s);
        stage.button(u"Run Survey"_s)->click();
        QCOMPARE(stage.count(u"responses"_s), 6);
    }

    void new_button_opens_an_empty_persona()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        QVERIFY(makeCurrent(stage, u"two"_s));
        const Seen seen = seenBy([&stage] { stage.button(u"New"_s)->click(); });
        QCOMPARE(seen.labels, (QStringList{u"Name"_s, u"Description"_s, u"Tags"_s}));
        QVERIFY(!seen.texts.isEmpty());
        QVERIFY(seen.texts.join(QString()).isEmpty());
    }

    void double_click_opens_the_persona_of_its_row()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        QTableWidget *table = personaTable(stage);
        for (int row = 0; row < 2; ++row) {
            const Seen seen = seenBy([&] { doubleClick(stage, table, row, 2); });
            QVERIFY2(seen.texts.contains(table->item(row, 0)->text()), qPrintable(seen.texts.join(u'|')));
        }
    }

    void copy_and_delete_take_the_current_persona()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        QVERIFY(makeCurrent(stage, u"two"_s));
        stage.button(u"Copy"_s)->click();
        const QString names = u"SELECT name FROM personas ORDER BY name"_s;
        QCOMPARE(stage.column(names), (QStringList{u"Number One"_s, u"Number Two"_s, u"Number Two"_s}));

        QVERIFY(makeCurrent(stage, u"one"_s));
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(stage.column(names), (QStringList{u"Number Two"_s, u"Number Two"_s}));
    }

    void tag_filter_narrows_the_persona_list()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        QCOMPARE(shownPersonas(stage), (QStringList{u"Number One"_s, u"Number Two"_s}));
        tagFilter(stage)->setCurrentText(u"even"_s);
        QCOMPARE(shownPersonas(stage), QStringList(u"Number Two"_s));
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
        auto *edit = stage.find<QPlainTextEdit>(QString::fromLatin1(QTest::currentDataTag()));
        bringForward(stage, edit);
        QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(edit, u"Be brief."_s);
        QCOMPARE(stage.value("SELECT "_L1 + column + " FROM boilerplate"_L1).toString(), u"Be brief."_s);
    }

    void show_button_shows_the_conversation()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        const ConversationBox box(stage);
        QVERIFY(box.text().isEmpty());
        QVERIFY2(box.show().contains("First?"_L1), qPrintable(box.text()));
    }

    void question_buttons_act_on_the_current_row()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        const QString prompts = u"SELECT prompt FROM questions ORDER BY order_num"_s;
        questionView(stage)->selectRow(2);
        stage.button(u"Up"_s)->click();
        QCOMPARE(stage.column(prompts), (QStringList{u"First?"_s, u"Third?"_s, u"Second?"_s}));
        questionView(stage)->selectRow(0);
        stage.button(u"Down"_s)->click();
        QCOMPARE(stage.column(prompts), (QStringList{u"Third?"_s, u"First?"_s, u"Second?"_s}));
        questionView(stage)->selectRow(1);
        stage.button(u"Delete"_s, u"Questions"_s)->click();
        QCOMPARE(stage.column(prompts), (QStringList{u"Third?"_s, u"Second?"_s}));
    }

    void add_button_opens_an_empty_question_whatever_is_selected()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        questionView(stage)->selectRow(1);
        const Seen seen = seenBy([&stage] { stage.button(u"Add"_s)->click(); });
        QVERIFY(seen.labels.contains(u"Prompt"_s));
        QVERIFY(!seen.texts.isEmpty());
        QVERIFY(seen.texts.join(QString()).isEmpty());
    }

    void double_click_opens_the_question_of_its_row()
    {
        Stage stage;
        enterPersonasAndQuestions(stage);
        const QStringList prompts = columnTexts(stage, u"prompt"_s);
        QCOMPARE(prompts.size(), 3);
        for (int row = 0; row < 3; ++row) {
            const Seen seen = seenBy([&] { doubleClick(stage, questionView(stage), row, 2); });
            QVERIFY2(seen.texts.contains(prompts.at(row)), qPrintable(seen.texts.join(u'|')));
        }
    }
};

ORRINET_TEST(TestWiring)
#include "tst_wiring.moc"

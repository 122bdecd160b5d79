#include "tests/support/modal.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QAction>

using namespace Qt::StringLiterals;

static void showChangedProject(Stage &stage)
{
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    stage.window()->show();
}

using QuitAnswer = std::function<void(QWidget *)>;

class TestQuit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unchanged_project_closes_at_once()
    {
        Stage stage;
        stage.window()->show();
        QVERIFY(asksNothing([&stage] { stage.action(u"Quit"_s)->trigger(); }));
        QVERIFY(!stage.window()->isVisible());
    }

    void prompt_offers_yes_and_no_with_no_first_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::addRow("plain") << false;
        QTest::addRow("test mode") << true;
    }

    void prompt_offers_yes_and_no_with_no_first()
    {
        QFETCH(bool, testMode);
        Stage stage;
        showChangedProject(stage);
        Stage::setTestMode(testMode);
        const Modal modal([&stage](QWidget *window) {
            auto *box = qobject_cast<QMessageBox *>(window);
            QVERIFY(box != nullptr);
            const auto done = qScopeGuard([box] { answerBox(box, QMessageBox::No); });
            QCOMPARE(box->windowTitle(), u"Unsaved Changes"_s);
            QCOMPARE(box->text(), u"You have unsaved changes. Quit anyway?"_s);
            QCOMPARE(box->icon(), QMessageBox::Question);
            QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
            QCOMPARE(box->buttons().size(), 2);
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
            QCOMPARE(box->parentWidget(), stage.window());
        });
        stage.action(u"Quit"_s)->trigger();
        QVERIFY(modal.wasAnswered());
        QVERIFY(stage.window()->isVisible());
    }

    void answer_decides_whether_the_window_closes_data()
    {
        QTest::addColumn<QuitAnswer>("answer");
        QTest::addColumn<bool>("stays");
        QTest::addRow("No") << QuitAnswer([](QWidget *box) { answerBox(box, QMessageBox::No); }) << true;
        QTest::addRow("Yes") << QuitAnswer([](QWidget *box) { answerBox(box, QMessageBox::Yes); }) << false;
        QTest::addRow("Escape stands for No")
            << QuitAnswer([](QWidget *box) { QTest::keyClick(box, Qt::Key_Escape); }) << true;
        QTest::addRow("Return presses No")
            << QuitAnswer([](QWidget *box) { QTest::keyClick(box, Qt::Key_Return); }) << true;
        QTest::addRow("closing the prompt stands for No") << QuitAnswer([](QWidget *box) { box->close(); }) << true;
    }

    void answer_decides_whether_the_window_closes()
    {
        QFETCH(QuitAnswer, answer);
        QFETCH(bool, stays);
        Stage stage;
        showChangedProject(stage);
        bool answeredAtOnce = false;
        const Modal modal([&](QWidget *box) {
            answer(box);
            answeredAtOnce = !box->isVisible();
        });
        stage.action(u"Quit"_s)->trigger();
        QVERIFY(answeredAtOnce);
        QCOMPARE(stage.window()->isVisible(), stays);
        // Neither answer touches the project: nothing was offered to be saved, and the next time it is asked again.
        QCOMPARE(stage.count(u"personas"_s), 1);
        QVERIFY(stage.asksBeforeClosing());
    }

    void closing_the_window_asks_as_quit_does()
    {
        Stage stage;
        showChangedProject(stage);
        const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::No); });
        QVERIFY(!stage.window()->close());
        QVERIFY(modal.wasAnswered());
        QVERIFY(stage.window()->isVisible());
    }
};

ORRINET_TEST(TestQuit)
#include "tst_quit.moc"

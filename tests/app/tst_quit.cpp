#include "tests/support/modal.h"
#include "tests/support/stage.h"

#include <QAction>
#include <QMessageBox>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

void showChangedProject(Stage &stage)
{
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
    stage.window()->show();
}

} // namespace

using Answer = std::function<void(QWidget *)>;

class TestQuit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unchanged_project_closes_at_once()
    {
        Stage stage;
        stage.window()->show();
        const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::No); });
        stage.action(u"Quit"_s)->trigger();
        QVERIFY(!modal.wasAnswered());
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
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<bool>("stays");
        QTest::addRow("No") << Answer([](QWidget *box) { answerBox(box, QMessageBox::No); }) << true;
        QTest::addRow("Yes") << Answer([](QWidget *box) { answerBox(box, QMessageBox::Yes); }) << false;
        QTest::addRow("Escape stands for No")
            << Answer([](QWidget *box) { QTest::keyClick(box, Qt::Key_Escape); }) << true;
        QTest::addRow("Return presses No")
            << Answer([](QWidget *box) { QTest::keyClick(box, Qt::Key_Return); }) << true;
        QTest::addRow("closing the prompt stands for No") << Answer([](QWidget *box) { box->close(); }) << true;
    }

    void answer_decides_whether_the_window_closes()
    {
        QFETCH(Answer, answer);
        QFETCH(bool, stays);
        Stage stage;
        showChangedProject(stage);
        const Modal modal(answer);
        stage.action(u"Quit"_s)->trigger();
        QVERIFY(modal.wasAnswered());
        QCOMPARE(stage.window()->isVisible(), stays);
        // Neither answer touches the project: nothing was offered to be saved, and the flag stands.
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM personas"_s).toInt(), 1);
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

    void quit_asks_again_each_time()
    {
        Stage stage;
        showChangedProject(stage);
        for (int turn = 0; turn < 2; ++turn) {
            const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::No); });
            stage.action(u"Quit"_s)->trigger();
            QVERIFY(modal.wasAnswered());
        }
        const Modal modal([](QWidget *box) { answerBox(box, QMessageBox::Yes); });
        stage.action(u"Quit"_s)->trigger();
        QVERIFY(!stage.window()->isVisible());
    }
};

QTEST_MAIN(TestQuit)
#include "tst_quit.moc"

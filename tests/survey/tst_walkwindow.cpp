// A run as the window shows it: its controls and its log.

#include "inspect/chatlogwindow.h"
#include "survey/surveyrunner.h"
#include "tests/support/messagelog.h"
#include "tests/support/modal.h"
#include "tests/survey/walkkit.h"

#include <QAction>
#include <QPointer>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

/// The last message of each "-> " entry: what was asked.
static QStringList askedPrompts(const QStringList &entries)
{
    QStringList prompts;
    for (const QString &entry : entries) {
        if (entry.startsWith("-> "_L1))
            prompts.append(entry.section(u'"', -6, -6));
    }
    return prompts;
}

/// Actions and widgets that a user cannot reach.
static QSet<QObject *> disabledParts(const QWidget *window)
{
    QSet<QObject *> parts;
    const auto actions = window->findChildren<QAction *>();
    for (QAction *action : actions) {
        if (!action->isEnabled())
            parts.insert(action);
    }
    const auto widgets = window->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        if (!widget->isEnabled())
            parts.insert(widget);
    }
    return parts;
}

class TestWalkWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void only_the_two_run_controls_are_off_during_a_run()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        const QList<QObject *> controls{stage.action(u"Run"_s), stage.find<QPushButton>(u"runSurveyButton"_s)};
        const auto before = disabledParts(stage.window());
        int checked = 0;
        trace.react = [&](const QString &event) {
            if (!event.startsWith("log"_L1))
                return;
            auto during = disabledParts(stage.window());
            for (QObject *control : controls)
                QVERIFY(during.remove(control));
            QCOMPARE(during, before);
            ++checked;
        };
        stage.call("runSurvey");
        QCOMPARE(checked, 8);
        QCOMPARE(disabledParts(stage.window()), before);
    }

    void the_menu_and_the_button_start_a_run_data()
    {
        QTest::addColumn<bool>("menu");
        QTest::newRow("menu") << true;
        QTest::newRow("button") << false;
    }
    void the_menu_and_the_button_start_a_run()
    {
        QFETCH(const bool, menu);
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        if (menu)
            stage.action(u"Run"_s)->trigger();
        else
            stage.button(u"Run Survey"_s)->click();
        QCOMPARE(storedPairs(stage).size(), 4);
    }

    void a_run_within_a_run_is_not_started()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            if (event.startsWith("log"_L1))
                stage.call("runSurvey");
        };
        stage.call("runSurvey");
        QCOMPARE(trace.events.count(u"run off"_s), 1);
        QCOMPARE(trace.events.count(u"run on"_s), 1);
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
    }

    void a_run_is_over_when_runSurvey_returns_and_the_next_may_start()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        QVERIFY(stage.action(u"Run"_s)->isEnabled());
        QVERIFY(stage.find<QPushButton>(u"runSurveyButton"_s)->isEnabled());
        QVERIFY(stage.exec(u"DELETE FROM responses WHERE persona_uuid='uuid-A'"_s));
        // The event loop has not run, so the old runner is still there.
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"B1"_s, u"B2"_s, u"A1"_s, u"A2"_s}));
        QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 2);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(stage.window()->findChildren<SurveyRunner *>().isEmpty());
    }

    void the_next_run_appends_to_the_log()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        const ChatLogWindow *log = logWindow(stage);
        const QStringList first = logEntries(stage);
        QCOMPARE(askedPrompts(first), QStringList({u"Q1"_s, u"Q2"_s, u"Q1"_s, u"Q2"_s}));
        QVERIFY(addQuestion(stage, 3, u"Q3"_s));
        stage.call("runSurvey");
        QCOMPARE(logWindow(stage), log);
        const QStringList both = logEntries(stage);
        QCOMPARE(both.first(first.size()), first);
        QCOMPARE(askedPrompts(both.sliced(first.size())), QStringList({u"Q3"_s, u"Q3"_s}));
    }

    void a_closed_log_is_replaced_by_an_empty_one()
    {
        Stage stage;
        Stage::setTestMode(true);
        stage.call("runSurvey");
        const QPointer<ChatLogWindow> log = logWindow(stage);
        QCOMPARE(log->parent(), stage.window());
        QVERIFY(log->testAttribute(Qt::WA_DeleteOnClose));
        QVERIFY(!log->isModal());
        QVERIFY(pressButton(log, u"Close"_s));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(log.isNull());
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        QVERIFY(logWindow(stage)->isVisible());
        QCOMPARE(logEntries(stage).size(), 8);
    }

    void a_run_goes_on_without_its_log()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            // Not on an entry: the window is at work then.
            if (event == u"grid"_s)
                delete logWindow(stage);
        };
        QStringList infos;
        {
            const MessageLog messages;
            stage.call("runSurvey");
            infos = messages.infos();
        }
        QCOMPARE(infos, QStringList{u"ChatLogWindow destroyed; logging disabled"_s});
        QCOMPARE(trace.events.filter(u"log"_s).size(), 2);
        QCOMPARE(trace.events.count(u"grid"_s), 5);
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
        QVERIFY(logWindow(stage) == nullptr);
    }
};

QTEST_MAIN(TestWalkWindow)
#include "tst_walkwindow.moc"

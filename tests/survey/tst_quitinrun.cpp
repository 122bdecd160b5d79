#include "tests/support/messagelog.h"
#include "tests/support/modal.h"
#include "tests/support/patience.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QApplication>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Reply;

namespace {

/// Starts a run with the window shown, and stops it while the second pair is being asked.
bool startStalling(SurveyStage &stage, const Reply &second)
{
    stage.fillTwoByTwo();
    stage.window()->show();
    stage.endpoint.queue(Reply::content(u"first"_s));
    stage.endpoint.queue(second);
    stage.startRun();
    return stage.arrived(2);
}

} // namespace

class TestQuitInRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void quitting_ends_the_program_and_its_request_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<bool>("entry");
        const Reply reply = Reply::content(u"Not to be read."_s);
        QTest::newRow("silent endpoint") << reply.ending(Reply::End::Silent) << true;
        QTest::newRow("incomplete reply") << reply.ending(Reply::End::Incomplete) << true;
        QTest::newRow("reply held back") << reply.held() << true;
        QTest::newRow("by the window manager") << reply.ending(Reply::End::Silent) << false;
    }
    void quitting_ends_the_program_and_its_request()
    {
        const MessageLog messages;
        SurveyStage stage;
        QFETCH(const Reply, reply);
        QFETCH(const bool, entry);
        QVERIFY(startStalling(stage, reply));
        QVERIFY(!stage.runEntry()->isEnabled());

        const Modal question([](QWidget *box) { answerBox(box, QMessageBox::Yes); });
        QTimer::singleShot(0, stage.window(), [&stage, entry] {
            if (entry)
                stage.action(u"Quit"_s)->trigger();
            else
                stage.window()->close();
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(question.wasAnswered());
        for (const auto all = QApplication::topLevelWidgets(); const QWidget *widget : all)
            QVERIFY2(!widget->isVisible(), widget->metaObject()->className());
        QCOMPARE(stage.answered(), QStringList{u"P1 Q1"_s});

        QSignalSpy closed(&stage.endpoint, &ChatEndpoint::connectionClosed);
        QCOMPARE(stage.endpoint.inFlight(), 1);
        stage.closeWindow();
        while (stage.endpoint.inFlight() > 0)
            QVERIFY(closed.wait(patience));
        QCOMPARE(stage.endpoint.requests().size(), 2);
        QCOMPARE(messages.warnings(), QStringList());
    }

    void a_saved_project_is_quit_without_a_question()
    {
        const MessageLog messages;
        SurveyStage stage;
        QVERIFY(startStalling(stage, Reply().ending(Reply::End::Silent)));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        bool silent = false;
        QTimer::singleShot(0, stage.window(), [&stage, &silent] {
            silent = asksNothing([&stage] { stage.action(u"Quit"_s)->trigger(); });
            if (!silent)
                QCoreApplication::exit(1);
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(silent);
        QVERIFY(!stage.window()->isVisible());
    }

    void the_run_goes_on_behind_the_question()
    {
        const MessageLog messages;
        SurveyStage stage;
        QVERIFY(startStalling(stage, Reply::content(u"second"_s).held()));
        bool ended = false;
        const Modal question([&stage, &ended](QWidget *box) {
            stage.endpoint.release();
            ended = stage.runEnded();
            answerBox(box, QMessageBox::No);
        });
        stage.action(u"Quit"_s)->trigger();
        QVERIFY(question.wasAnswered());
        QVERIFY(ended);
        QVERIFY(stage.window()->isVisible());
        QCOMPARE(stage.answered(), stage.twoByTwo);
        QCOMPARE(messages.warnings(), QStringList());
    }
};

ORRINET_TEST(TestQuitInRun)
#include "tst_quitinrun.moc"

// The window on a Qt that finds no SQLite driver. One test function, since a driver once loaded is never forgotten.

#include "tests/support/messagelog.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestNoDriver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void window_without_a_database()
    {
        Stage stage;
        const QStringList libraries = QCoreApplication::libraryPaths();
        QCoreApplication::setLibraryPaths({});
        {
            const MessageLog log;
            stage.window();
            checkWarnings(log, {u"failed to create in-memory project Driver not loaded Driver not loaded"_s});
        }
        checkViews(stage);
        QVERIFY(asksNothing([&stage] { callSlots(stage); }));
        QVERIFY(stage.action(u"Run"_s)->isEnabled());
        QVERIFY(!stage.asksBeforeClosing());
        refreshEmptiesThePersonaList(stage);
        newProjectTriesAgain(stage);

        QCoreApplication::setLibraryPaths(libraries);
        newProjectSucceeds(stage);
    }

private:
    static void checkWarnings(const MessageLog &log, const QStringList &expected)
    {
        // The others are Qt's own words about the driver.
        QStringList ours = log.warnings();
        ours.removeIf([](const QString &text) { return text.startsWith("QSqlDatabase"_L1); });
        QCOMPARE(ours, expected);
    }

    static void checkViews(Stage &stage)
    {
        QVERIFY(!stage.database().isOpen());
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(resultsTable(stage)->rowCount(), 0);
        QVERIFY(questionView(stage)->model() == nullptr);
        QCOMPARE(preambleEdit(stage)->toPlainText(), QString());
        QCOMPARE(tagFilter(stage)->count(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }

    static void callSlots(Stage &stage)
    {
        for (const char *slot : {"loadQuestions", "loadResults", "applyTagFilter", "runSurvey", "showConversation",
                                 "copyPersona", "deletePersona"})
            stage.call(slot);
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        stage.call("updatePersona", u"one"_s, u"Number One"_s, u"Calm."_s);
        stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
        stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false);
        stage.call("importPack", stage.path(u"missing.ornk"_s));
        QVERIFY(!stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(!stage.result("exportPackToFile", stage.path(u"saved.ornk"_s)));
        QTest::keyClicks(preambleEdit(stage), u"Mine."_s);
        QTest::keyClicks(postambleEdit(stage), u"Mine, too."_s);
        QCoreApplication::processEvents();
    }

    /// That comes before the database is asked for.
    static void refreshEmptiesThePersonaList(Stage &stage)
    {
        personaTable(stage)->setRowCount(2);
        stage.call("loadProject");
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(preambleEdit(stage)->toPlainText(), u"Mine."_s);
        QCOMPARE(tagFilter(stage)->count(), 0);
    }

    static void newProjectTriesAgain(Stage &stage)
    {
        personaTable(stage)->setRowCount(2);
        stage.window()->markDirty();
        const MessageLog log;
        stage.action(u"New Project"_s)->trigger();
        checkWarnings(log, {u"failed to create in-memory project Driver not loaded Driver not loaded"_s});
        QCOMPARE(personaTable(stage)->rowCount(), 2);
        QCOMPARE(preambleEdit(stage)->toPlainText(), u"Mine."_s);
        QVERIFY(stage.asksBeforeClosing());
    }

    static void newProjectSucceeds(Stage &stage)
    {
        const MessageLog log;
        stage.action(u"New Project"_s)->trigger();
        checkWarnings(log, {});
        QVERIFY(stage.database().isOpen());
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QCOMPARE(preambleEdit(stage)->toPlainText(), u"Act as the following persona."_s);
        QVERIFY(questionView(stage)->model() != nullptr);
        QVERIFY(!stage.asksBeforeClosing());
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QCOMPARE(personaTable(stage)->rowCount(), 1);
    }
};

ORRINET_TEST(TestNoDriver)
#include "tst_nodriver.moc"

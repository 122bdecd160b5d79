// The window on a Qt that finds no SQLite driver. A program of its own, since a driver once loaded is never forgotten.

#include "tests/support/messagelog.h"
#include "tests/support/modal.h"
#include "tests/support/stage.h"

#include <QAction>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QTableView>
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
            checkWarnings(log);
        }
        checkViews(stage);
        slotsDoNothing(stage);
        newProjectTriesAgain(stage);

        QCoreApplication::setLibraryPaths(libraries);
        newProjectSucceeds(stage);
    }

private:
    static void checkWarnings(const MessageLog &log)
    {
        // The others are Qt's own words about the driver.
        QStringList ours = log.warnings();
        ours.removeIf([](const QString &text) { return text.startsWith("QSqlDatabase"_L1); });
        QCOMPARE(ours, QStringList{u"failed to create in-memory project Driver not loaded Driver not loaded"_s});
    }

    static void checkViews(Stage &stage)
    {
        QVERIFY(!stage.project().isOpen());
        QCOMPARE(stage.find<QTableWidget>(u"personaTable"_s)->rowCount(), 0);
        QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->rowCount(), 0);
        QVERIFY(stage.find<QTableView>(u"questionView"_s)->model() == nullptr);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), QString());
        QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->count(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }

    static void slotsDoNothing(Stage &stage)
    {
        const Modal modal([](QWidget *window) { window->close(); });
        stage.call("loadQuestions");
        stage.call("loadResults");
        stage.call("applyTagFilter");
        stage.call("runSurvey");
        stage.call("showConversation");
        stage.call("copyPersona");
        stage.call("deletePersona");
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        stage.call("updatePersona", u"one"_s, u"Number One"_s, u"Calm."_s);
        stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
        stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false);
        stage.call("importPack", stage.path(u"missing.ornk"_s));
        QVERIFY(!stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(!stage.result("exportPackToFile", stage.path(u"saved.ornk"_s)));
        // Neither does typing.
        stage.find<QPlainTextEdit>(u"preambleEdit"_s)->setPlainText(u"Mine."_s);
        stage.find<QPlainTextEdit>(u"postambleEdit"_s)->setPlainText(u"Mine, too."_s);
        QCoreApplication::processEvents();
        QVERIFY(!modal.wasAnswered());
        QVERIFY(stage.action(u"Run"_s)->isEnabled());
        QVERIFY(!stage.asksBeforeClosing());

        // The persona list is emptied before the database is asked for.
        auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        table->setRowCount(2);
        stage.call("loadProject");
        QCOMPARE(table->rowCount(), 0);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Mine."_s);
        QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->count(), 0);
    }

    static void newProjectTriesAgain(Stage &stage)
    {
        auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        table->setRowCount(2);
        stage.window()->markDirty();
        {
            const MessageLog log;
            stage.action(u"New Project"_s)->trigger();
            checkWarnings(log);
        }
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Mine."_s);
        QVERIFY(stage.asksBeforeClosing());
    }

    static void newProjectSucceeds(Stage &stage)
    {
        {
            const MessageLog log;
            stage.action(u"New Project"_s)->trigger();
            for (const auto listed = log.warnings(); const QString &text : listed)
                QVERIFY2(text.startsWith("QSqlDatabase"_L1), qPrintable(text));
        }
        QVERIFY(stage.project().isOpen());
        QCOMPARE(stage.find<QTableWidget>(u"personaTable"_s)->rowCount(), 0);
        QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
        QVERIFY(stage.find<QTableView>(u"questionView"_s)->model() != nullptr);
        QVERIFY(!stage.asksBeforeClosing());
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QCOMPARE(stage.find<QTableWidget>(u"personaTable"_s)->rowCount(), 1);
    }
};

QTEST_MAIN(TestNoDriver)
#include "tst_nodriver.moc"

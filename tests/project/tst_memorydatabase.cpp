// Opening a file while the project itself has no open database.

#include "tests/project/driverswap.h"
#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"

#include <QResource>
#include <QScopeGuard>
#include <QTest>

using namespace Qt::StringLiterals;

// The resource system's own functions are declared where they are named: that can't be in a nameless namespace.
static void takeTreeAway()
{
    Q_CLEANUP_RESOURCE(orrinet);
}

static void putTreeBack()
{
    Q_INIT_RESOURCE(orrinet);
}

/// The warnings without Qt's own words about a connection's name that is taken.
static QStringList ours(const MessageLog &log)
{
    QStringList texts = log.warnings();
    texts.removeIf([](const QString &text) { return text.startsWith("QSqlDatabase"_L1); });
    return texts;
}

class TestMemoryDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_database_in_memory_that_cannot_be_opened();
    void a_database_that_was_closed_is_made_anew();
    void the_schema_script_fails_in_silence();
};

void TestMemoryDatabase::a_database_in_memory_that_cannot_be_opened()
{
    const MessageLog log;
    Stage stage;
    {
        const DriverSwap swap([] { return new ClosedDriver; });
        stage.window();
        QCOMPARE(ours(log), QStringList{u"failed to create in-memory project no memory refuses to open"_s});
    }
    stage.window()->markDirty();
    Stage::setTestMode(true);
    {
        // The connection to the file opens, that of the project does not.
        int made = 0;
        const DriverSwap swap([&made]() -> QSqlDriver * { return ++made == 1 ? nullptr : new ClosedDriver; });
        QVERIFY(!stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
        QCOMPARE(made, 2);
    }
    QCOMPARE(ours(log).size(), 2);
    QCOMPARE(ours(log).constLast(), u"failed to open memory db no memory refuses to open"_s);
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(questionView(stage)->model() == nullptr);
    QVERIFY(stage.asksBeforeClosing());

    QVERIFY(makeProjectFile(stage.path(u"more.ormt"_s), oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"more.ormt"_s)));
    QCOMPARE(ours(log).size(), 2);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMemoryDatabase::a_database_that_was_closed_is_made_anew()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    QVERIFY(enterQuestions(stage, 3));
    Stage::setTestMode(true);
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    stage.project().close();
    const MessageLog log;
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    for (const auto listed = log.warnings(); const QString &text : listed)
        QVERIFY2(text.startsWith("QSqlDatabase"_L1), qPrintable(text));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QCOMPARE(count(stage, u"responses"_s), 1);
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMemoryDatabase::the_schema_script_fails_in_silence()
{
    Stage stage;
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), {u"INSERT INTO tags VALUES (5, 'odd')"_s}));
    stage.window();
    stage.project().close();
    takeTreeAway();
    QVERIFY(QResource::registerResource(QStringLiteral(ORRINET_FAULTY_SCRIPT)));
    const auto restore = qScopeGuard([] {
        QResource::unregisterResource(QStringLiteral(ORRINET_FAULTY_SCRIPT));
        putTreeBack();
    });
    const MessageLog log;
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QCOMPARE(ours(log), QStringList());
    // What the script could make is there, and nothing else: a table that it lacks is not filled.
    const QStringList tables = stage.project().tables(QSql::Tables);
    QVERIFY(tables.contains(u"questions"_s));
    QVERIFY(!tables.contains(u"tags"_s));
    QVERIFY(questionListIsWhole(stage));
}

QTEST_MAIN(TestMemoryDatabase)
#include "tst_memorydatabase.moc"

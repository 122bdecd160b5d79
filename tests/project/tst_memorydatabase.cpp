// A database in memory that can't be made as usual: it does not open, it was closed, or the script of its tables is
// missing or partly wrong.

#include "tests/project/driverswap.h"
#include "tests/project/projectfile.h"

#include <QResource>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

// The resource system's own functions are declared where they are named: that can't be in a nameless namespace.
static void takeResourcesAway()
{
    Q_CLEANUP_RESOURCE(orrinet);
}

static void putResourcesBack()
{
    Q_INIT_RESOURCE(orrinet);
}

namespace {

/// While it lives, a script that is partly wrong stands in for the real one.
class FaultyScript
{
public:
    FaultyScript()
    {
        takeResourcesAway();
        if (!QResource::registerResource(path))
            QTest::qFail("the faulty script is missing", __FILE__, __LINE__);
    }
    ~FaultyScript()
    {
        QResource::unregisterResource(path);
        putResourcesBack();
    }
    Q_DISABLE_COPY_MOVE(FaultyScript)

private:
    const QString path = QStringLiteral(ORRINET_FAULTY_SCRIPT);
};

/// The warnings without Qt's own words about a connection's name that is taken.
QStringList ownWarnings(const MessageLog &log)
{
    QStringList texts = log.warnings();
    texts.removeIf([](const QString &text) { return text.startsWith("QSqlDatabase"_L1); });
    return texts;
}

} // namespace

class TestMemoryDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_database_that_cannot_be_opened_is_tried_again_at_the_next_opening();
    void a_database_that_was_closed_is_made_anew();
    void missing_script_leaves_a_window_without_tables();
    void script_is_not_run_again_once_the_project_is_open();
    void script_is_cut_at_semicolons_and_survives_faulty_pieces();
    void script_fails_in_silence_when_a_file_is_opened();
};

void TestMemoryDatabase::a_database_that_cannot_be_opened_is_tried_again_at_the_next_opening()
{
    const MessageLog log;
    Stage stage;
    {
        const DriverSwap swap([] { return new ClosedDriver; });
        stage.window();
        QCOMPARE(ownWarnings(log), QStringList{u"failed to create in-memory project no memory refuses to open"_s});
    }
    stage.window()->markDirty();
    Stage::setTestMode(true);
    {
        // The connection to the file opens, that of the project does not.
        int made = 0;
        const DriverSwap swap([&made]() -> QSqlDriver * { return ++made == 1 ? nullptr : new ClosedDriver; });
        QVERIFY(!stage.result("openProjectFromFile", stage.path(u"missing.ormt"_s)));
        QCOMPARE(made, 2);
    }
    QCOMPARE(ownWarnings(log).size(), 2);
    QCOMPARE(ownWarnings(log).constLast(), u"failed to open memory db no memory refuses to open"_s);
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(questionView(stage)->model() == nullptr);
    QVERIFY(stage.asksBeforeClosing());

    QVERIFY(stage.result("openProjectFromFile", writeOther(stage)));
    QCOMPARE(ownWarnings(log).size(), 2);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMemoryDatabase::a_database_that_was_closed_is_made_anew()
{
    Stage stage;
    stage.call("insertPersona", u"Number Nine"_s, u"Calm."_s);
    showQuestions(stage, 3);
    Stage::setTestMode(true);
    const QString path = writeOther(stage);
    stage.database().close();
    const MessageLog log;
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(ownWarnings(log), QStringList());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number One"_s});
    QCOMPARE(tableOfEachRow(stage), projectTables());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMemoryDatabase::missing_script_leaves_a_window_without_tables()
{
    Stage stage;
    takeResourcesAway();
    const auto restore = qScopeGuard(putResourcesBack);
    const MessageLog log;
    stage.window();
    // Nothing is said of the script or of the boilerplate; the refresh then trips over the persona list.
    QCOMPARE(log.warnings(), QStringList{stage.refusal(u"SELECT p.uuid FROM personas p"_s)});
    QCOMPARE(stage.database().tables(QSql::Tables), QStringList{u"boilerplate"_s});
    QCOMPARE(stage.rows(u"SELECT * FROM boilerplate"_s), (Rows{{u"Act as the following persona."_s, u""_s}}));
    QCOMPARE(preambleEdit(stage)->toPlainText(), u"Act as the following persona."_s);
    QCOMPARE(items(tagFilter(stage)), QStringList{u"All"_s});
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMemoryDatabase::script_is_not_run_again_once_the_project_is_open()
{
    Stage stage;
    const MessageLog log;
    takeResourcesAway();
    stage.window();
    putResourcesBack();
    stage.call("newProject");
    QCOMPARE(stage.database().tables(QSql::Tables), QStringList{u"boilerplate"_s});
    QCOMPARE(log.warnings().size(), 2);
}

void TestMemoryDatabase::script_is_cut_at_semicolons_and_survives_faulty_pieces()
{
    Stage stage;
    const FaultyScript script;
    const MessageLog log;
    stage.window();
    QCOMPARE(log.warnings(), (QStringList{stage.refusal(u"CREATE TABLE personas (uuid TEXT)"_s),
                                          stage.refusal(u"no statement at all"_s)}));
    QStringList tables = stage.database().tables(QSql::Tables);
    tables.sort();
    QCOMPARE(tables, (QStringList{u"boilerplate"_s, u"personas"_s, u"questions"_s, u"responses"_s}));
    QCOMPARE(stage.column(u"SELECT name FROM personas"_s), QStringList{u"Gr\u00fc\u00dfe"_s});
    QVERIFY(!stage.asksBeforeClosing());
}

void TestMemoryDatabase::script_fails_in_silence_when_a_file_is_opened()
{
    Stage stage;
    const QString path = writeProject(stage.path(u"other.ormt"_s), {u"INSERT INTO tags VALUES (5, 'odd')"_s});
    stage.window();
    stage.database().close();
    const FaultyScript script;
    const MessageLog log;
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(ownWarnings(log), QStringList());
    // What the script could make is there, and nothing else: a table that it lacks is not filled.
    const QStringList tables = stage.database().tables(QSql::Tables);
    QVERIFY(tables.contains(u"questions"_s));
    QVERIFY(!tables.contains(u"tags"_s));
    QVERIFY(questionListIsWhole(stage));
}

ORRINET_TEST(TestMemoryDatabase)
#include "tst_memorydatabase.moc"

// What a file can make SQLite do by being opened, and that the watch by which the fuzzers see it is awake.

#include "fuzz/sqlitewatch.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 many = 3'000'000;

/// The personas of a pack as a view that counts for ever, and finds none.
QStringList endlessPersonas()
{
    return {u"DROP TABLE personas"_s,
            u"CREATE VIEW personas (uuid,name,attributes,system_prompt,notes,created_at,modified_at) AS "
            "WITH RECURSIVE e(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM e) SELECT n,n,n,n,n,n,n FROM e WHERE n<0"_s};
}

QString persona(const QString &uuid)
{
    return u"INSERT INTO personas (uuid,name) VALUES ('%1','Number %1')"_s.arg(uuid);
}

} // namespace

class TestHostileFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Before the window's connection is opened.
    void init() { SqliteWatch::allow(many); }
    void cleanup() { Stage::setTestMode(false); }

    void the_watch_notes_what_writes_elsewhere();
    void the_watch_notes_what_a_trigger_writes();
    void the_watch_passes_over_what_the_project_writes();

    void an_endless_view_holds_an_import_up_until_it_is_interrupted();
    void an_endless_view_holds_the_browsing_up_until_it_is_interrupted();
    void a_view_that_is_listed_as_a_table_makes_a_file_unreadable();
    void an_endless_view_in_a_project_is_passed_over();
    void triggers_of_a_file_do_not_run();
    void a_damaged_index_is_gone_with_the_next_project();
    void the_log_beside_a_project_is_read_with_it();
};

void TestHostileFiles::the_watch_notes_what_writes_elsewhere()
{
    Stage stage;
    SideDatabase other(stage.path(u"other"_s));
    SqliteWatch::begin(stage.database());
    QVERIFY(other.exec(u"CREATE TABLE made (x)"_s));
    QVERIFY(!SqliteWatch::end().isEmpty());
    QVERIFY(stage.exec({u"ATTACH '%1' AS disk"_s.arg(stage.path(u"other"_s))}));
    SqliteWatch::begin(stage.database());
    QVERIFY(stage.exec(u"INSERT INTO disk.made VALUES (1)"_s));
    QCOMPARE(SqliteWatch::end(), QStringList{u"action 18 on made in disk by a connection"_s});
}

void TestHostileFiles::the_watch_notes_what_a_trigger_writes()
{
    Stage stage;
    QVERIFY(stage.exec(u"CREATE TRIGGER hidden AFTER INSERT ON tags BEGIN DELETE FROM personas; END"_s));
    SqliteWatch::begin(stage.database());
    QVERIFY(stage.exec(u"INSERT INTO tags (name) VALUES ('a')"_s));
    QCOMPARE(SqliteWatch::end(), QStringList{u"action 9 on personas in main by hidden"_s});
}

void TestHostileFiles::the_watch_passes_over_what_the_project_writes()
{
    Stage stage;
    SqliteWatch::begin(stage.database());
    QVERIFY(stage.exec(persona(u"one"_s)));
    QCOMPARE(stage.count(u"personas"_s), 1);
    QCOMPARE(SqliteWatch::end(), QStringList());
    QVERIFY(!SqliteWatch::ranOut());
    QVERIFY(SqliteWatch::stepsTaken() < many / 100);
}

void TestHostileFiles::an_endless_view_holds_an_import_up_until_it_is_interrupted()
{
    Stage stage;
    QVERIFY(stage.exec(persona(u"mine"_s)));
    Stage::setTestMode(true);
    const QString pack = writePack(stage.path(u"endless"_s), endlessPersonas());
    QVERIFY(stage.call("importPack", pack));
    QVERIFY(SqliteWatch::ranOut());
    QVERIFY(SqliteWatch::stepsTaken() >= many);
    SqliteWatch::allow(many);
    QCOMPARE(stage.column(u"SELECT uuid FROM personas"_s), QStringList{u"mine"_s});
    QVERIFY(stage.call("importPack", writePack(stage.path(u"fine"_s), {persona(u"theirs"_s)})));
    QCOMPARE(stage.count(u"personas"_s), 2);
    QVERIFY(!SqliteWatch::ranOut());
}

void TestHostileFiles::an_endless_view_holds_the_browsing_up_until_it_is_interrupted()
{
    Stage stage;
    const QString pack = writePack(stage.path(u"endless"_s), endlessPersonas());
    {
        const MessageLog log;
        QVERIFY(stage.call("loadPack", pack));
        QVERIFY(SqliteWatch::ranOut());
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().constFirst().startsWith("interrupted"_L1));
    }
    SqliteWatch::allow(many);
    QVERIFY(stage.call("loadPack", writePack(stage.path(u"fine"_s), {persona(u"theirs"_s)})));
    QVERIFY(!SqliteWatch::ranOut());
    QCOMPARE(shownPersonas(stage), QStringList{u"Number theirs"_s});
}

void TestHostileFiles::a_view_that_is_listed_as_a_table_makes_a_file_unreadable()
{
    Stage stage;
    const QString path =
        writeProject(stage.path(u"endless"_s), endlessPersonas()
                                                   << u"PRAGMA writable_schema=ON"_s
                                                   << u"UPDATE sqlite_master SET type='table' WHERE name='personas'"_s);
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", path));
        QVERIFY(log.warnings().constFirst().startsWith("malformed database schema"_L1));
    }
    QVERIFY(!SqliteWatch::ranOut());
    QVERIFY(stage.result("openProjectFromFile", writeProject(stage.path(u"fine"_s), {persona(u"mine"_s)})));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number mine"_s});
}

void TestHostileFiles::an_endless_view_in_a_project_is_passed_over()
{
    Stage stage;
    const QString path =
        writeProject(stage.path(u"view"_s), endlessPersonas() << u"INSERT INTO tags VALUES (1,'urban')"_s);
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(!SqliteWatch::ranOut());
    QCOMPARE(stage.count(u"personas"_s), 0);
    QCOMPARE(stage.count(u"tags"_s), 1);
}

void TestHostileFiles::triggers_of_a_file_do_not_run()
{
    Stage stage;
    const QStringList triggers{persona(u"theirs"_s),
                               u"CREATE TRIGGER a AFTER INSERT ON personas BEGIN DELETE FROM personas; END"_s,
                               u"CREATE TRIGGER b BEFORE INSERT ON tags BEGIN SELECT RAISE(ABORT,'no'); END"_s};
    const QString path = writeProject(stage.path(u"project"_s), triggers);
    const QString pack = writePack(stage.path(u"pack"_s), triggers);
    Stage::setTestMode(true);
    stage.window();
    SqliteWatch::begin(stage.database());
    QVERIFY(stage.result("openProjectFromFile", path));
    QVERIFY(stage.call("importPack", pack));
    QVERIFY(stage.call("insertPersona", u"Number Mine"_s, u"tea"_s, u"urban"_s));
    QCOMPARE(SqliteWatch::end(), QStringList());
    QCOMPARE(stage.count(u"personas"_s), 2);
    QCOMPARE(stage.count(u"tags"_s), 1);
}

void TestHostileFiles::a_damaged_index_is_gone_with_the_next_project()
{
    Stage stage;
    // What is called the index of the uuids is that of the tags' names.
    const QString path = writeProject(
        stage.path(u"damaged"_s),
        {persona(u"theirs"_s), u"INSERT INTO tags (name) VALUES ('urban'),('rural')"_s, u"PRAGMA writable_schema=ON"_s,
         u"UPDATE sqlite_master SET rootpage=(SELECT rootpage FROM sqlite_master WHERE name='sqlite_autoindex_tags_1') "
         "WHERE name='sqlite_autoindex_personas_1'"_s});
    {
        const MessageLog log;
        QVERIFY(stage.result("openProjectFromFile", path));
        QCOMPARE(log.warnings(), QStringList{u"database disk image is malformed Unable to fetch row"_s});
    }
    QVERIFY(stage.value(u"PRAGMA integrity_check(1)"_s).toString() != "ok"_L1);
    QVERIFY(stage.result("openProjectFromFile", writeProject(stage.path(u"fine"_s), {persona(u"mine"_s)})));
    QCOMPARE(stage.value(u"PRAGMA integrity_check(1)"_s).toString(), u"ok"_s);
    QCOMPARE(shownPersonas(stage), QStringList{u"Number mine"_s});
}

void TestHostileFiles::the_log_beside_a_project_is_read_with_it()
{
    Stage stage;
    const QString path = stage.path(u"logged"_s);
    {
        SideDatabase other(writeProject(stage.path(u"other"_s)));
        QVERIFY(other.value(u"PRAGMA journal_mode=WAL"_s).isValid());
        QVERIFY(other.exec({u"PRAGMA wal_autocheckpoint=0"_s, persona(u"late"_s)}));
        QVERIFY(QFile::copy(stage.path(u"other"_s), path));
        QVERIFY(QFile::copy(stage.path(u"other-wal"_s), path + "-wal"_L1));
    }
    QVERIFY(!readBytes(path).contains("Number late"));
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(shownPersonas(stage), QStringList{u"Number late"_s});
    // SQLite puts a log into its file when the last connection to it is closed.
    QVERIFY(readBytes(path).contains("Number late"));
    QVERIFY(!QFile::exists(path + "-wal"_L1));
    QVERIFY(!QFile::exists(path + "-shm"_L1));
}

ORRINET_TEST(TestHostileFiles)
#include "tst_hostilefiles.moc"

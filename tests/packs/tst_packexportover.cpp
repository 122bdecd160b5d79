// An export to a file that is there: it is added to.

#include "tests/packs/samplepacks.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Enters two personas with a tag each into the project and exports it to a file.
static bool exportOver(Stage &stage, const QString &path)
{
    return enter(stage, PersonaEntered{.uuid = u"u1"_s, .name = u"One"_s, .tags = {u"rural"_s}},
                 PersonaEntered{.uuid = u"u2"_s, .name = u"Two"_s, .tags = {u"urban"_s}}) &&
           stage.result("exportPackToFile", path);
}

static QStringList linksIn(const QString &path)
{
    return columnIn(path, u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY rowid"_s);
}

class TestPackExportOver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_the_pack_stay_and_new_ones_come()
    {
        Stage stage;
        const QString path = packOf(stage.path(u"old.ornk"_s), PersonaEntered{u"u1"_s, u"Older One"_s, u"Older."_s},
                                    PersonaEntered{u"u9"_s, u"Nine"_s, u"Ninth."_s}, TagEntered{1, u"rural"_s},
                                    TagEntered{9, u"remote"_s}, LinkEntered{u"u1"_s, 1}, LinkEntered{u"u9"_s, 9});
        SideDatabase pack(path);
        QVERIFY(pack.exec({u"INSERT INTO pack_info (uuid, name, format_version) VALUES ('p', 'Twins', 3)"_s,
                           u"INSERT INTO change_log (entity) VALUES ('persona')"_s}));
        QVERIFY(exportOver(stage, path));

        QCOMPARE(pack.rows(u"SELECT uuid, name, attributes FROM personas ORDER BY rowid"_s),
                 Rows({{u"u1"_s, u"Older One"_s, u"Older."_s},
                       {u"u9"_s, u"Nine"_s, u"Ninth."_s},
                       {u"u2"_s, u"Two"_s, u""_s}}));
        QCOMPARE(pack.rows(u"SELECT id, name FROM tags ORDER BY id"_s),
                 Rows({{1, u"rural"_s}, {2, u"urban"_s}, {9, u"remote"_s}}));
        QCOMPARE(linksIn(path), QStringList({u"u1 1"_s, u"u9 9"_s, u"u2 2"_s}));
        QCOMPARE(pack.column(u"SELECT name || format_version FROM pack_info"_s), QStringList{u"Twins3"_s});
        QCOMPARE(pack.column(u"SELECT entity FROM change_log"_s), QStringList{u"persona"_s});
        QCOMPARE(pack.column(u"SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid"_s),
                 packStatements());
    }

    void exporting_again_changes_nothing_that_is_there()
    {
        Stage stage;
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(exportOver(stage, path));
        stage.call("updatePersona", u"u1"_s, u"Renamed"_s, u"Another."_s, u"coastal"_s);
        QVERIFY(stage.result("exportPackToFile", path));

        QCOMPARE(namesIn(path), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(columnIn(path, u"SELECT name FROM tags ORDER BY id"_s),
                 QStringList({u"rural"_s, u"urban"_s, u"coastal"_s}));
        QCOMPARE(linksIn(path), QStringList({u"u1 1"_s, u"u2 2"_s, u"u1 3"_s}));
    }

    void a_tag_that_clashes_is_left_out_and_its_links_are_not()
    {
        Stage stage;
        // One has the id of a tag of the project, one the name.
        const QString path = packOf(stage.path(u"old.ornk"_s), TagEntered{1, u"coastal"_s}, TagEntered{7, u"urban"_s});
        QVERIFY(exportOver(stage, path));
        QCOMPARE(columnIn(path, u"SELECT id || ' ' || name FROM tags ORDER BY id"_s),
                 QStringList({u"1 coastal"_s, u"7 urban"_s}));
        QCOMPARE(linksIn(path), QStringList({u"u1 1"_s, u"u2 2"_s}));
    }

    void rows_go_in_table_by_table()
    {
        Stage stage;
        QStringList notes = {u"CREATE TABLE noted (what TEXT)"_s};
        QStringList expected;
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s}) {
            notes.append(
                u"CREATE TRIGGER note_%1 AFTER INSERT ON %1 BEGIN INSERT INTO noted VALUES ('%1'); END"_s.arg(table));
            expected << table << table;
        }
        const QString path = writePack(stage.path(u"old.ornk"_s), notes);
        QVERIFY(exportOver(stage, path));
        QCOMPARE(columnIn(path, u"SELECT what FROM noted ORDER BY rowid"_s), expected);
    }

    void a_row_that_fails_keeps_no_other_out()
    {
        Stage stage;
        const QString refuse = u"CREATE TRIGGER refuse_%1 BEFORE INSERT ON %1 WHEN NEW.%2 = %3 "
                               "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s;
        const QString path = writePack(stage.path(u"old.ornk"_s), {refuse.arg(u"personas"_s, u"uuid"_s, u"'u1'"_s),
                                                                   refuse.arg(u"tags"_s, u"id"_s, u"1"_s),
                                                                   refuse.arg(u"persona_tags"_s, u"tag_id"_s, u"1"_s)});
        QVERIFY(exportOver(stage, path));
        QCOMPARE(namesIn(path), QStringList{u"Two"_s});
        QCOMPARE(columnIn(path, u"SELECT name FROM tags"_s), QStringList{u"urban"_s});
        QCOMPARE(linksIn(path), QStringList{u"u2 2"_s});
    }

    void missing_tables_are_added_and_others_left_alone()
    {
        Stage stage;
        const QString path = writeDatabase(stage.path(u"other.ornk"_s),
                                           {u"CREATE TABLE personas (id INTEGER, text TEXT)"_s,
                                            u"INSERT INTO personas VALUES (1, 'theirs')"_s,
                                            u"CREATE TABLE more (a TEXT)"_s, u"INSERT INTO more VALUES ('b')"_s});
        QVERIFY(exportOver(stage, path));
        QCOMPARE(columnIn(path, u"SELECT text FROM personas"_s), QStringList{u"theirs"_s});
        QCOMPARE(columnIn(path, u"SELECT a FROM more"_s), QStringList{u"b"_s});
        QCOMPARE(columnIn(path, u"SELECT name FROM tags ORDER BY id"_s), QStringList({u"rural"_s, u"urban"_s}));
        QCOMPARE(linksIn(path).size(), 2);
        QCOMPARE(columnIn(path, u"SELECT COUNT(*) FROM pack_info"_s), QStringList{u"0"_s});
    }

    void a_project_file_takes_the_personas_too()
    {
        Stage stage;
        const QString path = stage.path(u"saved.ormt"_s);
        QVERIFY(stage.result("saveProjectToFile", path));
        QVERIFY(exportOver(stage, path));
        QCOMPARE(namesIn(path), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(columnIn(path, u"SELECT preamble FROM boilerplate"_s),
                 QStringList{u"Act as the following persona."_s});
        QCOMPARE(columnIn(path, u"SELECT COUNT(*) FROM pack_info"_s), QStringList{u"0"_s});
    }
};

ORRINET_TEST(TestPackExportOver)
#include "tst_packexportover.moc"

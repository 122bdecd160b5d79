// An export to a file that is there: it is added to.

#include "tests/packs/packfile.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What a project of two personas and two tags exports.
static QStringList project()
{
    return {persona(u"u1"_s, u"One"_s), persona(u"u2"_s, u"Two"_s), tag(1, u"rural"_s),
            tag(2, u"urban"_s),         link(u"u1"_s, 1),           link(u"u2"_s, 2)};
}

class TestPackExportOver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_the_pack_stay_and_new_ones_come()
    {
        Stage stage;
        const QString path =
            writePack(stage.path(u"old.ornk"_s),
                      {persona(u"u1"_s, u"Older One"_s), persona(u"u9"_s, u"Nine"_s), tag(1, u"rural"_s),
                       tag(9, u"remote"_s), link(u"u1"_s, 1), link(u"u9"_s, 9),
                       u"INSERT INTO pack_info (uuid, name, format_version) VALUES ('p', 'Twins', 3)"_s,
                       u"INSERT INTO change_log (entity) VALUES ('persona')"_s});
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));

        FileDatabase pack(path);
        QCOMPARE(
            pack.column(u"SELECT uuid || ' ' || name || ' ' || attributes FROM personas ORDER BY rowid"_s),
            QStringList({u"u1 Older One Older One in full"_s, u"u9 Nine Nine in full"_s, u"u2 Two Two in full"_s}));
        QCOMPARE(pack.column(u"SELECT id || ' ' || name FROM tags ORDER BY id"_s),
                 QStringList({u"1 rural"_s, u"2 urban"_s, u"9 remote"_s}));
        QCOMPARE(pack.column(u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u1 1"_s, u"u9 9"_s, u"u2 2"_s}));
        QCOMPARE(pack.column(u"SELECT name || format_version FROM pack_info"_s), QStringList{u"Twins3"_s});
        QCOMPARE(pack.column(u"SELECT entity FROM change_log"_s), QStringList{u"persona"_s});
        QCOMPARE(pack.column(u"SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid"_s),
                 packStatements());
    }

    void exporting_again_changes_nothing_that_is_there()
    {
        Stage stage;
        QVERIFY(enter(stage, project()));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"Renamed"_s, u"Another."_s, u"coastal"_s));
        QVERIFY(stage.result("exportPackToFile", path));

        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM personas ORDER BY uuid"_s), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(pack.column(u"SELECT name FROM tags ORDER BY id"_s),
                 QStringList({u"rural"_s, u"urban"_s, u"coastal"_s}));
        QCOMPARE(pack.column(u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY 1"_s),
                 QStringList({u"u1 1"_s, u"u1 3"_s, u"u2 2"_s}));
    }

    void a_tag_that_clashes_is_left_out_and_its_links_are_not_data()
    {
        QTest::addColumn<QString>("theirs");
        QTest::addColumn<QStringList>("tags");
        QTest::addRow("id taken") << tag(1, u"coastal"_s) << QStringList({u"1 coastal"_s, u"2 urban"_s});
        QTest::addRow("name taken") << tag(7, u"rural"_s) << QStringList({u"2 urban"_s, u"7 rural"_s});
    }

    void a_tag_that_clashes_is_left_out_and_its_links_are_not()
    {
        QFETCH(QString, theirs);
        Stage stage;
        const QString path = writePack(stage.path(u"old.ornk"_s), {theirs});
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QTEST(pack.column(u"SELECT id || ' ' || name FROM tags ORDER BY id"_s), "tags");
        QCOMPARE(pack.column(u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u1 1"_s, u"u2 2"_s}));
    }

    void rows_go_in_table_by_table()
    {
        Stage stage;
        QStringList notes = {u"CREATE TABLE noted (what TEXT)"_s};
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s})
            notes.append(
                u"CREATE TRIGGER note_%1 AFTER INSERT ON %1 BEGIN INSERT INTO noted VALUES ('%1'); END"_s.arg(table));
        const QString path = writePack(stage.path(u"old.ornk"_s), notes);
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(
            pack.column(u"SELECT what FROM noted ORDER BY rowid"_s),
            QStringList({u"personas"_s, u"personas"_s, u"tags"_s, u"tags"_s, u"persona_tags"_s, u"persona_tags"_s}));
    }

    void a_row_that_fails_keeps_no_other_out()
    {
        Stage stage;
        const QString refuse = u"CREATE TRIGGER refuse_%1 BEFORE INSERT ON %1 WHEN NEW.%2 = %3 "
                               "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s;
        const QString path = writePack(stage.path(u"old.ornk"_s), {refuse.arg(u"personas"_s, u"uuid"_s, u"'u1'"_s),
                                                                   refuse.arg(u"tags"_s, u"id"_s, u"1"_s),
                                                                   refuse.arg(u"persona_tags"_s, u"tag_id"_s, u"1"_s)});
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT uuid FROM personas"_s), QStringList{u"u2"_s});
        QCOMPARE(pack.column(u"SELECT name FROM tags"_s), QStringList{u"urban"_s});
        QCOMPARE(pack.column(u"SELECT persona_uuid FROM persona_tags"_s), QStringList{u"u2"_s});
    }

    void missing_tables_are_added_and_others_left_alone()
    {
        Stage stage;
        const QString path = stage.path(u"other.ornk"_s);
        {
            FileDatabase other(path);
            QVERIFY(other.exec({u"CREATE TABLE personas (id INTEGER, text TEXT)"_s,
                                u"INSERT INTO personas VALUES (1, 'theirs')"_s, u"CREATE TABLE more (a TEXT)"_s,
                                u"INSERT INTO more VALUES ('b')"_s}));
        }
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT text FROM personas"_s), QStringList{u"theirs"_s});
        QCOMPARE(pack.column(u"SELECT a FROM more"_s), QStringList{u"b"_s});
        QCOMPARE(pack.column(u"SELECT name FROM tags ORDER BY id"_s), QStringList({u"rural"_s, u"urban"_s}));
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM persona_tags"_s), QStringList{u"2"_s});
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM pack_info"_s), QStringList{u"0"_s});
    }

    void a_project_file_takes_the_personas_too()
    {
        Stage stage;
        const QString path = stage.path(u"saved.ormt"_s);
        QVERIFY(stage.result("saveProjectToFile", path));
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase file(path);
        QCOMPARE(file.column(u"SELECT name FROM personas ORDER BY 1"_s), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(file.column(u"SELECT preamble FROM boilerplate"_s), QStringList{u"Act as the following persona."_s});
        QVERIFY(file.database().tables().contains(u"pack_info"_s));
    }

    void a_file_of_another_kind_stays_as_it_is()
    {
        Stage stage;
        const QByteArray text("This is a letter, and not a short one either: SQLite reads a hundred bytes at first.\n");
        const QString path = writeFile(stage.path(u"letter.txt"_s), text.repeated(40));
        QVERIFY(enter(stage, project()));
        QVERIFY(stage.result("exportPackToFile", path));
        QCOMPARE(bytesOf(path), text.repeated(40));
    }
};

QTEST_MAIN(TestPackExportOver)
#include "tst_packexportover.moc"

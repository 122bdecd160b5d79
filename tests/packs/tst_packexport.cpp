// What an export writes to a new file.

#include "tests/packs/packfile.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Personas with something, nothing and an empty text in the columns.
static QStringList threePersonas()
{
    return {
        u"INSERT INTO personas VALUES ('u2', 'Number Two', 'Calm.', NULL, NULL, '2001-02-03T04:05:06.789', "
        "'2001-02-03 04:05:06')"_s,
        u"INSERT INTO personas VALUES ('u1', 'Number One', 'Loud.', 'You are loud.', 'by hand', 'yesterday', NULL)"_s,
        u"INSERT INTO personas VALUES ('u3', '', '', '', '', '', '')"_s,
    };
}

class TestPackExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pack_has_five_tables()
    {
        Stage stage;
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid"_s),
                 packStatements());
    }

    void empty_project_gives_an_empty_pack()
    {
        Stage stage;
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        const FileDatabase pack(path);
        QCOMPARE(everyRow(pack.database()),
                 QStringList({u"change_log"_s, u"pack_info"_s, u"persona_tags"_s, u"personas"_s, u"tags"_s}));
    }

    void all_seven_columns_arrive_unchanged()
    {
        Stage stage;
        QVERIFY(enter(stage, threePersonas()));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        const FileDatabase pack(path);
        const auto all = u"SELECT uuid, name, attributes, system_prompt, notes, created_at, modified_at "
                         "FROM personas ORDER BY uuid"_s;
        QCOMPARE(literals(pack.database(), all), literals(stage.project(), all));
        QCOMPARE(count(stage, u"personas"_s), 3);
    }

    void personas_go_in_as_the_project_gives_them()
    {
        Stage stage;
        QVERIFY(enter(stage, threePersonas()));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT uuid FROM personas ORDER BY rowid"_s),
                 column(stage, u"SELECT uuid,name,attributes FROM personas"_s));
    }

    void tags_keep_their_ids_and_unused_ones_go_along()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s), tag(3, u"rural"_s), tag(7, u"New York"_s), tag(-4, u""_s),
                              u"INSERT INTO tags VALUES (9, NULL)"_s, link(u"u1"_s, 3)}));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        const FileDatabase pack(path);
        const QString tags = u"SELECT id, name FROM tags ORDER BY id"_s;
        QCOMPARE(literals(pack.database(), tags), literals(stage.project(), tags));
        QCOMPARE(count(stage, u"tags"_s), 4);
    }

    void links_of_a_deleted_persona_go_along()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s), persona(u"u2"_s, u"Two"_s), tag(1, u"rural"_s),
                              link(u"u1"_s, 1), link(u"u2"_s, 1)}));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(stage.call("deletePersona"));
        // A link to a tag that does not exist is an orphan, too.
        QVERIFY(enter(stage, {link(u"u2"_s, 99)}));

        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT uuid FROM personas"_s), QStringList{u"u2"_s});
        QCOMPARE(pack.column(u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY 1"_s),
                 QStringList({u"u1 1"_s, u"u2 1"_s, u"u2 99"_s}));
    }

    void nothing_but_personas_and_tags_goes_along()
    {
        Stage stage;
        QVERIFY(enter(stage, threePersonas()));
        QVERIFY(stage.call("insertQuestion", u"Why?"_s, u"text"_s, false));
        QVERIFY(enter(stage, {tag(1, u"rural"_s), link(u"u1"_s, 1),
                              u"INSERT INTO responses (persona_uuid, question_id, text_answer) "
                              "VALUES ('u1', 1, 'because')"_s,
                              u"INSERT INTO metadata VALUES ('key', 'value')"_s}));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid"_s),
                 QStringList({u"personas"_s, u"tags"_s, u"persona_tags"_s, u"pack_info"_s, u"change_log"_s}));
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM personas"_s), QStringList{u"3"_s});
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM pack_info"_s), QStringList{u"0"_s});
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM change_log"_s), QStringList{u"0"_s});
    }

    void the_whole_project_goes_out_whatever_the_filter_shows()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s), persona(u"u2"_s, u"Two"_s), tag(1, u"rural"_s),
                              tag(2, u"urban"_s), link(u"u1"_s, 1), link(u"u1"_s, 2), link(u"u2"_s, 2)}));
        refreshQuietly(stage);
        tagFilter(stage)->setCurrentText(u"rural"_s);
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});

        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM personas ORDER BY 1"_s), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(pack.column(u"SELECT name FROM tags ORDER BY 1"_s), QStringList({u"rural"_s, u"urban"_s}));
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM persona_tags"_s), QStringList{u"3"_s});
        QCOMPARE(tagFilter(stage)->currentText(), u"rural"_s);
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});
    }

    void project_and_views_stay_as_they_were_data()
    {
        QTest::addColumn<bool>("changed");
        QTest::addRow("unchanged project") << false;
        QTest::addRow("changed project") << true;
    }

    void project_and_views_stay_as_they_were()
    {
        QFETCH(bool, changed);
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s), tag(1, u"rural"_s), link(u"u1"_s, 1)}));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        // What a refresh would bring into view.
        QVERIFY(enter(stage, {persona(u"u2"_s, u"Two"_s), tag(2, u"urban"_s)}));
        if (changed)
            stage.window()->markDirty();
        const QStringList rows = everyRow(stage.project());

        QVERIFY(stage.result("exportPackToFile", stage.path(u"new.ornk"_s)));
        QCOMPARE(everyRow(stage.project()), rows);
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});
        QCOMPARE(personaTable(stage)->currentRow(), 0);
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
        QCOMPARE(stage.asksBeforeClosing(), changed);
    }

    void without_a_table_of_tags_the_packs_stay_empty_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addRow("no table") << QStringList{u"DROP TABLE tags"_s};
        // SQLite would find it; the project counts as having none.
        QTest::addRow("a name in capitals")
            << QStringList{u"ALTER TABLE tags RENAME TO other"_s, u"ALTER TABLE other RENAME TO TAGS"_s};
        QTest::addRow("a view") << QStringList{u"ALTER TABLE tags RENAME TO other"_s,
                                               u"CREATE VIEW tags AS SELECT * FROM other"_s};
    }

    void without_a_table_of_tags_the_packs_stay_empty()
    {
        QFETCH(QStringList, statements);
        Stage stage;
        QVERIFY(
            enter(stage, QStringList{persona(u"u1"_s, u"One"_s), tag(1, u"rural"_s), link(u"u1"_s, 1)} + statements));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM personas"_s), QStringList{u"One"_s});
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM tags"_s), QStringList{u"0"_s});
        QCOMPARE(pack.column(u"SELECT COUNT(*) FROM persona_tags"_s), QStringList{u"0"_s});
    }

    void tables_that_the_project_lacks_are_no_failure_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::addColumn<QStringList>("counts");
        QTest::addRow("personas") << u"personas"_s << QStringList({u"0"_s, u"1"_s, u"1"_s});
        QTest::addRow("persona_tags") << u"persona_tags"_s << QStringList({u"1"_s, u"1"_s, u"0"_s});
    }

    void tables_that_the_project_lacks_are_no_failure()
    {
        QFETCH(QString, missing);
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s), tag(1, u"rural"_s), link(u"u1"_s, 1)}));
        QVERIFY(stage.exec(u"DROP TABLE "_s + missing));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QTEST(pack.column(u"SELECT COUNT(*) FROM personas UNION ALL SELECT COUNT(*) FROM tags "
                          "UNION ALL SELECT COUNT(*) FROM persona_tags"_s),
              "counts");
    }

    void test_mode_makes_no_difference()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s)}));
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        FileDatabase pack(path);
        QCOMPARE(pack.column(u"SELECT name FROM personas"_s), QStringList{u"One"_s});
    }

    void without_an_open_project_there_is_no_file()
    {
        Stage stage;
        stage.project().close();
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(!stage.result("exportPackToFile", path));
        QVERIFY(!QFile::exists(path));
    }
};

QTEST_MAIN(TestPackExport)
#include "tst_packexport.moc"

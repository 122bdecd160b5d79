// What an export writes to a new file.

#include "tests/packs/samplepacks.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QFile>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// Exports the project to a new file and gives its path, none if that fails.
static QString exported(Stage &stage)
{
    const QString path = stage.path(u"new.ornk"_s);
    return stage.result("exportPackToFile", path) ? path : QString();
}

class TestPackExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_empty_project_gives_a_pack_of_five_empty_tables()
    {
        Stage stage;
        SideDatabase pack(exported(stage));
        QCOMPARE(pack.column(u"SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid"_s),
                 packStatements());
        QCOMPARE(everyRow(pack.database()),
                 QStringList({u"change_log"_s, u"pack_info"_s, u"persona_tags"_s, u"personas"_s, u"tags"_s}));
    }

    // With something, nothing and an empty text in the columns, and not in the order of their keys.
    void rows_arrive_unchanged_in_the_projects_order_and_nothing_else_does()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u2"_s, u"Number Two"_s, u"Calm."_s},
                      PersonaEntered{u"u3"_s, u""_s, u""_s, u""_s, u""_s, {}, u""_s, u""_s}, TagEntered{3, u"rural"_s},
                      TagEntered{7, u"New York"_s}, TagEntered{-4, u""_s}, TagEntered{9, {}}, LinkEntered{u"u2"_s, 9},
                      LinkEntered{u"u2"_s, 3}, QuestionEntered{.prompt = u"Why?"_s}));
        QVERIFY(enterBeekeeper(stage, u"u1"_s, u"Number One"_s));
        QVERIFY(stage.exec(u"INSERT INTO metadata VALUES ('key', 'value')"_s));
        SideDatabase pack(exported(stage));
        for (const auto &[query, number] :
             {std::pair(u"SELECT uuid, name, attributes, system_prompt, notes, created_at, modified_at FROM personas "
                        "ORDER BY rowid"_s,
                        3),
              std::pair(u"SELECT id, name FROM tags ORDER BY id"_s, 4),
              std::pair(u"SELECT persona_uuid, tag_id FROM persona_tags ORDER BY tag_id"_s, 2)}) {
            const QStringList rows = literals(stage.database(), query);
            QCOMPARE(rows.size(), number);
            QCOMPARE(literals(pack.database(), query), rows);
        }
        QCOMPARE(pack.column(u"SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid"_s),
                 QStringList({u"personas"_s, u"tags"_s, u"persona_tags"_s, u"pack_info"_s, u"change_log"_s}));
        QCOMPARE(pack.count(u"pack_info"_s), 0);
        QCOMPARE(pack.count(u"change_log"_s), 0);
    }

    void links_of_a_deleted_persona_go_along()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u1"_s, .tags = {u"rural"_s}},
                      PersonaEntered{.uuid = u"u2"_s, .tags = {u"rural"_s}}));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.call("deletePersona");
        // A link to a tag that does not exist is an orphan, too.
        QVERIFY(enter(stage, LinkEntered{u"u2"_s, 99}));

        const QString path = exported(stage);
        QCOMPARE(columnIn(path, u"SELECT uuid FROM personas"_s), QStringList{u"u2"_s});
        QCOMPARE(columnIn(path, u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY 1"_s),
                 QStringList({u"u1 1"_s, u"u2 1"_s, u"u2 99"_s}));
    }

    void the_whole_project_goes_out_whatever_the_filter_shows()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u1"_s, .name = u"One"_s, .tags = {u"rural"_s, u"urban"_s}},
                      PersonaEntered{.uuid = u"u2"_s, .name = u"Two"_s, .tags = {u"urban"_s}}));
        refreshQuietly(stage);
        tagFilter(stage)->setCurrentText(u"rural"_s);
        QCOMPARE(shownPersonas(stage), QStringList{u"One"_s});

        SideDatabase pack(exported(stage));
        QCOMPARE(pack.column(u"SELECT name FROM personas ORDER BY 1"_s), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(knownTags(pack), QStringList({u"rural"_s, u"urban"_s}));
        QCOMPARE(pack.count(u"persona_tags"_s), 3);
        QCOMPARE(tagFilter(stage)->currentText(), u"rural"_s);
        QCOMPARE(shownPersonas(stage), QStringList{u"One"_s});
    }

    void project_and_views_stay_as_they_were()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u1"_s, .name = u"One"_s, .tags = {u"rural"_s}}));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        // What a refresh would bring into view.
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u2"_s, .name = u"Two"_s, .tags = {u"urban"_s}}));
        const QStringList rows = everyRow(stage.database());

        QCOMPARE(namesIn(exported(stage)), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(everyRow(stage.database()), rows);
        QCOMPARE(shownPersonas(stage), QStringList{u"One"_s});
        QCOMPARE(personaTable(stage)->currentRow(), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
        QVERIFY(!stage.asksBeforeClosing());
        stage.window()->markDirty();
        QVERIFY(!exported(stage).isEmpty());
        QVERIFY(stage.asksBeforeClosing());
    }

    void tables_that_the_project_lacks_are_no_failure_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QStringList>("counts");
        const QStringList personasAlone = {u"1"_s, u"0"_s, u"0"_s};
        QTest::addRow("personas") << QStringList{u"DROP TABLE personas"_s} << QStringList{u"0"_s, u"1"_s, u"1"_s};
        QTest::addRow("persona_tags") << QStringList{u"DROP TABLE persona_tags"_s}
                                      << QStringList{u"1"_s, u"1"_s, u"0"_s};
        // Without the tags there are no links to them.
        QTest::addRow("tags") << QStringList{u"DROP TABLE tags"_s} << personasAlone;
        // SQLite would find these two; the project counts as having none.
        QTest::addRow("tags, by a name in capitals")
            << QStringList{u"ALTER TABLE tags RENAME TO other"_s, u"ALTER TABLE other RENAME TO TAGS"_s}
            << personasAlone;
        QTest::addRow("tags, by a view") << QStringList{u"ALTER TABLE tags RENAME TO other"_s,
                                                        u"CREATE VIEW tags AS SELECT * FROM other"_s}
                                         << personasAlone;
    }

    void tables_that_the_project_lacks_are_no_failure()
    {
        QFETCH(QStringList, statements);
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u1"_s, .tags = {u"rural"_s}}));
        QVERIFY(stage.exec(statements));
        QTEST(columnIn(exported(stage), u"SELECT COUNT(*) FROM personas UNION ALL SELECT COUNT(*) FROM tags "
                                        "UNION ALL SELECT COUNT(*) FROM persona_tags"_s),
              "counts");
    }

    void without_an_open_project_there_is_no_file()
    {
        Stage stage;
        stage.database().close();
        const QString path = stage.path(u"new.ornk"_s);
        QVERIFY(!stage.result("exportPackToFile", path));
        QVERIFY(!QFile::exists(path));
    }
};

ORRINET_TEST(TestPackExport)
#include "tst_packexport.moc"

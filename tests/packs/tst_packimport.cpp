// What an import brings into the project, and what it leaves alone.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/testcase.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// A pack of two personas, one with something in every column but one, and a tag on each.
static QString writeTwo(const Stage &stage)
{
    return packOf(stage.path(u"two.ornk"_s), TagEntered{7, u"rural"_s}, TagEntered{8, u"New York"_s},
                  PersonaEntered{.uuid = u"u2"_s, .name = u"Two"_s, .tags = {u"New York"_s}},
                  PersonaEntered{.uuid = u"u1"_s,
                                 .name = u"One"_s,
                                 .attributes = u"Loud."_s,
                                 .systemPrompt = u"You are loud."_s,
                                 .notes = u"by hand"_s,
                                 .tags = {u"rural"_s},
                                 .createdAt = u"yesterday"_s,
                                 .modifiedAt = {}});
}

static QStringList personaRows(const QSqlDatabase &database)
{
    return literals(database, u"SELECT uuid, name, attributes, system_prompt, notes, created_at, modified_at "
                              "FROM personas ORDER BY rowid"_s);
}

class TestPackImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void project_without_personas_takes_all_unasked()
    {
        Stage stage;
        const QString path = writeTwo(stage);
        const QByteArray before = readBytes(path);
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, path));

        QCOMPARE(personaRows(stage.database()), personaRows(SideDatabase(path).database()));
        QCOMPARE(cells(personaTable(stage)),
                 QList<QStringList>({{u"One"_s, u"u1"_s, u"rural"_s, QString(), u"yesterday"_s, u""_s},
                                     {u"Two"_s, u"u2"_s, u"New York"_s, QString(), u"2001-02-03T04:05:06.789"_s,
                                      u"2001-02-03 04:05:06"_s}}));
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"New York"_s, u"rural"_s}));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList{u"New York"_s});
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(readBytes(path), before);
    }

    void a_persona_with_a_system_prompt_speaks_from_it()
    {
        Stage stage;
        stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
        QVERIFY(importUnasked(stage, writeTwo(stage)));
        const QString conversation = ConversationBox(stage).show(u"One"_s, u"1"_s);
        QVERIFY(conversation.contains(u"You are loud."_s));
        QVERIFY(!conversation.contains(u"Loud."_s));
    }

    void a_pack_of_tags_alone_adds_them()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, packOf(stage.path(u"tags.ornk"_s), TagEntered{7, u"rural"_s})));
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(stage.asksBeforeClosing());
    }

    void test_mode_appends_unasked()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u9"_s, .name = u"Nine"_s, .tags = {u"urban"_s}}));
        Stage::setTestMode(true);
        QVERIFY(importUnasked(stage, writeTwo(stage)));
        QCOMPARE(shownPersonas(stage), QStringList({u"Nine"_s, u"One"_s, u"Two"_s}));
        QCOMPARE(knownTags(stage), QStringList({u"urban"_s, u"rural"_s, u"New York"_s}));
    }

    void a_persona_that_is_there_stays_and_gains_the_packs_tags()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u1"_s, .name = u"Mine"_s, .tags = {u"urban"_s}}));
        const QStringList mine = personaRows(stage.database());
        QVERIFY(importAppending(stage, writeTwo(stage)));
        QCOMPARE(personaRows(stage.database()).first(1), mine);
        QCOMPARE(stage.column(u"SELECT uuid FROM personas ORDER BY rowid"_s), QStringList({u"u1"_s, u"u2"_s}));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"urban"_s, u"rural"_s}));
    }

    void a_uuid_is_compared_as_text()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"Mine"_s}));
        QVERIFY(
            importAppending(stage, packOf(stage.path(u"blobs.ornk"_s), PersonaEntered{QByteArray("u1"), u"Left out"_s},
                                          PersonaEntered{QByteArray("u2"), u"Taken"_s})));
        QCOMPARE(shownPersonas(stage), QStringList({u"Mine"_s, u"Taken"_s}));
        QCOMPARE(stage.value(u"SELECT typeof(uuid) FROM personas WHERE name = 'Taken'"_s), QVariant(u"blob"_s));
    }

    void personas_without_a_uuid_arrive_every_time()
    {
        Stage stage;
        const QString path = packOf(stage.path(u"nobody.ornk"_s), PersonaEntered{.name = u"Nobody"_s},
                                    PersonaEntered{.name = u"Nobody else"_s});
        QVERIFY(importUnasked(stage, path));
        QVERIFY(importAppending(stage, path));
        QCOMPARE(stage.column(u"SELECT name FROM personas WHERE uuid IS NULL ORDER BY rowid"_s),
                 QStringList({u"Nobody"_s, u"Nobody else"_s, u"Nobody"_s, u"Nobody else"_s}));
    }

    void links_without_a_persona_arrive_too()
    {
        Stage stage;
        QVERIFY(importUnasked(stage, packOf(stage.path(u"links.ornk"_s), TagEntered{7, u"rural"_s},
                                            LinkEntered{u"u5"_s, 7}, LinkEntered{u"u6"_s, 99})));
        QCOMPARE(stage.column(u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u5 7"_s, u"u6 99"_s}));
    }

    void appending_leaves_answers_and_the_rest_alone()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"u1"_s, u"Mine"_s));
        QVERIFY(enter(stage, QuestionEntered{.prompt = u"What from?"_s}));
        QVERIFY(stage.exec(u"INSERT INTO metadata VALUES ('key', 'value')"_s));
        const QString others = u"SELECT * FROM responses, questions, metadata, boilerplate, sqlite_sequence"_s;
        const QStringList before = literals(stage.database(), others);
        QVERIFY(!before.isEmpty());
        QVERIFY(importAppending(stage, writeTwo(stage)));
        QCOMPARE(literals(stage.database(), others), before);
    }

    void a_deleted_persona_that_comes_back_finds_its_answers_and_tags()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"u1"_s, u"Mine"_s, {u"urban"_s}));
        QVERIFY(enter(stage, QuestionEntered{.prompt = u"What from?"_s}));
        refreshQuietly(stage);
        QCOMPARE(resultsTable(stage)->rowCount(), 1);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.call("deletePersona");
        QCOMPARE(resultsTable(stage)->rowCount(), 0);

        QVERIFY(importUnasked(stage, packOf(stage.path(u"back.ornk"_s), PersonaEntered{u"u1"_s, u"Back"_s})));
        QCOMPARE(cells(personaTable(stage)).constFirst().first(3), QStringList({u"Back"_s, u"u1"_s, u"urban"_s}));
        QCOMPARE(resultsTable(stage)->rowCount(), 1);
        QVERIFY(cells(resultsTable(stage)).constFirst().contains(u"honey"_s));
    }

    void a_projects_own_pack_changes_no_row_but_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterBeekeeper(stage, u"u1"_s, u"Mine"_s, {u"urban"_s}));
        QVERIFY(enterTag(stage, u"gone"_s, u"rural"_s));
        const QString path = stage.path(u"own.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        const QStringList before = everyRow(stage.database());
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(importAppending(stage, path));
        QCOMPARE(everyRow(stage.database()), before);
        QVERIFY(stage.asksBeforeClosing());
    }

    void tables_that_readers_do_without_may_be_missing()
    {
        Stage stage;
        const QString path = writeTwo(stage);
        QVERIFY(SideDatabase(path).exec({u"DROP TABLE pack_info"_s, u"DROP TABLE change_log"_s}));
        stage.call("loadPack", path);
        QCOMPARE(shownPersonas(stage), QStringList({u"One"_s, u"Two"_s}));
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(stage.count(u"personas"_s), 2);
    }

    // What is named in the pack need not be a table, and its format has no version that anyone looks at.
    void views_of_a_pack_are_as_good_as_tables()
    {
        Stage stage;
        const QString path = writeTwo(stage);
        {
            SideDatabase pack(path);
            QVERIFY(pack.exec(u"INSERT INTO pack_info (uuid, format_version) VALUES ('p', 999)"_s));
            for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s})
                QVERIFY(pack.exec({u"ALTER TABLE %1 RENAME TO old_%1"_s.arg(table),
                                   u"CREATE VIEW %1 AS SELECT * FROM old_%1"_s.arg(table)}));
        }
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownPersonas(stage), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList{u"New York"_s});
    }

    void rows_arrive_table_by_table_in_the_packs_order()
    {
        Stage stage;
        QVERIFY(stage.exec(u"CREATE TABLE noted (what TEXT)"_s));
        for (const auto &[table, key] : {std::pair(u"personas"_s, u"uuid"_s), std::pair(u"tags"_s, u"id"_s),
                                         std::pair(u"persona_tags"_s, u"persona_uuid"_s)}) {
            QVERIFY(stage.exec(u"CREATE TRIGGER note_%1 AFTER INSERT ON %1 "
                               "BEGIN INSERT INTO noted VALUES ('%1 ' || NEW.%2); END"_s.arg(table, key)));
        }
        const QString path = writeTwo(stage);
        QVERIFY(importUnasked(stage, path));
        const QStringList expected = columnIn(path, u"SELECT 'personas ' || uuid, name FROM personas"_s) +
                                     columnIn(path, u"SELECT 'tags ' || id FROM tags"_s) +
                                     columnIn(path, u"SELECT 'persona_tags ' || persona_uuid FROM persona_tags"_s);
        QCOMPARE(expected.size(), 6);
        QCOMPARE(stage.column(u"SELECT what FROM noted ORDER BY rowid"_s), expected);
    }

    void the_views_follow_when_the_pack_is_closed_and_the_mark_comes_last()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        const QString path = writeTwo(stage);
        int refreshes = 0;
        bool closed = false;
        bool marked = true;
        const QObject context;
        connect(personaTable(stage)->model(), &QAbstractItemModel::rowsInserted, &context, [&] {
            ++refreshes;
            closed = QSqlDatabase::contains(u"packfile"_s) && !QSqlDatabase::database(u"packfile"_s, false).isOpen();
            marked = stage.asksBeforeClosing();
        });
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(refreshes, 1);
        QVERIFY(closed);
        QVERIFY(!marked);
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void the_tag_filter_stays_on_the_project()
    {
        Stage stage;
        QVERIFY(importUnasked(stage, writeTwo(stage)));
        QVERIFY(stage.exec(u"UPDATE personas SET name = 'Mine' WHERE uuid = 'u1'"_s));
        tagFilter(stage)->setCurrentText(u"rural"_s);
        QCOMPARE(shownPersonas(stage), QStringList{u"Mine"_s});
    }

    void nothing_happens_without_an_open_project()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"Mine"_s}));
        refreshQuietly(stage);
        stage.database().close();
        QVERIFY(importUnasked(stage, writeTwo(stage)));
        // Not even a pack that can't be opened is told of.
        QVERIFY(importUnasked(stage, stage.path(u"missing/twins.ornk"_s)));
        QCOMPARE(shownPersonas(stage), QStringList{u"Mine"_s});
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackImport)
#include "tst_packimport.moc"

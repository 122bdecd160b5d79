// The tags of a persona as rows: how a text becomes links, and the two tables that they lie in.

#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPersonaTags : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void each_name_is_linked_once_in_the_order_of_the_text_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("nothing but separators") << u" , ,\t\n"_s << QStringList();
        QTest::newRow("unsorted, repeated, with empty pieces")
            << u"z, x  y,,z"_s << QStringList({u"z"_s, u"x"_s, u"y"_s});
        QTest::newRow("quote, wildcard, outside ASCII")
            << u"o'x % \u00E9t\u00E9,\U0001F41D"_s
            << QStringList({u"o'x"_s, u"%"_s, u"\u00E9t\u00E9"_s, u"\U0001F41D"_s});
        // No-break spaces do not cut the text, but they are trimmed off each name.
        QTest::newRow("no-break space inside") << u"New\u00A0York"_s << QStringList{u"New\u00A0York"_s};
        QTest::newRow("no-break space around") << u"\u00A0x\u00A0,\u2003y"_s << QStringList({u"x"_s, u"y"_s});
        QTest::newRow("no-break space alone") << u"\u00A0,y"_s << QStringList{u"y"_s};
        QTest::newRow("same name after trimming") << u"x \u00A0x"_s << QStringList{u"x"_s};
    }

    void each_name_is_linked_once_in_the_order_of_the_text()
    {
        QFETCH(const QString, text);
        QFETCH(const QStringList, names);
        Stage stage;
        stage.call("insertPersona", u"A"_s, u"a"_s, text);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), names);
        QCOMPARE(knownTags(stage), names);
        QCOMPARE(stage.count(u"persona_tags"_s), names.size());

        // A change goes the same way.
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"B"_s}));
        stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, text);
        QCOMPARE(tagsOf(stage, u"u1"_s), names);
        QCOMPARE(knownTags(stage), names);
    }

    void personas_share_the_row_of_a_tag_of_the_same_case()
    {
        Stage stage;
        stage.call("insertPersona", u"A"_s, u"a"_s, u"x Urban"_s);
        stage.call("insertPersona", u"B"_s, u"b"_s, u"Urban urban"_s);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"Urban"_s, u"urban"_s}));
        QCOMPARE(knownTags(stage), QStringList({u"x"_s, u"Urban"_s, u"urban"_s}));
        QCOMPARE(stage.count(u"persona_tags"_s), 4);
    }

    void new_tags_replace_all_the_old_ones_of_that_persona_alone()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"u1"_s, .tags = {u"x"_s, u"y"_s}},
                      PersonaEntered{.uuid = u"u2"_s, .tags = {u"x"_s, u"y"_s}}));
        stage.call("updatePersona", u"u1"_s, u"A"_s, u"a"_s, u"z x"_s);
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"z"_s, u"x"_s}));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList({u"x"_s, u"y"_s}));
    }

    void a_tag_stays_when_its_last_persona_drops_it()
    {
        Stage stage;
        stage.call("insertPersona", u"A"_s, u"a"_s, u"x y"_s);
        const Rows before = stage.rows(u"SELECT id, name FROM tags"_s);
        QCOMPARE(before.size(), 2);
        // A change that names no tags takes them all away.
        stage.call("updatePersona", newestUuid(stage), u"A"_s, u"a"_s);
        QCOMPARE(stage.rows(u"SELECT id, name FROM tags"_s), before);
        QCOMPARE(stage.count(u"persona_tags"_s), 0);
        QCOMPARE(items(tagFilter(stage)), QStringList({u"All"_s, u"x"_s, u"y"_s}));
        QCOMPARE(columnTexts(personaTable(stage), 2), QStringList{u""_s});

        stage.call("updatePersona", newestUuid(stage), u"A"_s, u"a"_s, u"x"_s);
        QCOMPARE(stage.rows(u"SELECT id, name FROM tags"_s), before);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList{u"x"_s});
    }

    // A foreign project may number its tags as it likes.
    void only_tags_with_a_number_below_zero_are_not_linked()
    {
        Stage stage;
        QVERIFY(enter(stage, TagEntered{-5, u"below"_s}, TagEntered{0, u"zero"_s}));
        stage.call("insertPersona", u"A"_s, u"a"_s, u"below zero above"_s);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"zero"_s, u"above"_s}));
        QCOMPARE(stage.count(u"tags"_s), 3);
    }

    void missing_tag_tables_are_made_without_references_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("with tags") << u"x y x"_s << QStringList({u"x"_s, u"y"_s});
        QTest::newRow("without tags") << u""_s << QStringList();
    }

    void missing_tag_tables_are_made_without_references()
    {
        QFETCH(const QString, text);
        Stage stage;
        QVERIFY(stage.exec({u"DROP TABLE persona_tags"_s, u"DROP TABLE tags"_s}));
        stage.call("insertPersona", u"A"_s, u"a"_s, text);
        QTEST(tagsOf(stage, newestUuid(stage)), "names");

        const QString shape = u"SELECT name, type, pk FROM pragma_table_info(?)"_s;
        QCOMPARE(stage.rows(shape, {u"tags"_s}), Rows({{u"id"_s, u"INTEGER"_s, 1}, {u"name"_s, u"TEXT"_s, 0}}));
        QCOMPARE(stage.rows(shape, {u"persona_tags"_s}),
                 Rows({{u"persona_uuid"_s, u"TEXT"_s, 1}, {u"tag_id"_s, u"INTEGER"_s, 2}}));
        QCOMPARE(stage.rows(u"PRAGMA foreign_key_list(persona_tags)"_s), Rows());
        QVERIFY(enter(stage, TagEntered{7, u"z"_s}));
        QVERIFY(stage.refusal(u"INSERT INTO tags (name) VALUES ('z')"_s).contains("UNIQUE"_L1));
    }

    void tag_tables_that_are_there_are_left_as_they_are()
    {
        Stage stage;
        const QString tables = u"SELECT name, sql FROM sqlite_master ORDER BY name"_s;
        const Rows before = stage.rows(tables);
        stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s);
        QCOMPARE(stage.rows(tables), before);
        QCOMPARE(stage.rows(u"PRAGMA foreign_key_list(persona_tags)"_s).size(), 2);
    }

    void a_copy_made_without_tag_tables_has_no_tags()
    {
        Stage stage;
        QVERIFY(showTaggedRow(stage));
        QVERIFY(stage.exec({u"DROP TABLE persona_tags"_s, u"DROP TABLE tags"_s}));
        stage.call("copyPersona");
        QCOMPARE(stage.count(u"personas"_s), 2);
        QCOMPARE(stage.count(u"tags"_s), 0);
        QCOMPARE(stage.count(u"persona_tags"_s), 0);
    }

    // SQLite finds the table whatever the case of its name; the copy asks for it by the exact name first.
    void a_copy_reads_tags_only_from_a_table_of_the_exact_name()
    {
        Stage stage;
        QVERIFY(showTaggedRow(stage));
        QVERIFY(stage.exec({u"ALTER TABLE tags RENAME TO other"_s, u"ALTER TABLE other RENAME TO Tags"_s}));
        stage.call("copyPersona");
        QCOMPARE(stage.count(u"personas"_s), 2);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList());
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList{u"x"_s});
    }

private:
    static bool showTaggedRow(Stage &stage)
    {
        const bool entered = enter(stage, PersonaEntered{.uuid = u"u1"_s, .name = u"A"_s, .tags = {u"x"_s}});
        refreshQuietly(stage);
        return entered && makeCurrent(stage, u"u1"_s);
    }
};

ORRINET_TEST(TestPersonaTags)
#include "tst_personatags.moc"

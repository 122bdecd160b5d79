#include "tests/personas/panel.h"

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

        QTest::newRow("empty") << u""_s << QStringList();
        QTest::newRow("nothing but separators") << u" , ,\t\n"_s << QStringList();
        QTest::newRow("one") << u"x"_s << QStringList{u"x"_s};
        QTest::newRow("unsorted") << u"c a b"_s << QStringList({u"c"_s, u"a"_s, u"b"_s});
        QTest::newRow("repeated, with empty pieces") << u"x, y  z,,x"_s << QStringList({u"x"_s, u"y"_s, u"z"_s});
        QTest::newRow("case counts") << u"Urban urban"_s << QStringList({u"Urban"_s, u"urban"_s});
        QTest::newRow("quote and wildcard") << u"o'x %"_s << QStringList({u"o'x"_s, u"%"_s});
        QTest::newRow("outside ASCII") << u"\u00E9t\u00E9,\U0001F41D"_s
                                       << QStringList({u"\u00E9t\u00E9"_s, u"\U0001F41D"_s});
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
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, text));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), names);
        QCOMPARE(knownTags(stage), names);
        QCOMPARE(count(stage, u"persona_tags"_s), names.size());

        // A change goes the same way.
        QVERIFY(enterPersona(stage, u"u1"_s, u"B"_s));
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, text));
        QCOMPARE(tagsOf(stage, u"u1"_s), names);
        QCOMPARE(knownTags(stage), names);
    }

    void personas_share_the_row_of_a_tag()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x y"_s));
        QVERIFY(stage.call("insertPersona", u"B"_s, u"b"_s, u"y z"_s));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"y"_s, u"z"_s}));
        QCOMPARE(knownTags(stage), QStringList({u"x"_s, u"y"_s, u"z"_s}));
        QCOMPARE(count(stage, u"persona_tags"_s), 4);
    }

    void tags_that_differ_in_case_on_two_personas_are_two_tags()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"Urban"_s));
        QVERIFY(stage.call("insertPersona", u"B"_s, u"b"_s, u"urban"_s));
        QCOMPARE(knownTags(stage), QStringList({u"Urban"_s, u"urban"_s}));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList{u"urban"_s});
    }

    void new_tags_replace_all_the_old_ones_of_that_persona_alone()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterPersona(stage, u"u2"_s, u"B"_s));
        for (const auto &uuid : {u"u1"_s, u"u2"_s}) {
            QVERIFY(enterTag(stage, uuid, u"x"_s));
            QVERIFY(enterTag(stage, uuid, u"y"_s));
        }
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"A"_s, u"a"_s, u"z x"_s));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"z"_s, u"x"_s}));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList({u"x"_s, u"y"_s}));
    }

    void a_tag_stays_when_its_last_persona_drops_it()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s));
        const auto before = stage.rows(u"SELECT id, name FROM tags"_s);
        QVERIFY(stage.call("updatePersona", newestUuid(stage), u"A"_s, u"a"_s, u""_s));
        QCOMPARE(stage.rows(u"SELECT id, name FROM tags"_s), before);
        QCOMPARE(count(stage, u"persona_tags"_s), 0);

        QVERIFY(stage.call("updatePersona", newestUuid(stage), u"A"_s, u"a"_s, u"x"_s));
        QCOMPARE(stage.rows(u"SELECT id, name FROM tags"_s), before);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList{u"x"_s});
    }

    // A foreign project may number its tags as it likes.
    void only_tags_with_a_number_below_zero_are_not_linked()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO tags (id, name) VALUES (-5, 'below'), (0, 'zero')"_s));
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"below zero above"_s));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"zero"_s, u"above"_s}));
        QCOMPARE(count(stage, u"tags"_s), 3);
    }

    void missing_tag_tables_are_made_without_references()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        QVERIFY(stage.exec(u"DROP TABLE tags"_s));
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x y x"_s));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"x"_s, u"y"_s}));
        QCOMPARE(stage.rows(u"PRAGMA foreign_key_list(persona_tags)"_s), Rows());

        const QString shape = u"SELECT name, type, pk FROM pragma_table_info(?)"_s;
        QCOMPARE(stage.rows(shape, {u"tags"_s}),
                 Rows({QVariantList{u"id"_s, u"INTEGER"_s, 1}, QVariantList{u"name"_s, u"TEXT"_s, 0}}));
        QCOMPARE(stage.rows(shape, {u"persona_tags"_s}),
                 Rows({QVariantList{u"persona_uuid"_s, u"TEXT"_s, 1}, QVariantList{u"tag_id"_s, u"INTEGER"_s, 2}}));
        QVERIFY(stage.exec(u"INSERT INTO tags (name) VALUES ('z')"_s));
        QVERIFY(!stage.exec(u"INSERT INTO tags (name) VALUES ('z')"_s));
    }

    void missing_tag_tables_are_made_for_a_persona_without_tags_too()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        QVERIFY(stage.exec(u"DROP TABLE tags"_s));
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s));
        QCOMPARE(count(stage, u"tags"_s), 0);
        QCOMPARE(count(stage, u"persona_tags"_s), 0);
    }

    void tag_tables_that_are_there_are_left_as_they_are()
    {
        Stage stage;
        const QString tables = u"SELECT name, sql FROM sqlite_master ORDER BY name"_s;
        const auto before = stage.rows(tables);
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s));
        QCOMPARE(stage.rows(tables), before);
        QCOMPARE(stage.rows(u"PRAGMA foreign_key_list(persona_tags)"_s).size(), 2);
    }

    void a_copy_made_without_tag_tables_has_no_tags()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        QVERIFY(stage.exec(u"DROP TABLE tags"_s));
        QVERIFY(stage.call("copyPersona"));
        QCOMPARE(count(stage, u"personas"_s), 2);
        QCOMPARE(count(stage, u"tags"_s), 0);
        QCOMPARE(count(stage, u"persona_tags"_s), 0);
    }

    // SQLite finds the table whatever the case of its name; the copy asks for it by the exact name first.
    void a_copy_reads_tags_only_from_a_table_of_the_exact_name()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"x"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(stage.exec(u"ALTER TABLE tags RENAME TO other"_s));
        QVERIFY(stage.exec(u"ALTER TABLE other RENAME TO Tags"_s));
        QVERIFY(stage.call("copyPersona"));
        QCOMPARE(count(stage, u"personas"_s), 2);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList());
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList{u"x"_s});
    }
};

QTEST_MAIN(TestPersonaTags)
#include "tst_personatags.moc"

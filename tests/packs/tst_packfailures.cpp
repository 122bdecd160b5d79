// Imports that go wrong, as a whole or in part: what is reported, and what arrives all the same.

#include "tests/packs/damagedpack.h"
#include "tests/packs/importbox.h"
#include "tests/packs/packfile.h"
#include "tests/support/messagelog.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Lets some inserts into a table of the project fail.
static QString refuse(const QString &table, const QString &condition)
{
    return u"CREATE TRIGGER refuse_%1 BEFORE INSERT ON %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'refused'); END"_s.arg(
        table, condition);
}

static QStringList pack()
{
    return {persona(u"u1"_s, u"One"_s),
            persona(u"u2"_s, u"Two"_s),
            persona(u"u3"_s, u"Three"_s),
            tag(1, u"rural"_s),
            tag(2, u"urban"_s),
            link(u"u1"_s, 1),
            link(u"u2"_s, 2),
            link(u"u3"_s, 1)};
}

class TestPackFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_persona_that_fails_is_reported_and_the_next_goes_in_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::addRow("as a user") << false;
        QTest::addRow("in test mode") << true;
    }

    void a_persona_that_fails_is_reported_and_the_next_goes_in()
    {
        QFETCH(bool, testMode);
        Stage stage;
        Stage::setTestMode(testMode);
        QVERIFY(enter(stage, {refuse(u"personas"_s, u"NEW.uuid IN ('u1', 'u2')"_s)}));
        const QuietRefresh quiet(stage);
        {
            const MessageLog log;
            QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), pack())));
            QCOMPARE(log.warnings(), QStringList(2, u"refused Unable to fetch row"_s));
        }
        QCOMPARE(shownNames(stage), QStringList{u"Three"_s});
        QCOMPARE(knownTags(stage), QStringList({u"rural"_s, u"urban"_s}));
        QCOMPARE(count(stage, u"persona_tags"_s), 3);
        QVERIFY(stage.asksBeforeClosing());
    }

    void tags_and_links_that_fail_are_left_out_silently()
    {
        Stage stage;
        QVERIFY(enter(stage, {refuse(u"tags"_s, u"NEW.id = 1"_s), refuse(u"persona_tags"_s, u"NEW.tag_id = 2"_s)}));
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), pack())));
        QCOMPARE(knownTags(stage), QStringList{u"urban"_s});
        QCOMPARE(column(stage, u"SELECT persona_uuid FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u1"_s, u"u3"_s}));
        QCOMPARE(count(stage, u"personas"_s), 3);
        QVERIFY(stage.asksBeforeClosing());
    }

    // Only a pack of another make has one.
    void a_persona_that_stands_twice_in_a_pack_arrives_once()
    {
        Stage stage;
        const QString path = stage.path(u"twice.ornk"_s);
        {
            FileDatabase twice(path);
            QVERIFY(twice.exec({u"CREATE TABLE personas (uuid, name, attributes, system_prompt, notes, created_at, "
                                "modified_at)"_s,
                                persona(u"u1"_s, u"One"_s), persona(u"u1"_s, u"Once more"_s)}));
        }
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});

        // Where the project was emptied for the pack, the second is tried and refused.
        const MessageLog log;
        QVERIFY(importReplacing(stage, path));
        QCOMPARE(log.warnings(), QStringList{u"UNIQUE constraint failed: personas.uuid Unable to fetch row"_s});
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});
    }

    void a_pack_without_one_of_its_tables_brings_the_others_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::addColumn<QList<int>>("counts");
        QTest::addRow("personas") << u"personas"_s << QList<int>{0, 2, 3};
        QTest::addRow("tags") << u"tags"_s << QList<int>{3, 0, 3};
        QTest::addRow("persona_tags") << u"persona_tags"_s << QList<int>{3, 2, 0};
    }

    void a_pack_without_one_of_its_tables_brings_the_others()
    {
        QFETCH(QString, missing);
        Stage stage;
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage,
                              writePack(stage.path(u"part.ornk"_s), pack() + QStringList{u"DROP TABLE "_s + missing})));
        const QList<int> found = {count(stage, u"personas"_s), count(stage, u"tags"_s),
                                  count(stage, u"persona_tags"_s)};
        QTEST(found, "counts");
        QVERIFY(stage.asksBeforeClosing());
    }

    void without_a_table_of_tags_only_personas_arrive_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addRow("no table") << QStringList{u"DROP TABLE tags"_s};
        // SQLite would find it; the project counts as having none.
        QTest::addRow("a name in capitals")
            << QStringList{u"ALTER TABLE tags RENAME TO other"_s, u"ALTER TABLE other RENAME TO TAGS"_s};
    }

    void without_a_table_of_tags_only_personas_arrive()
    {
        QFETCH(QStringList, statements);
        Stage stage;
        QVERIFY(enter(stage, statements));
        const QStringList tables = stage.project().tables();
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), pack())));
        QCOMPARE(shownNames(stage), QStringList({u"One"_s, u"Three"_s, u"Two"_s}));
        QCOMPARE(stage.project().tables(), tables);
        QCOMPARE(count(stage, u"persona_tags"_s), 0);
        if (tables.contains(u"TAGS"_s))
            QCOMPARE(count(stage, u"TAGS"_s), 0);
        QVERIFY(stage.asksBeforeClosing());
    }

    void without_a_table_of_links_personas_and_tags_arrive()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        {
            // The refresh misses the table, the import does not.
            const MessageLog log;
            QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), pack())));
            QCOMPARE(log.warnings(), QStringList{u"no such table: persona_tags Unable to execute statement"_s});
        }
        QCOMPARE(count(stage, u"personas"_s), 3);
        QCOMPARE(knownTags(stage), QStringList({u"rural"_s, u"urban"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_persona_that_can_not_be_looked_up_is_entered()
    {
        Stage stage;
        // What stands in for the table takes rows and can't be read.
        QVERIFY(enter(stage, {u"DROP TABLE personas"_s, u"CREATE TABLE entered (uuid TEXT)"_s,
                              u"CREATE VIEW personas (uuid, name, attributes, system_prompt, notes, created_at, "
                              "modified_at) AS SELECT json('no'), 1, 1, 1, 1, 1, 1"_s,
                              u"CREATE TRIGGER enter INSTEAD OF INSERT ON personas "
                              "BEGIN INSERT INTO entered VALUES (NEW.uuid); END"_s}));
        Stage::setTestMode(true);
        const QuietRefresh quiet(stage);
        {
            const MessageLog log;
            QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), pack())));
            // That is the refresh.
            QCOMPARE(log.warnings(), QStringList{u"malformed JSON Unable to fetch row"_s});
        }
        QCOMPARE(column(stage, u"SELECT uuid FROM entered"_s), QStringList({u"u1"_s, u"u2"_s, u"u3"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_pack_damaged_halfway_brings_what_can_be_read()
    {
        Stage stage;
        const QString path = writeDamagedPack(stage.path(u"damaged.ornk"_s), Damage::LastPage);
        QVERIFY(importUnasked(stage, path));
        const int arrived = count(stage, u"personas"_s);
        QVERIFY(arrived > 0 && arrived < damagedPackSize);
        QCOMPARE(column(stage, u"SELECT uuid FROM personas ORDER BY rowid"_s), damagedPackUuids().mid(0, arrived));
        // What follows is read all the same.
        QCOMPARE(knownTags(stage), QStringList{u"rural"_s});
        QVERIFY(stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestPackFailures)
#include "tst_packfailures.moc"

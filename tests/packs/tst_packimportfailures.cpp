// Imports that go wrong, as a whole or in part: what is reported, and what arrives all the same.

#include "tests/packs/importing.h"
#include "tests/packs/samplepacks.h"
#include "tests/support/messagelog.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// A trigger that lets some inserts into a table of the project fail.
static QString refuseInsert(const QString &table, const QString &condition)
{
    return u"CREATE TRIGGER refuse_%1 BEFORE INSERT ON %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'refused'); END"_s.arg(
        table, condition);
}

/// A pack of three personas with one of two tags each.
static QString writeThree(const Stage &stage)
{
    return packOf(stage.path(u"three.ornk"_s), PersonaEntered{.uuid = u"u1"_s, .name = u"One"_s, .tags = {u"rural"_s}},
                  PersonaEntered{.uuid = u"u2"_s, .name = u"Two"_s, .tags = {u"urban"_s}},
                  PersonaEntered{.uuid = u"u3"_s, .name = u"Three"_s, .tags = {u"rural"_s}});
}

class TestPackImportFailures : public QObject
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
        QVERIFY(stage.exec(refuseInsert(u"personas"_s, u"NEW.uuid IN ('u1', 'u2')"_s)));
        const QuietRefresh quiet(stage);
        {
            const MessageLog log;
            QVERIFY(importUnasked(stage, writeThree(stage)));
            QCOMPARE(log.warnings(), QStringList(2, u"refused Unable to fetch row"_s));
        }
        QCOMPARE(shownPersonas(stage), QStringList{u"Three"_s});
        QCOMPARE(knownTags(stage), QStringList({u"rural"_s, u"urban"_s}));
        QCOMPARE(stage.count(u"persona_tags"_s), 3);
        QVERIFY(stage.asksBeforeClosing());
    }

    void tags_and_links_that_fail_are_left_out_silently()
    {
        Stage stage;
        QVERIFY(stage.exec(
            {refuseInsert(u"tags"_s, u"NEW.id = 1"_s), refuseInsert(u"persona_tags"_s, u"NEW.tag_id = 2"_s)}));
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, writeThree(stage)));
        QCOMPARE(knownTags(stage), QStringList{u"urban"_s});
        QCOMPARE(stage.column(u"SELECT persona_uuid FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u1"_s, u"u3"_s}));
        QCOMPARE(stage.count(u"personas"_s), 3);
        QVERIFY(stage.asksBeforeClosing());
    }

    // Only a pack of another make has one.
    void a_persona_that_stands_twice_in_a_pack_arrives_once()
    {
        Stage stage;
        const QString path = stage.path(u"twice.ornk"_s);
        {
            SideDatabase twice(path);
            QVERIFY(twice.exec(u"CREATE TABLE personas (uuid, name, attributes, system_prompt, notes, created_at, "
                               "modified_at)"_s));
            QVERIFY(enter(twice, PersonaEntered{u"u1"_s, u"One"_s}, PersonaEntered{u"u1"_s, u"Once more"_s}));
        }
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownPersonas(stage), QStringList{u"One"_s});

        // Where the project was emptied for the pack, the second is tried and refused.
        const MessageLog log;
        QVERIFY(importReplacing(stage, path));
        QCOMPARE(log.warnings(), QStringList{u"UNIQUE constraint failed: personas.uuid Unable to fetch row"_s});
        QCOMPARE(shownPersonas(stage), QStringList{u"One"_s});
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
        const QString path = writeThree(stage);
        QVERIFY(SideDatabase(path).exec(u"DROP TABLE "_s + missing));
        QVERIFY(importUnasked(stage, path));
        const QList<int> found = {stage.count(u"personas"_s), stage.count(u"tags"_s), stage.count(u"persona_tags"_s)};
        QTEST(found, "counts");
        QVERIFY(stage.asksBeforeClosing());
    }

    void without_a_table_of_tags_only_personas_arrive_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QStringList>("emptyTables");
        QTest::addRow("no table") << QStringList{u"DROP TABLE tags"_s} << QStringList{u"persona_tags"_s};
        // SQLite would find it; the project counts as having none.
        QTest::addRow("a name in capitals")
            << QStringList{u"ALTER TABLE tags RENAME TO other"_s, u"ALTER TABLE other RENAME TO TAGS"_s}
            << QStringList{u"persona_tags"_s, u"TAGS"_s};
    }

    void without_a_table_of_tags_only_personas_arrive()
    {
        QFETCH(QStringList, statements);
        QFETCH(QStringList, emptyTables);
        Stage stage;
        QVERIFY(stage.exec(statements));
        const QStringList tables = stage.database().tables();
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, writeThree(stage)));
        QCOMPARE(shownPersonas(stage), QStringList({u"One"_s, u"Three"_s, u"Two"_s}));
        QCOMPARE(stage.database().tables(), tables);
        for (const QString &table : std::as_const(emptyTables))
            QCOMPARE(stage.count(table), 0);
        QVERIFY(stage.asksBeforeClosing());
    }

    void without_a_table_of_links_personas_and_tags_arrive()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        const QuietRefresh quiet(stage);
        {
            // The refresh misses the table, the import does not.
            const MessageLog log;
            QVERIFY(importUnasked(stage, writeThree(stage)));
            QCOMPARE(log.warnings(), QStringList{u"no such table: persona_tags Unable to execute statement"_s});
        }
        QCOMPARE(stage.count(u"personas"_s), 3);
        QCOMPARE(knownTags(stage), QStringList({u"rural"_s, u"urban"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void without_a_table_of_personas_nobody_is_asked_and_tags_arrive()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE personas"_s));
        const QuietRefresh quiet(stage);
        {
            const MessageLog log;
            QVERIFY(importUnasked(stage, writeThree(stage)));
            // One for each persona, and the refresh's own.
            QCOMPARE(log.warnings().size(), 4);
            QCOMPARE(log.warnings().constLast(), u"no such table: personas Unable to execute statement"_s);
        }
        QCOMPARE(knownTags(stage), QStringList({u"rural"_s, u"urban"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_persona_that_can_not_be_looked_up_is_entered()
    {
        Stage stage;
        // What stands in for the table takes rows and can't be read.
        QVERIFY(stage.exec({u"DROP TABLE personas"_s, u"CREATE TABLE entered (uuid TEXT)"_s,
                            u"CREATE VIEW personas (uuid, name, attributes, system_prompt, notes, created_at, "
                            "modified_at) AS SELECT json('no'), 1, 1, 1, 1, 1, 1"_s,
                            u"CREATE TRIGGER enter INSTEAD OF INSERT ON personas "
                            "BEGIN INSERT INTO entered VALUES (NEW.uuid); END"_s}));
        Stage::setTestMode(true);
        const QuietRefresh quiet(stage);
        {
            const MessageLog log;
            QVERIFY(importUnasked(stage, writeThree(stage)));
            // That is the refresh.
            QCOMPARE(log.warnings(), QStringList{u"malformed JSON Unable to fetch row"_s});
        }
        QCOMPARE(stage.column(u"SELECT uuid FROM entered"_s), QStringList({u"u1"_s, u"u2"_s, u"u3"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_pack_damaged_halfway_brings_what_can_be_read()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, writeDamagedPack(stage.path(u"damaged.ornk"_s), Damage::LastPage)));
        const QStringList arrived = stage.column(u"SELECT uuid FROM personas ORDER BY rowid"_s);
        const QStringList all = damagedPackUuids();
        QVERIFY(!arrived.isEmpty() && arrived.size() < all.size());
        QCOMPARE(arrived, all.first(arrived.size()));
        // What follows is read all the same.
        QCOMPARE(knownTags(stage), QStringList{u"rural"_s});
        QVERIFY(stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPackImportFailures)
#include "tst_packimportfailures.moc"

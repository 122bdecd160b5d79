// Statements that fail: nothing is reported, and what follows them is done all the same.

#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// Lets statements of one kind ("INSERT ON personas") fail from now on.
static bool forbid(Stage &stage, const QString &statements, const QString &condition = u"1"_s)
{
    return stage.exec(u"CREATE TRIGGER forbidden BEFORE %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'forbidden'); END"_s.arg(
        statements, condition));
}

/// Enters a persona u1 with the tag x, and makes it the current one.
static bool showCurrent(Stage &stage)
{
    const bool entered = enter(stage, PersonaEntered{.uuid = u"u1"_s, .name = u"A"_s, .tags = {u"x"_s}});
    refreshQuietly(stage);
    return entered && makeCurrent(stage, u"u1"_s);
}

class TestPersonaFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tags_are_linked_to_a_persona_that_could_not_be_entered()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"A"_s}));
        QVERIFY(forbid(stage, u"INSERT ON personas"_s));
        const QuietRefresh quiet(stage);
        stage.call("insertPersona", u"B"_s, u"b"_s, u"x y"_s);

        QCOMPARE(stage.column(u"SELECT name FROM personas"_s), QStringList{u"A"_s});
        const QStringList links = stage.column(u"SELECT persona_uuid FROM persona_tags"_s);
        QCOMPARE(links.size(), 2);
        QCOMPARE(links.first().size(), 36);
        QCOMPARE(links.last(), links.first());
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QVERIFY(stage.asksBeforeClosing());
    }

    void tags_follow_a_change_that_could_not_be_stored()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"A"_s}));
        const Rows before = stage.rows(u"SELECT * FROM personas"_s);
        QVERIFY(forbid(stage, u"UPDATE ON personas"_s));
        const QuietRefresh quiet(stage);
        stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x"_s);

        QCOMPARE(stage.rows(u"SELECT * FROM personas"_s), before);
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList{u"x"_s});
        QCOMPARE(cells(personaTable(stage)).constFirst().first(3), QStringList({u"A"_s, u"u1"_s, u"x"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_deletion_that_fails_refreshes_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(showCurrent(stage));
        QVERIFY(enter(stage, PersonaEntered{u"u2"_s, u"B"_s}));
        QVERIFY(forbid(stage, u"DELETE ON personas"_s));
        const QuietRefresh quiet(stage);
        stage.call("deletePersona");

        QCOMPARE(stage.count(u"personas"_s), 2);
        QCOMPARE(personaTable(stage)->rowCount(), 2);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_persona_that_can_not_be_read_is_not_copied()
    {
        Stage stage;
        QVERIFY(showCurrent(stage));
        QVERIFY(stage.exec(u"ALTER TABLE personas RENAME COLUMN attributes TO narrative"_s));
        stage.call("copyPersona");

        QCOMPARE(stage.count(u"personas"_s), 1);
        QCOMPARE(stage.count(u"persona_tags"_s), 1);
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_persona_whose_tags_can_not_be_read_is_copied_without_them()
    {
        Stage stage;
        QVERIFY(showCurrent(stage));
        QVERIFY(stage.exec(u"ALTER TABLE persona_tags RENAME COLUMN tag_id TO tag"_s));
        const QuietRefresh quiet(stage);
        {
            // The refresh can't read the links either.
            const MessageLog log;
            stage.call("copyPersona");
            QCOMPARE(log.warnings(), QStringList{u"no such column: pt.tag_id Unable to execute statement"_s});
        }
        QCOMPARE(stage.column(u"SELECT name FROM personas"_s), QStringList({u"A"_s, u"A"_s}));
        QCOMPARE(stage.column(u"SELECT persona_uuid FROM persona_tags"_s), QStringList{u"u1"_s});
        QVERIFY(stage.asksBeforeClosing());
    }

    void links_that_can_not_be_removed_do_not_keep_new_ones_out()
    {
        Stage stage;
        QVERIFY(showCurrent(stage));
        QVERIFY(forbid(stage, u"DELETE ON persona_tags"_s));
        stage.call("updatePersona", u"u1"_s, u"A"_s, u"a"_s, u"y"_s);
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"x"_s, u"y"_s}));
    }

    void a_tag_or_link_that_can_not_be_entered_is_left_out_data()
    {
        QTest::addColumn<QString>("statements");
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QStringList>("known");
        QTest::newRow("tag") << u"INSERT ON tags"_s << u"NEW.name = 'bad'"_s << QStringList({u"x"_s, u"y"_s});
        QTest::newRow("link") << u"INSERT ON persona_tags"_s << u"NEW.tag_id = 2"_s
                              << QStringList({u"x"_s, u"bad"_s, u"y"_s});
    }

    void a_tag_or_link_that_can_not_be_entered_is_left_out()
    {
        QFETCH(const QString, statements);
        QFETCH(const QString, condition);
        Stage stage;
        QVERIFY(forbid(stage, statements, condition));
        const QuietRefresh quiet(stage);
        stage.call("insertPersona", u"A"_s, u"a"_s, u"x bad y"_s);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"x"_s, u"y"_s}));
        QCOMPARE(stage.count(u"persona_tags"_s), 2);
        QTEST(knownTags(stage), "known");
        QVERIFY(stage.asksBeforeClosing());
    }

    // The table of the links is taken to come and go with that of the tags.
    void missing_links_are_not_made_anew_while_there_are_tags()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        const QuietRefresh quiet(stage);
        {
            const MessageLog log;
            stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s);
            QCOMPARE(log.warnings(), QStringList{u"no such table: persona_tags Unable to execute statement"_s});
        }
        QCOMPARE(stage.count(u"personas"_s), 1);
        QCOMPARE(knownTags(stage), QStringList{u"x"_s});
        QVERIFY(!stage.database().tables().contains(u"persona_tags"_s));
        QVERIFY(stage.asksBeforeClosing());
    }

    void links_survive_when_the_tags_alone_are_missing()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"A"_s}));
        QVERIFY(enterTag(stage, u"u2"_s, u"x"_s));
        QVERIFY(stage.exec(u"DROP TABLE tags"_s));
        stage.call("updatePersona", u"u1"_s, u"A"_s, u"a"_s, u"y"_s);
        QCOMPARE(knownTags(stage), QStringList{u"y"_s});
        QCOMPARE(stage.column(u"SELECT persona_uuid FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u2"_s, u"u1"_s}));
    }

    void nothing_happens_without_an_open_project()
    {
        Stage stage;
        QVERIFY(showCurrent(stage));
        const auto shown = cells(personaTable(stage));
        stage.database().close();

        stage.call("insertPersona", u"B"_s, u"b"_s, u"x"_s);
        stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x"_s);
        stage.call("copyPersona");
        stage.call("deletePersona");
        QCOMPARE(cells(personaTable(stage)), shown);
        QCOMPARE(personaTable(stage)->currentRow(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestPersonaFailures)
#include "tst_personafailures.moc"

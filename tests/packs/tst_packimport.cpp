// What an import brings into the project, and what it leaves alone.

#include "tests/packs/importbox.h"
#include "tests/packs/packfile.h"

#include <QAbstractItemModel>
#include <QPlainTextEdit>
#include <QTest>

using namespace Qt::StringLiterals;

/// Two personas, one with all columns, and a tag on each.
static QStringList smallPack()
{
    return {persona(u"u2"_s, u"Two"_s),
            u"INSERT INTO personas VALUES ('u1', 'One', 'Loud.', 'You are loud.', 'by hand', 'yesterday', NULL)"_s,
            tag(7, u"rural"_s),
            tag(8, u"New York"_s),
            link(u"u1"_s, 7),
            link(u"u2"_s, 8)};
}

static QString allPersonas()
{
    return u"SELECT uuid, name, attributes, system_prompt, notes, created_at, modified_at FROM personas "
           "ORDER BY rowid"_s;
}

class TestPackImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void project_without_personas_takes_all_unasked_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::addRow("as a user") << false;
        QTest::addRow("in test mode") << true;
    }

    void project_without_personas_takes_all_unasked()
    {
        QFETCH(bool, testMode);
        Stage stage;
        Stage::setTestMode(testMode);
        const QString path = writePack(stage.path(u"twins.ornk"_s), smallPack());
        const QByteArray before = bytesOf(path);
        const QuietRefresh quiet(stage);
        QVERIFY(importUnasked(stage, path));

        const FileDatabase pack(path);
        QCOMPARE(literals(stage.project(), allPersonas()), literals(pack.database(), allPersonas()));
        QCOMPARE(count(stage, u"personas"_s), 2);
        QCOMPARE(shownNames(stage), QStringList({u"One"_s, u"Two"_s}));
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"New York"_s, u"rural"_s}));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList{u"New York"_s});
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(bytesOf(path), before);
    }

    void times_are_shown_as_the_pack_has_them()
    {
        Stage stage;
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), {persona(u"u1"_s, u"One"_s)})));
        QCOMPARE(Stage::cells(personaTable(stage)).constFirst().last(2),
                 QStringList({u"2001-02-03T04:05:06.789"_s, u"2001-02-03 04:05:06"_s}));
    }

    void a_persona_with_a_system_prompt_speaks_from_it()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"Why?"_s, u"text"_s, false));
        QStringList statements = smallPack();
        statements.append(u"DELETE FROM personas WHERE uuid = 'u2'"_s);
        QVERIFY(importUnasked(stage, writePack(stage.path(u"one.ornk"_s), statements)));
        QWidget *page = stage.page(u"Boilerplate"_s);
        stage.button(u"Show"_s, u"Boilerplate"_s)->click();
        const auto edits = page->findChildren<QPlainTextEdit *>();
        const auto *conversation = edits.constLast();
        QVERIFY(conversation->isReadOnly());
        QVERIFY(conversation->toPlainText().contains(u"You are loud."_s));
        QVERIFY(!conversation->toPlainText().contains(u"Loud."_s));
    }

    void a_pack_of_tags_alone_adds_them()
    {
        Stage stage;
        QVERIFY(importUnasked(stage, writePack(stage.path(u"tags.ornk"_s), {tag(7, u"rural"_s)})));
        QCOMPARE(entries(tagFilter(stage)), QStringList({u"All"_s, u"rural"_s}));
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(stage.asksBeforeClosing());
    }

    void test_mode_appends_unasked()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u9"_s, u"Nine"_s), tag(1, u"urban"_s), link(u"u9"_s, 1)}));
        Stage::setTestMode(true);
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), smallPack())));
        QCOMPARE(shownNames(stage), QStringList({u"Nine"_s, u"One"_s, u"Two"_s}));
        QCOMPARE(knownTags(stage), QStringList({u"urban"_s, u"rural"_s, u"New York"_s}));
    }

    void a_persona_that_is_there_stays_and_gains_the_packs_tags()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"Mine"_s), tag(1, u"urban"_s), link(u"u1"_s, 1)}));
        const QStringList mine = literals(stage.project(), allPersonas());
        QVERIFY(importAppending(stage, writePack(stage.path(u"twins.ornk"_s), smallPack())));
        QCOMPARE(literals(stage.project(), allPersonas()).mid(0, 1), mine);
        QCOMPARE(column(stage, u"SELECT uuid FROM personas ORDER BY rowid"_s), QStringList({u"u1"_s, u"u2"_s}));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"urban"_s, u"rural"_s}));
    }

    void a_uuid_is_compared_as_text()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"Mine"_s)}));
        QVERIFY(importAppending(
            stage, writePack(stage.path(u"blobs.ornk"_s),
                             {u"INSERT INTO personas (uuid, name) VALUES (CAST('u1' AS BLOB), 'Left out')"_s,
                              u"INSERT INTO personas (uuid, name) VALUES (CAST('u2' AS BLOB), 'Taken')"_s})));
        QCOMPARE(shownNames(stage), QStringList({u"Mine"_s, u"Taken"_s}));
        QCOMPARE(stage.value(u"SELECT typeof(uuid) FROM personas WHERE name = 'Taken'"_s), QVariant(u"blob"_s));
    }

    void personas_without_a_uuid_arrive_every_time()
    {
        Stage stage;
        const QString path = writePack(stage.path(u"nobody.ornk"_s),
                                       {u"INSERT INTO personas (name) VALUES ('Nobody'), ('Nobody else')"_s});
        QVERIFY(importUnasked(stage, path));
        QVERIFY(importAppending(stage, path));
        QCOMPARE(column(stage, u"SELECT name FROM personas WHERE uuid IS NULL ORDER BY rowid"_s),
                 QStringList({u"Nobody"_s, u"Nobody else"_s, u"Nobody"_s, u"Nobody else"_s}));
    }

    void links_without_a_persona_arrive_too()
    {
        Stage stage;
        QVERIFY(importUnasked(
            stage, writePack(stage.path(u"twins.ornk"_s), {tag(7, u"rural"_s), link(u"u5"_s, 7), link(u"u6"_s, 99)})));
        QCOMPARE(column(stage, u"SELECT persona_uuid || ' ' || tag_id FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u5 7"_s, u"u6 99"_s}));
    }

    void appending_leaves_answers_and_the_rest_alone()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"Mine"_s));
        QVERIFY(stage.call("insertQuestion", u"What from?"_s, u"text"_s, false));
        QVERIFY(enter(stage, {u"INSERT INTO metadata VALUES ('key', 'value')"_s}));
        const QString others = u"SELECT * FROM responses, questions, metadata, boilerplate, sqlite_sequence"_s;
        const QStringList before = literals(stage.project(), others);
        QVERIFY(importAppending(stage, writePack(stage.path(u"twins.ornk"_s), smallPack())));
        QCOMPARE(literals(stage.project(), others), before);
        QVERIFY(!before.isEmpty());
    }

    void a_deleted_persona_that_comes_back_finds_its_answers_and_tags()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"Mine"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"urban"_s));
        QVERIFY(stage.call("insertQuestion", u"What from?"_s, u"text"_s, false));
        QVERIFY(stage.call("loadProject"));
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(stage.call("deletePersona"));
        const auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
        QCOMPARE(grid->rowCount(), 0);

        QVERIFY(importUnasked(stage, writePack(stage.path(u"back.ornk"_s), {persona(u"u1"_s, u"Back"_s)})));
        const QStringList shown = Stage::cells(personaTable(stage)).constFirst();
        QCOMPARE(shown.first(3), QStringList({u"Back"_s, u"u1"_s, u"urban"_s}));
        QCOMPARE(grid->rowCount(), 1);
        QVERIFY(Stage::cells(grid).constFirst().contains(u"honey"_s));
    }

    void a_projects_own_pack_changes_no_row_but_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"Mine"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"urban"_s));
        QVERIFY(enterTag(stage, u"gone"_s, u"rural"_s));
        const QString path = stage.path(u"own.ornk"_s);
        QVERIFY(stage.result("exportPackToFile", path));
        const QStringList before = everyRow(stage.project());
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(importAppending(stage, path));
        QCOMPARE(everyRow(stage.project()), before);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_tag_with_a_blank_is_cut_by_the_editor()
    {
        Stage stage;
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), smallPack())));
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList{u"New York"_s});
        QVERIFY(makeCurrent(stage, u"u2"_s));
        Stage::setTestMode(true);
        const Modal modal([](QWidget *dialog) { pressButton(dialog, u"OK"_s); });
        QVERIFY(stage.call("editPersona", personaTable(stage)->currentRow(), 0));
        QVERIFY(modal.wasAnswered());
        QCOMPARE(tagsOf(stage, u"u2"_s), QStringList({u"New"_s, u"York"_s}));
    }

    void tables_that_readers_do_without_may_be_missing()
    {
        Stage stage;
        const QString path = stage.path(u"lean.ornk"_s);
        {
            FileDatabase pack(path);
            QVERIFY(pack.exec(packStatements().mid(0, 3) + smallPack()));
        }
        QVERIFY(importUnasked(stage, path));
        QCOMPARE(shownNames(stage), QStringList({u"One"_s, u"Two"_s}));
    }

    // What is named in the pack need not be a table, and its format has no version that anyone looks at.
    void views_of_a_pack_are_as_good_as_tables()
    {
        Stage stage;
        QStringList statements = smallPack();
        statements.append(u"INSERT INTO pack_info (uuid, format_version) VALUES ('p', 999)"_s);
        for (const QString &table : {u"personas"_s, u"tags"_s, u"persona_tags"_s}) {
            statements.append(u"ALTER TABLE %1 RENAME TO old_%1"_s.arg(table));
            statements.append(u"CREATE VIEW %1 AS SELECT * FROM old_%1"_s.arg(table));
        }
        QVERIFY(importUnasked(stage, writePack(stage.path(u"views.ornk"_s), statements)));
        QCOMPARE(shownNames(stage), QStringList({u"One"_s, u"Two"_s}));
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
        const QString path = writePack(stage.path(u"twins.ornk"_s), smallPack());
        QVERIFY(importUnasked(stage, path));
        FileDatabase pack(path);
        const QStringList expected = pack.column(u"SELECT 'personas ' || uuid, name FROM personas"_s) +
                                     pack.column(u"SELECT 'tags ' || id FROM tags"_s) +
                                     pack.column(u"SELECT 'persona_tags ' || persona_uuid FROM persona_tags"_s);
        QCOMPARE(column(stage, u"SELECT what FROM noted ORDER BY rowid"_s), expected);
    }

    void the_views_follow_when_the_pack_is_closed_and_the_mark_comes_last()
    {
        Stage stage;
        const QuietRefresh quiet(stage);
        const QString path = writePack(stage.path(u"twins.ornk"_s), smallPack());
        int refreshes = 0;
        bool closed = false;
        bool marked = true;
        const auto seen = connect(personaTable(stage)->model(), &QAbstractItemModel::rowsInserted, this, [&] {
            ++refreshes;
            closed = QSqlDatabase::contains(u"packfile"_s) && !QSqlDatabase::database(u"packfile"_s, false).isOpen();
            marked = stage.asksBeforeClosing();
        });
        QVERIFY(importUnasked(stage, path));
        disconnect(seen);
        QCOMPARE(refreshes, 2);
        QVERIFY(closed);
        QVERIFY(!marked);
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(QSqlDatabase::connectionNames(), QStringList{u"project"_s});
    }

    void the_tag_filter_stays_on_the_project()
    {
        Stage stage;
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), smallPack())));
        QVERIFY(stage.exec(u"UPDATE personas SET name = 'Mine' WHERE uuid = 'u1'"_s));
        tagFilter(stage)->setCurrentText(u"rural"_s);
        QCOMPARE(shownNames(stage), QStringList{u"Mine"_s});
    }

    void nothing_happens_without_an_open_project()
    {
        Stage stage;
        QVERIFY(enter(stage, {persona(u"u1"_s, u"One"_s)}));
        refreshQuietly(stage);
        stage.project().close();
        QVERIFY(importUnasked(stage, writePack(stage.path(u"twins.ornk"_s), smallPack())));
        // Not even a pack that can't be opened is told of.
        QVERIFY(importUnasked(stage, stage.path(u"missing/twins.ornk"_s)));
        QCOMPARE(shownNames(stage), QStringList{u"One"_s});
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestPackImport)
#include "tst_packimport.moc"

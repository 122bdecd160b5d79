// Copying and deleting: the two buttons that act on the current row of the persona list.

#include "tests/support/entries.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/testcase.h"

#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

/// Presses a button below the persona list.
static void press(Stage &stage, const QString &button)
{
    stage.button(button, u"Digital Twins"_s)->click();
}

/// Enters personas u1, u2 ... of these names, each with an answer and these tags, and makes u1 the current one.
static bool showRows(Stage &stage, const QStringList &names, const QStringList &tags = {})
{
    int number = 0;
    for (const QString &name : names) {
        if (!enterBeekeeper(stage, u"u%1"_s.arg(++number), name, tags))
            return false;
    }
    refreshQuietly(stage);
    return makeCurrent(stage, u"u1"_s);
}

class TestPersonaRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_copy_has_the_same_name_and_description_under_a_new_identity()
    {
        Stage stage;
        QVERIFY(showRows(stage, {u"A"_s}));
        const Rows source = stage.rows(u"SELECT * FROM personas"_s);
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        press(stage, u"Copy"_s);

        QCOMPARE(stage.rows(u"SELECT * FROM personas WHERE uuid = 'u1'"_s), source);
        QCOMPARE(newestUuid(stage).size(), 36);
        QCOMPARE(
            stage.rows(u"SELECT name, attributes, system_prompt IS NULL, notes IS NULL, "
                       "created_at > '2020-01-01T', modified_at > '2020-01-01 ' FROM personas WHERE uuid <> 'u1'"_s),
            Rows({{u"A"_s, u"keeps bees"_s, 1, 1, 1, 1}}));
        // No answers follow it.
        QCOMPARE(stage.column(u"SELECT persona_uuid FROM responses"_s), QStringList{u"u1"_s});
        QCOMPARE(personaTable(stage)->rowCount(), 2);
        QCOMPARE(personaTable(stage)->currentRow(), -1);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_copy_bears_the_tags_of_its_source_linked_in_the_order_of_their_names()
    {
        Stage stage;
        QVERIFY(showRows(stage, {u"A"_s}, {u"m"_s, u"z"_s, u"B"_s, u"a"_s}));
        QVERIFY(enterTag(stage, u"u2"_s, u"other"_s));
        press(stage, u"Copy"_s);

        QVERIFY(newestUuid(stage) != u"u1"_s);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"B"_s, u"a"_s, u"m"_s, u"z"_s}));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"m"_s, u"z"_s, u"B"_s, u"a"_s}));
        QCOMPARE(stage.count(u"tags"_s), 5);
    }

    void a_tag_with_a_blank_is_cut_in_two_on_the_copy()
    {
        Stage stage;
        QVERIFY(showRows(stage, {u"A"_s}, {u"New York"_s, u"urban"_s}));
        press(stage, u"Copy"_s);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"New"_s, u"York"_s, u"urban"_s}));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"New York"_s, u"urban"_s}));
    }

    void deleting_a_persona_leaves_its_answers_and_tag_links()
    {
        Stage stage;
        stage.call("insertQuestion", u"What?"_s, u"text"_s, false);
        QVERIFY(showRows(stage, {u"A"_s, u"B"_s}, {u"x"_s}));
        const Rows answers = stage.rows(u"SELECT * FROM responses"_s);
        const Rows links = stage.rows(u"SELECT * FROM persona_tags"_s);
        QCOMPARE(resultsTable(stage)->rowCount(), 2);

        QVERIFY(asksNothing([&stage] { press(stage, u"Delete"_s); }));
        QCOMPARE(stage.column(u"SELECT uuid FROM personas"_s), QStringList{u"u2"_s});
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), answers);
        QCOMPARE(answers.size(), 2);
        QCOMPARE(stage.rows(u"SELECT * FROM persona_tags"_s), links);
        QCOMPARE(links.size(), 2);
        QCOMPARE(knownTags(stage), QStringList{u"x"_s});
        QCOMPARE(shownPersonas(stage), QStringList{u"B"_s});
        QCOMPARE(resultsTable(stage)->rowCount(), 1);
    }

    void the_flag_is_set_between_the_deletion_and_the_refresh()
    {
        Stage stage;
        QVERIFY(showRows(stage, {u"A"_s}));
        const QuietRefresh quiet(stage);
        QVERIFY(!stage.asksBeforeClosing());
        QStringList events;
        const QObject context;
        connect(personaTable(stage)->model(), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"personas %1, marked %2"_s.arg(stage.count(u"personas"_s)).arg(stage.asksBeforeClosing()));
        });
        press(stage, u"Delete"_s);
        QCOMPARE(events, QStringList{u"personas 0, marked 1"_s});
    }

    void without_a_current_row_nothing_happens()
    {
        Stage stage;
        for (const bool empty : {true, false}) {
            if (!empty)
                QVERIFY(enter(stage, PersonaEntered{u"u1"_s, u"A"_s}));
            refreshQuietly(stage);
            QCOMPARE(personaTable(stage)->rowCount(), empty ? 0 : 1);
            QCOMPARE(personaTable(stage)->currentRow(), -1);
            press(stage, u"Copy"_s);
            press(stage, u"Delete"_s);
            QCOMPARE(stage.count(u"personas"_s), empty ? 0 : 1);
            QVERIFY(!stage.asksBeforeClosing());
        }
    }

    void the_current_row_counts_and_not_the_selected_one_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("copy") << u"Copy"_s << QStringList({u"A"_s, u"B"_s, u"A"_s});
        QTest::newRow("delete") << u"Delete"_s << QStringList({u"B"_s});
    }

    void the_current_row_counts_and_not_the_selected_one()
    {
        QFETCH(const QString, button);
        Stage stage;
        QVERIFY(showRows(stage, {u"A"_s, u"B"_s}));
        QVERIFY(makeCurrent(stage, u"u2"_s));
        QTableWidget *table = personaTable(stage);
        // The rows come in the order of the identities.
        table->setCurrentCell(0, 1, QItemSelectionModel::NoUpdate);
        QCOMPARE(table->selectedItems(), QList{table->item(1, 0)});
        press(stage, button);
        QTEST(stage.column(u"SELECT name FROM personas ORDER BY rowid"_s), "names");
    }

    // A statement that is still open would not let SQLite do it.
    void the_project_can_be_written_out_after_each_operation()
    {
        Stage stage;
        const auto writtenOut = [&stage](const QString &name) {
            return stage.exec(u"VACUUM INTO ?"_s, {stage.path(name)});
        };
        stage.call("insertPersona", u"A"_s, u"a"_s, u"x y x"_s);
        QVERIFY(writtenOut(u"inserted"_s));
        stage.call("updatePersona", newestUuid(stage), u"B"_s, u"b"_s, u"y z"_s);
        QVERIFY(writtenOut(u"updated"_s));
        QVERIFY(makeCurrent(stage, newestUuid(stage)));
        stage.call("copyPersona");
        QVERIFY(writtenOut(u"copied"_s));
        QVERIFY(makeCurrent(stage, newestUuid(stage)));
        stage.call("deletePersona");
        QVERIFY(writtenOut(u"deleted"_s));
        QCOMPARE(stage.count(u"personas"_s), 1);
    }
};

ORRINET_TEST(TestPersonaRows)
#include "tst_personarows.moc"

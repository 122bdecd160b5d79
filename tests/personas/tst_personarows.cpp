// Copying and deleting: the two buttons that act on the current row of the persona list.

#include "tests/personas/panel.h"
#include "tests/support/modal.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestPersonaRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_copy_has_the_same_name_and_description_under_a_new_identity()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        const auto source = stage.rows(u"SELECT * FROM personas"_s);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.button(u"Copy"_s)->click();

        QCOMPARE(stage.rows(u"SELECT * FROM personas WHERE uuid = 'u1'"_s), source);
        const QString copy = newestUuid(stage);
        QCOMPARE(copy.size(), 36);
        QCOMPARE(
            stage.rows(u"SELECT name, attributes, system_prompt IS NULL, notes IS NULL, "
                       "created_at > '2020-01-01T', modified_at > '2020-01-01 ' FROM personas WHERE uuid <> 'u1'"_s),
            Rows({QVariantList{u"A"_s, u"keeps bees"_s, 1, 1, 1, 1}}));
    }

    void no_answers_follow_a_copy()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.button(u"Copy"_s)->click();
        QCOMPARE(count(stage, u"personas"_s), 2);
        QCOMPARE(column(stage, u"SELECT persona_uuid FROM responses"_s), QStringList{u"u1"_s});
    }

    void a_copy_bears_the_tags_of_its_source_linked_in_the_order_of_their_names()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"m z B a"_s));
        const QString source = newestUuid(stage);
        QVERIFY(stage.call("insertPersona", u"C"_s, u"c"_s, u"other"_s));
        QVERIFY(makeCurrent(stage, source));
        stage.button(u"Copy"_s)->click();

        QVERIFY(newestUuid(stage) != source);
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"B"_s, u"a"_s, u"m"_s, u"z"_s}));
        QCOMPARE(tagsOf(stage, source), QStringList({u"m"_s, u"z"_s, u"B"_s, u"a"_s}));
        QCOMPARE(count(stage, u"tags"_s), 5);
    }

    void a_tag_with_a_blank_is_cut_in_two_on_the_copy()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"New York"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"urban"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.button(u"Copy"_s)->click();
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"New"_s, u"York"_s, u"urban"_s}));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"New York"_s, u"urban"_s}));
    }

    void a_copy_is_one_row_more_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        const QuietRefresh quiet(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(!stage.asksBeforeClosing());
        stage.button(u"Copy"_s)->click();
        QCOMPARE(personaTable(stage)->rowCount(), 2);
        QCOMPARE(personaTable(stage)->currentRow(), -1);
        QVERIFY(stage.asksBeforeClosing());
    }

    void deleting_a_persona_leaves_its_answers_and_tag_links()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"text"_s, false));
        for (const auto &uuid : {u"u1"_s, u"u2"_s}) {
            QVERIFY(enterPersona(stage, uuid, u"A"_s));
            QVERIFY(enterTag(stage, uuid, u"x"_s));
        }
        refreshQuietly(stage);
        const auto answers = stage.rows(u"SELECT * FROM responses"_s);
        const auto links = stage.rows(u"SELECT * FROM persona_tags"_s);
        auto *results = stage.find<QTableWidget>(u"resultsTable"_s);
        QCOMPARE(results->rowCount(), 2);

        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(column(stage, u"SELECT uuid FROM personas"_s), QStringList{u"u2"_s});
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), answers);
        QCOMPARE(stage.rows(u"SELECT * FROM persona_tags"_s), links);
        QCOMPARE(knownTags(stage), QStringList{u"x"_s});
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QCOMPARE(results->rowCount(), 1);
    }

    void a_persona_that_comes_back_finds_its_answers_and_tags()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"text"_s, false));
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"x"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(personaTable(stage)->rowCount(), 0);

        QVERIFY(stage.exec(u"INSERT INTO personas (uuid, name) VALUES ('u1', 'A')"_s));
        QVERIFY(stage.call("loadProject"));
        QCOMPARE(personaTable(stage)->item(0, 2)->text(), u"x"_s);
        QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->item(0, 1)->text(), u"honey"_s);
    }

    void nothing_is_asked_before_a_persona_is_deleted()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        const Modal modal([](QWidget *box) { box->close(); });
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(count(stage, u"personas"_s), 0);
        QVERIFY(!modal.wasAnswered());
    }

    void the_flag_is_set_between_the_deletion_and_the_refresh()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        const QuietRefresh quiet(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(!stage.asksBeforeClosing());
        QStringList events;
        const QObject context;
        connect(personaTable(stage)->model(), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"personas %1, marked %2"_s.arg(count(stage, u"personas"_s)).arg(stage.asksBeforeClosing()));
        });
        QVERIFY(stage.call("deletePersona"));
        QCOMPARE(events, QStringList{u"personas 0, marked 1"_s});
    }

    void without_a_current_row_nothing_happens_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("copy") << u"Copy"_s;
        QTest::newRow("delete") << u"Delete"_s;
    }
    void without_a_current_row_nothing_happens()
    {
        QFETCH(const QString, button);
        Stage stage;
        stage.button(button, u"Digital Twins"_s)->click();
        QCOMPARE(count(stage, u"personas"_s), 0);
        QVERIFY(!stage.asksBeforeClosing());

        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QCOMPARE(personaTable(stage)->currentRow(), -1);
        stage.button(button, u"Digital Twins"_s)->click();
        QCOMPARE(count(stage, u"personas"_s), 1);
        QVERIFY(!stage.asksBeforeClosing());
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
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterPersona(stage, u"u2"_s, u"B"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u2"_s));
        QTableWidget *table = personaTable(stage);
        // The rows come in the order of the identities.
        table->setCurrentCell(0, 1, QItemSelectionModel::NoUpdate);
        QCOMPARE(table->selectedItems(), QList{table->item(1, 0)});
        stage.button(button, u"Digital Twins"_s)->click();
        QTEST(column(stage, u"SELECT name FROM personas ORDER BY rowid"_s), "names");
    }

    // The list can show personas of a pack, which the project does not have.
    void a_row_unknown_to_the_project_is_not_copied()
    {
        Stage stage;
        QTableWidget *table = personaTable(stage);
        table->insertRow(0);
        auto *item = new QTableWidgetItem(u"elsewher"_s);
        item->setData(Qt::UserRole, u"elsewhere"_s);
        table->setItem(0, 1, item);
        table->setCurrentCell(0, 0);
        QVERIFY(enterTag(stage, u"elsewhere"_s, u"x"_s));

        stage.button(u"Copy"_s)->click();
        QCOMPARE(count(stage, u"personas"_s), 0);
        QCOMPARE(count(stage, u"persona_tags"_s), 1);
        QCOMPARE(table->rowCount(), 1);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void deleting_a_row_unknown_to_the_project_refreshes_the_list_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QTableWidget *table = personaTable(stage);
        table->insertRow(0);
        auto *item = new QTableWidgetItem(u"elsewher"_s);
        item->setData(Qt::UserRole, u"elsewhere"_s);
        table->setItem(0, 1, item);
        table->setCurrentCell(0, 0);
        const QuietRefresh quiet(stage);

        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(count(stage, u"personas"_s), 1);
        QCOMPARE(Stage::cells(table).constFirst().at(1), u"u1"_s);
        QVERIFY(stage.asksBeforeClosing());
    }

    void the_project_can_be_written_out_after_each_operation()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x y x"_s));
        QVERIFY(stage.exec(u"VACUUM INTO ?"_s, {stage.path(u"1"_s)}));
        QVERIFY(stage.call("updatePersona", newestUuid(stage), u"B"_s, u"b"_s, u"y z"_s));
        QVERIFY(stage.exec(u"VACUUM INTO ?"_s, {stage.path(u"2"_s)}));
        QVERIFY(makeCurrent(stage, newestUuid(stage)));
        QVERIFY(stage.call("copyPersona"));
        QVERIFY(stage.exec(u"VACUUM INTO ?"_s, {stage.path(u"3"_s)}));
        QVERIFY(makeCurrent(stage, newestUuid(stage)));
        QVERIFY(stage.call("deletePersona"));
        QVERIFY(stage.exec(u"VACUUM INTO ?"_s, {stage.path(u"4"_s)}));
        QCOMPARE(count(stage, u"personas"_s), 1);
    }
};

QTEST_MAIN(TestPersonaRows)
#include "tst_personarows.moc"

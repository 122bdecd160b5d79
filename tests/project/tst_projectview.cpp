// The refresh of the views, also on a project that lacks tables or has odd ones in their place.

#include "tests/project/projectfile.h"
#include "tests/support/entries.h"

#include <QGroupBox>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

class TestProjectView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void row_shows_what_is_stored_of_a_persona();
    void missing_values_show_as_empty_cells();
    void rows_follow_the_uuid_and_not_the_name();
    void refresh_rebuilds_the_whole_list();
    void hidden_columns_outlast_a_refresh();
    void persona_chooser_lists_names_in_order_and_keeps_the_uuid();
    void persona_chooser_speaks_while_it_is_refilled();
    void refresh_reaches_questions_and_results();
    void persona_list_that_cannot_be_read_ends_the_refresh_data();
    void persona_list_that_cannot_be_read_ends_the_refresh();
    void missing_links_are_said_of_the_list();
    void conversation_chooser_stays_empty_where_the_questions_are_gone();
};

void TestProjectView::row_shows_what_is_stored_of_a_persona()
{
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"0123456789abcdef"_s,
                                        .name = u"Number One"_s,
                                        .attributes = u"Calm.\nTall."_s,
                                        .systemPrompt = u"hidden"_s,
                                        .notes = u"hidden"_s,
                                        .tags = {u"odd"_s, u"calm"_s}}));
    stage.call("loadProject");
    const QTableWidget *table = personaTable(stage);
    QCOMPARE(cells(table), (QList<QStringList>{{u"Number One"_s, u"01234567"_s, u"odd,calm"_s, QString(),
                                                u"2001-02-03T04:05:06.789"_s, u"2001-02-03 04:05:06"_s}}));
    QCOMPARE(table->item(0, 1)->data(Qt::UserRole).toString(), u"0123456789abcdef"_s);
    for (const int column : {0, 2, 4, 5}) {
        QVERIFY(!table->item(0, column)->data(Qt::UserRole).isValid());
        QVERIFY(table->cellWidget(0, column) == nullptr);
    }

    QVERIFY(table->item(0, 3) == nullptr);
    const auto *narrative = qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3));
    QVERIFY(narrative != nullptr);
    QCOMPARE(narrative->toPlainText(), u"Calm.\nTall."_s);
    QVERIFY(narrative->isReadOnly());
    QCOMPARE(narrative->minimumHeight(), 60);
    QCOMPARE(narrative->maximumHeight(), 60);
}

void TestProjectView::missing_values_show_as_empty_cells()
{
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"short"_s, .createdAt = {}, .modifiedAt = {}}));
    stage.call("loadProject");
    const QTableWidget *table = personaTable(stage);
    QCOMPARE(cells(table), (QList<QStringList>{{u""_s, u"short"_s, u""_s, QString(), u""_s, u""_s}}));
    for (const int column : {0, 2, 4, 5})
        QVERIFY(table->item(0, column) != nullptr);
    QCOMPARE(qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3))->toPlainText(), QString());
}

void TestProjectView::rows_follow_the_uuid_and_not_the_name()
{
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"c"_s, .name = u"Number One"_s},
                  PersonaEntered{.uuid = u"a"_s, .name = u"Number Two"_s},
                  PersonaEntered{.uuid = u"b"_s, .name = u"Any"_s}));
    stage.call("loadProject");
    QCOMPARE(columnTexts(personaTable(stage), 1), (QStringList{u"a"_s, u"b"_s, u"c"_s}));
}

void TestProjectView::refresh_rebuilds_the_whole_list()
{
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"one"_s, .name = u"Number One"_s},
                  PersonaEntered{.uuid = u"two"_s, .name = u"Number Two"_s}));
    stage.call("loadProject");
    QTableWidget *table = personaTable(stage);
    table->selectRow(1);
    table->item(0, 0)->setText(u"written into the cell"_s);
    QVERIFY(stage.exec(u"DELETE FROM personas WHERE uuid = 'two'"_s));
    stage.call("loadProject");
    QCOMPARE(columnTexts(table, 0), QStringList{u"Number One"_s});
    QVERIFY(table->selectedItems().isEmpty());
    QCOMPARE(stage.column(u"SELECT name FROM personas"_s), QStringList{u"Number One"_s});
}

void TestProjectView::hidden_columns_outlast_a_refresh()
{
    Stage stage;
    stage.action(u"Show Modified"_s)->trigger();
    for (const char *refresh : {"loadProject", "newProject"}) {
        stage.call(refresh);
        QVERIFY(personaTable(stage)->isColumnHidden(4));
        QVERIFY(!personaTable(stage)->isColumnHidden(5));
    }
}

void TestProjectView::persona_chooser_lists_names_in_order_and_keeps_the_uuid()
{
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"a"_s, .name = u"Number Two"_s},
                  PersonaEntered{.uuid = u"b"_s, .name = u"Number One"_s}));
    const QComboBox *chooser = ConversationBox(stage).persona;
    for (int turn = 0; turn < 2; ++turn) {
        stage.call("loadProject");
        QCOMPARE(items(chooser), (QStringList{u"Number One"_s, u"Number Two"_s}));
        QCOMPARE(chooser->itemData(0).toString(), u"b"_s);
        QCOMPARE(chooser->itemData(1).toString(), u"a"_s);
    }
}

void TestProjectView::persona_chooser_speaks_while_it_is_refilled()
{
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"a"_s, .name = u"Number One"_s}));
    const QSignalSpy changes(ConversationBox(stage).persona, &QComboBox::currentIndexChanged);
    stage.call("loadProject");
    QVERIFY(!changes.isEmpty());
}

void TestProjectView::refresh_reaches_questions_and_results()
{
    Stage stage;
    QVERIFY(
        enter(stage, PersonaEntered{.uuid = u"one"_s, .name = u"Number One"_s}, QuestionEntered{.prompt = u"Why?"_s}));
    stage.call("loadProject");
    QCOMPARE(questionModel(stage)->rowCount(), 1);
    QCOMPARE(items(ConversationBox(stage).question), QStringList{u"1"_s});
    QVERIFY(!ConversationBox(stage).group->isHidden());
    QCOMPARE(resultsTable(stage)->rowCount(), 1);
    QCOMPARE(resultsTable(stage)->columnCount(), 3);
}

void TestProjectView::persona_list_that_cannot_be_read_ends_the_refresh_data()
{
    QTest::addColumn<QStringList>("statements");
    const QString drop = u"DROP TABLE personas"_s;
    QTest::addRow("the statement can't be prepared") << QStringList{drop};
    // A number that overflows is found out only when the row is read.
    QTest::addRow("the statement fails on its way")
        << QStringList{drop, u"CREATE VIEW personas AS SELECT abs(-9223372036854775808) AS uuid, 'x' AS name, "
                             "'x' AS attributes, 'x' AS created_at, 'x' AS modified_at"_s};
}

void TestProjectView::persona_list_that_cannot_be_read_ends_the_refresh()
{
    QFETCH(const QStringList, statements);
    Stage stage;
    QVERIFY(enter(stage, PersonaEntered{.uuid = u"one"_s, .name = u"Number One"_s, .tags = {u"odd"_s}}));
    stage.call("loadProject");
    QVERIFY(enter(stage, QuestionEntered{.prompt = u"Why?"_s}, TagEntered{.name = u"even"_s}));
    QVERIFY(setBoilerplate(stage, u"Mine."_s, u""_s));
    QVERIFY(stage.exec(statements));
    const QString error = stage.refusal(u"SELECT p.uuid FROM personas p GROUP BY p.uuid"_s);

    const MessageLog log;
    stage.call("loadProject");
    QCOMPARE(log.warnings(), QStringList{error});
    QCOMPARE(personaTable(stage)->rowCount(), 0);
    // What comes before the list is refreshed, what comes behind it is not.
    QCOMPARE(preambleEdit(stage)->toPlainText(), u"Mine."_s);
    QCOMPARE(items(tagFilter(stage)), (QStringList{u"All"_s, u"even"_s, u"odd"_s}));
    QCOMPARE(items(ConversationBox(stage).persona), QStringList{u"Number One"_s});
    QCOMPARE(questionModel(stage)->rowCount(), 0);
    QCOMPARE(ConversationBox(stage).question->count(), 0);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectView::missing_links_are_said_of_the_list()
{
    Stage stage;
    QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
    const MessageLog log;
    stage.call("loadProject");
    QCOMPARE(log.warnings(), QStringList{stage.refusal(u"SELECT * FROM persona_tags"_s)});
}

void TestProjectView::conversation_chooser_stays_empty_where_the_questions_are_gone()
{
    Stage stage;
    showQuestions(stage, 1);
    QCOMPARE(ConversationBox(stage).question->count(), 1);
    QVERIFY(stage.exec(u"DROP TABLE questions"_s));
    stage.call("loadProject");
    QCOMPARE(ConversationBox(stage).question->count(), 0);
    QVERIFY(ConversationBox(stage).group->isHidden());
}

ORRINET_TEST(TestProjectView)
#include "tst_projectview.moc"

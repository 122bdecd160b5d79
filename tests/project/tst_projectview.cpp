#include "tests/project/panel.h"

#include <QAction>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

class TestProjectView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void row_shows_what_is_stored_of_a_persona()
    {
        Stage stage;
        stage.exec(
            u"INSERT INTO personas (uuid, name, attributes, system_prompt, notes, created_at, modified_at) VALUES "
            "('0123456789abcdef', 'Number One', 'Calm.' || char(10) || 'Tall.', 'hidden', 'hidden', "
            "'2026-01-02T03:04:05.678', '2026-01-02 03:04:05')"_s);
        stage.exec(u"INSERT INTO tags VALUES (1, 'odd'), (2, 'calm')"_s);
        stage.exec(u"INSERT INTO persona_tags VALUES ('0123456789abcdef', 1), ('0123456789abcdef', 2)"_s);
        stage.call("loadProject");

        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        const QList<QStringList> expected = {{u"Number One"_s, u"01234567"_s, u"odd,calm"_s, QString(),
                                              u"2026-01-02T03:04:05.678"_s, u"2026-01-02 03:04:05"_s}};
        QCOMPARE(Stage::cells(table), expected);
        QCOMPARE(table->item(0, 1)->data(Qt::UserRole).toString(), u"0123456789abcdef"_s);
        for (const int column : {0, 2, 4, 5})
            QVERIFY(!table->item(0, column)->data(Qt::UserRole).isValid());
    }

    void narrative_stands_in_a_widget_for_reading()
    {
        Stage stage;
        storePersonas(stage, {{u"one"_s, u"Number One"_s, {}}});
        stage.call("loadProject");
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        QVERIFY(table->item(0, 3) == nullptr);
        const auto *narrative = qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3));
        QVERIFY(narrative != nullptr);
        QCOMPARE(narrative->toPlainText(), u"Told of Number One"_s);
        QVERIFY(narrative->isReadOnly());
        QCOMPARE(narrative->minimumHeight(), 60);
        QCOMPARE(narrative->maximumHeight(), 60);
        for (const int column : {0, 1, 2, 4, 5})
            QVERIFY(table->cellWidget(0, column) == nullptr);
    }

    void missing_values_show_as_empty_cells()
    {
        Stage stage;
        stage.exec(u"INSERT INTO personas (uuid) VALUES ('short')"_s);
        stage.call("loadProject");
        const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        QCOMPARE(table->rowCount(), 1);
        for (const int column : {0, 2, 4, 5}) {
            QVERIFY(table->item(0, column) != nullptr);
            QCOMPARE(table->item(0, column)->text(), QString());
        }
        QCOMPARE(table->item(0, 1)->text(), u"short"_s);
        QCOMPARE(qobject_cast<QPlainTextEdit *>(table->cellWidget(0, 3))->toPlainText(), QString());
    }

    void rows_follow_the_uuid_and_not_the_name()
    {
        Stage stage;
        storePersonas(stage, {{u"c"_s, u"Number One"_s, {}}, {u"a"_s, u"Number Two"_s, {}}, {u"b"_s, u"Any"_s, {}}});
        stage.call("loadProject");
        QCOMPARE(personaColumn(stage, 1), (QStringList{u"a"_s, u"b"_s, u"c"_s}));
    }

    void refresh_rebuilds_the_whole_list()
    {
        Stage stage;
        storePersonas(stage, {{u"one"_s, u"Number One"_s, {}}, {u"two"_s, u"Number Two"_s, {}}});
        stage.call("loadProject");
        auto *table = stage.find<QTableWidget>(u"personaTable"_s);
        table->selectRow(1);
        table->item(0, 0)->setText(u"written into the cell"_s);
        stage.exec(u"DELETE FROM personas WHERE uuid = 'two'"_s);
        stage.call("loadProject");
        QCOMPARE(personaColumn(stage, 0), QStringList{u"Number One"_s});
        QVERIFY(table->selectedItems().isEmpty());
        QCOMPARE(stage.value(u"SELECT name FROM personas"_s).toString(), u"Number One"_s);
    }

    void hidden_columns_outlast_a_refresh()
    {
        Stage stage;
        stage.action(u"Show Modified"_s)->trigger();
        storePersonas(stage, {{u"one"_s, u"Number One"_s, {}}});
        for (const char *refresh : {"loadProject", "newProject"}) {
            stage.call(refresh);
            const auto *table = stage.find<QTableWidget>(u"personaTable"_s);
            QVERIFY(table->isColumnHidden(4));
            QVERIFY(!table->isColumnHidden(5));
        }
    }

    void persona_chooser_lists_names_in_order_and_keeps_the_uuid();
    void persona_chooser_speaks_while_it_is_refilled();
    void refresh_reaches_questions_and_results();
    void tags_are_offered_behind_All();
    void filter_narrows_rows_and_tags();
    void empty_filter_shows_everyone();
    void filter_is_compared_exactly();
    void tag_named_All_is_listed_and_filters_nothing();
    void chooser_is_silent_while_it_is_refilled();
    void filter_of_before_counts_once_more_where_it_is_gone();
    void opened_project_is_filtered_once_by_the_tag_of_before_data();
    void opened_project_is_filtered_once_by_the_tag_of_before();
};

void TestProjectView::persona_chooser_lists_names_in_order_and_keeps_the_uuid()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number Two"_s, {}}, {u"b"_s, u"Number One"_s, {}}});
    for (int turn = 0; turn < 2; ++turn) {
        stage.call("loadProject");
        const QComboBox *chooser = conversationChooser(stage, 0);
        QCOMPARE(items(chooser), (QStringList{u"Number One"_s, u"Number Two"_s}));
        QCOMPARE(chooser->itemData(0, Qt::UserRole).toString(), u"b"_s);
        QCOMPARE(chooser->itemData(1, Qt::UserRole).toString(), u"a"_s);
    }
}

void TestProjectView::persona_chooser_speaks_while_it_is_refilled()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {}}});
    const QSignalSpy changes(conversationChooser(stage, 0), &QComboBox::currentIndexChanged);
    stage.call("loadProject");
    QVERIFY(!changes.isEmpty());
}

void TestProjectView::refresh_reaches_questions_and_results()
{
    Stage stage;
    storePersonas(stage, {{u"one"_s, u"Number One"_s, {}}});
    stage.exec(u"INSERT INTO questions (order_num, prompt) VALUES (1, 'Why?')"_s);
    stage.call("loadProject");
    QCOMPARE(stage.find<QTableView>(u"questionView"_s)->model()->rowCount(), 1);
    QCOMPARE(items(conversationChooser(stage, 1)), QStringList{u"1"_s});
    QVERIFY(!stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->isHidden());
    const auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
    QCOMPARE(grid->rowCount(), 1);
    QCOMPARE(grid->columnCount(), 3);
}

void TestProjectView::tags_are_offered_behind_All()
{
    Stage stage;
    storePersonas(stage,
                  {{u"one"_s, u"Number One"_s, {u"odd"_s, u"Calm"_s}}, {u"two"_s, u"Number Two"_s, {u"even"_s}}});
    stage.exec(u"INSERT INTO tags (name) VALUES ('borne by nobody')"_s);
    for (int turn = 0; turn < 2; ++turn) {
        stage.call("loadProject");
        const QStringList expected = {u"All"_s, u"Calm"_s, u"borne by nobody"_s, u"even"_s, u"odd"_s};
        QCOMPARE(items(stage.find<QComboBox>(u"tagFilter"_s)), expected);
    }
    QCOMPARE(stage.find<QComboBox>(u"tagFilter"_s)->currentText(), u"All"_s);
}

void TestProjectView::filter_narrows_rows_and_tags()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"odd"_s, u"calm"_s}},
                          {u"b"_s, u"Number Two"_s, {u"even"_s}},
                          {u"c"_s, u"Number Three"_s, {u"calm"_s, u"odd"_s}}});
    stage.call("loadProject");
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    filter->setCurrentText(u"odd"_s);
    QCOMPARE(personaColumn(stage, 1), (QStringList{u"a"_s, u"c"_s}));
    QCOMPARE(personaColumn(stage, 2), (QStringList{u"odd"_s, u"odd"_s}));
    QCOMPARE(filter->currentText(), u"odd"_s);
    // Only the list is narrowed.
    QCOMPARE(conversationChooser(stage, 0)->count(), 3);
    QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->rowCount(), 3);

    filter->setCurrentText(u"All"_s);
    QCOMPARE(personaColumn(stage, 1), (QStringList{u"a"_s, u"b"_s, u"c"_s}));
    QCOMPARE(personaColumn(stage, 2).constFirst().split(u',').size(), 2);
    QVERIFY(stage.asksBeforeClosing());
}

void TestProjectView::empty_filter_shows_everyone()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"odd"_s}}, {u"b"_s, u"Number Two"_s, {}}});
    stage.call("loadProject");
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    filter->setCurrentText(u"odd"_s);
    QCOMPARE(personaColumn(stage, 1).size(), 1);
    filter->setCurrentIndex(-1);
    QCOMPARE(personaColumn(stage, 1).size(), 2);
    QCOMPARE(filter->currentText(), u"All"_s);
}

void TestProjectView::filter_is_compared_exactly()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"all"_s}}, {u"b"_s, u"Number Two"_s, {u"ALL"_s}}});
    stage.call("loadProject");
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    filter->setCurrentIndex(filter->findText(u"all"_s, Qt::MatchExactly | Qt::MatchCaseSensitive));
    QCOMPARE(personaColumn(stage, 1), QStringList{u"a"_s});
}

void TestProjectView::tag_named_All_is_listed_and_filters_nothing()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"All"_s}}, {u"b"_s, u"Number Two"_s, {u"odd"_s}}});
    stage.call("loadProject");
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    QCOMPARE(items(filter), (QStringList{u"All"_s, u"All"_s, u"odd"_s}));
    filter->setCurrentIndex(2);
    QCOMPARE(personaColumn(stage, 1), QStringList{u"b"_s});
    filter->setCurrentIndex(1);
    QCOMPARE(personaColumn(stage, 1), (QStringList{u"a"_s, u"b"_s}));
}

void TestProjectView::chooser_is_silent_while_it_is_refilled()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"odd"_s}}});
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    const QSignalSpy changes(filter, &QComboBox::currentTextChanged);
    stage.call("loadProject");
    QCOMPARE(changes.size(), 0);
    filter->setCurrentText(u"odd"_s);
    QCOMPARE(changes.size(), 1);
    QVERIFY(!filter->signalsBlocked());
}

void TestProjectView::filter_of_before_counts_once_more_where_it_is_gone()
{
    Stage stage;
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"odd"_s}}, {u"b"_s, u"Number Two"_s, {}}});
    stage.call("loadProject");
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    filter->setCurrentText(u"odd"_s);
    stage.exec(u"DELETE FROM tags"_s);
    stage.call("loadProject");
    QCOMPARE(personaColumn(stage, 1), QStringList());
    QCOMPARE(filter->currentText(), u"All"_s);
    stage.call("loadProject");
    QCOMPARE(personaColumn(stage, 1), (QStringList{u"a"_s, u"b"_s}));
}

void TestProjectView::opened_project_is_filtered_once_by_the_tag_of_before_data()
{
    QTest::addColumn<QString>("tagInFile");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QString>("filter");
    QTest::addRow("a tag that it knows") << u"odd"_s << QStringList{u"c"_s} << u"odd"_s;
    QTest::addRow("a tag that it lacks") << u"even"_s << QStringList() << u"All"_s;
}

void TestProjectView::opened_project_is_filtered_once_by_the_tag_of_before()
{
    QFETCH(QString, tagInFile);
    Stage stage;
    Stage::setTestMode(true);
    storePersonas(stage, {{u"c"_s, u"Number Three"_s, {tagInFile}}, {u"d"_s, u"Number Four"_s, {}}});
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"other.ormt"_s)));
    stage.call("newProject");
    storePersonas(stage, {{u"a"_s, u"Number One"_s, {u"odd"_s}}});
    stage.call("loadProject");
    auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
    filter->setCurrentText(u"odd"_s);

    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    QTEST(personaColumn(stage, 1), "shown");
    QTEST(filter->currentText(), "filter");
}

QTEST_MAIN(TestProjectView)
#include "tst_projectview.moc"

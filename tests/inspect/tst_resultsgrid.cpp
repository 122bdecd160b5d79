#include "tests/inspect/surveydata.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QTest>

using namespace Qt::StringLiterals;

/// The form of the grid, and what it does when something can't be read.
class TestResultsGrid : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_page_holds_the_table_above_the_button();
    void the_table_keeps_the_defaults_of_its_kind();
    void rows_are_personas_and_column_pairs_are_questions_data();
    void rows_are_personas_and_column_pairs_are_questions();
    void personas_stand_by_name_and_questions_in_their_order();
    void a_question_without_reasoning_has_its_column_too();
    void an_odd_prompt_stands_in_the_header_as_it_is_data();
    void an_odd_prompt_stands_in_the_header_as_it_is();
    void the_name_stands_in_the_row_header_and_the_first_column();
    void items_are_plain_texts();
    void columns_fit_their_contents();
    void without_personas_or_questions_table_the_grid_is_empty_data();
    void without_personas_or_questions_table_the_grid_is_empty();
    void unreadable_answers_leave_the_cells_empty_data();
    void unreadable_answers_leave_the_cells_empty();
};

void TestResultsGrid::the_page_holds_the_table_above_the_button()
{
    Stage stage;
    const QWidget *page = stage.page(u"Results"_s);
    QVERIFY(page != nullptr);
    const auto *layout = qobject_cast<QVBoxLayout *>(page->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->count(), 2);
    QCOMPARE(layout->itemAt(0)->widget(), resultsTable(stage));
    auto *button = stage.find<QPushButton>(u"runSurveyButton"_s);
    QCOMPARE(layout->itemAt(1)->widget(), button);
    QCOMPARE(button->text(), u"Run Survey"_s);
}

void TestResultsGrid::the_table_keeps_the_defaults_of_its_kind()
{
    Stage stage;
    const QTableWidget *table = resultsTable(stage);
    const QTableWidget fresh;
    QCOMPARE(table->sizeAdjustPolicy(), QAbstractScrollArea::AdjustToContents);
    QCOMPARE(table->isSortingEnabled(), fresh.isSortingEnabled());
    QCOMPARE(table->selectionMode(), fresh.selectionMode());
    QCOMPARE(table->selectionBehavior(), fresh.selectionBehavior());
    QCOMPARE(table->editTriggers(), fresh.editTriggers());
    QCOMPARE(table->verticalHeader()->sectionResizeMode(0), fresh.verticalHeader()->sectionResizeMode(0));
}

void TestResultsGrid::rows_are_personas_and_column_pairs_are_questions_data()
{
    QTest::addColumn<QStringList>("personas");
    QTest::addColumn<QStringList>("prompts");
    QTest::addColumn<QStringList>("header");
    const QStringList people{u"A"_s, u"B"_s, u"C"_s};
    const QStringList prompts{u"One"_s, u"Two"_s};
    QTest::newRow("neither") << QStringList() << QStringList() << QStringList{u"Persona"_s};
    QTest::newRow("questions alone") << QStringList() << prompts << surveyTitles();
    QTest::newRow("personas alone") << people << QStringList() << QStringList{u"Persona"_s};
    QTest::newRow("both") << people << prompts << surveyTitles();
}

void TestResultsGrid::rows_are_personas_and_column_pairs_are_questions()
{
    QFETCH(const QStringList, personas);
    QFETCH(const QStringList, prompts);
    QFETCH(const QStringList, header);
    Stage stage;
    for (const QString &name : personas)
        QVERIFY(addPersona(stage, u"uuid "_s + name, name));
    for (int index = 0; index < prompts.size(); ++index)
        QVERIFY(addQuestion(stage, index + 1, prompts.at(index), index + 1));
    const QTableWidget *table = refreshed(stage);
    QCOMPARE(table->rowCount(), personas.size());
    QCOMPARE(table->columnCount(), (2 * prompts.size()) + 1);
    QCOMPARE(titles(table), header);
    QCOMPARE(titles(table, Qt::Vertical), personas);
}

void TestResultsGrid::personas_stand_by_name_and_questions_in_their_order()
{
    Stage stage;
    for (const auto &name : {u"b"_s, u"A"_s, u"a"_s, u"B"_s})
        QVERIFY(addPersona(stage, u"uuid "_s + name, name));
    QVERIFY(addQuestion(stage, 1, u"last"_s, 30));
    QVERIFY(addQuestion(stage, 2, u"first"_s, -1));
    QVERIFY(addQuestion(stage, 3, u"second"_s, 5));
    const QTableWidget *table = refreshed(stage);
    QCOMPARE(titles(table, Qt::Vertical), (QStringList{u"A"_s, u"B"_s, u"a"_s, u"b"_s}));
    QCOMPARE(titles(table), (QStringList{u"Persona"_s, u"first"_s, u"Reasoning for first"_s, u"second"_s,
                                         u"Reasoning for second"_s, u"last"_s, u"Reasoning for last"_s}));
}

void TestResultsGrid::a_question_without_reasoning_has_its_column_too()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    for (const int required : {0, 1}) {
        QVERIFY(stage.exec(u"UPDATE questions SET reasoning_required=?"_s, {required}));
        const QTableWidget *table = refreshed(stage);
        QCOMPARE(titles(table), surveyTitles());
        QCOMPARE(Stage::cells(table), surveyCells());
    }
}

void TestResultsGrid::an_odd_prompt_stands_in_the_header_as_it_is_data()
{
    QTest::addColumn<QString>("prompt");
    QTest::newRow("empty") << u""_s;
    QTest::newRow("null") << QString();
    QTest::newRow("place holders") << u"%1 of %2 & 100 %"_s;
    QTest::newRow("lines") << u"One\nTwo"_s;
}

void TestResultsGrid::an_odd_prompt_stands_in_the_header_as_it_is()
{
    QFETCH(const QString, prompt);
    Stage stage;
    QVERIFY(addQuestion(stage, 1, prompt, 1));
    QCOMPARE(titles(refreshed(stage)), (QStringList{u"Persona"_s, prompt, u"Reasoning for "_s + prompt}));
}

void TestResultsGrid::the_name_stands_in_the_row_header_and_the_first_column()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    const QTableWidget *table = refreshed(stage);
    for (int row = 0; row < table->rowCount(); ++row) {
        const QString name = surveyCells().at(row).first();
        QVERIFY(table->verticalHeaderItem(row) != nullptr);
        QCOMPARE(table->verticalHeaderItem(row)->text(), name);
        QCOMPARE(table->item(row, 0)->text(), name);
    }
}

void TestResultsGrid::items_are_plain_texts()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    const QTableWidget *table = refreshed(stage);
    QList<QTableWidgetItem *> items = table->findItems({}, Qt::MatchContains);
    QCOMPARE(items.size(), 10);
    items << table->verticalHeaderItem(0) << table->verticalHeaderItem(1);
    for (const QTableWidgetItem *item : std::as_const(items)) {
        QCOMPARE(item->flags(), QTableWidgetItem().flags());
        QCOMPARE(item->type(), int(QTableWidgetItem::Type));
        for (int role = Qt::DisplayRole; role <= Qt::UserRole + 8; ++role) {
            if (role != Qt::DisplayRole && role != Qt::EditRole)
                QVERIFY2(!item->data(role).isValid(), qPrintable(QString::number(role)));
        }
    }
}

void TestResultsGrid::columns_fit_their_contents()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    for (int refresh = 0; refresh < 2; ++refresh) {
        const QHeaderView *header = refreshed(stage)->horizontalHeader();
        QCOMPARE(header->count(), 5);
        for (int section = 0; section < header->count(); ++section)
            QCOMPARE(header->sectionResizeMode(section), QHeaderView::ResizeToContents);
    }
}

void TestResultsGrid::without_personas_or_questions_table_the_grid_is_empty_data()
{
    QTest::addColumn<QString>("damage");
    QTest::newRow("no personas table") << u"DROP TABLE personas"_s;
    QTest::newRow("no questions table") << u"DROP TABLE questions"_s;
    QTest::newRow("no name column") << u"ALTER TABLE personas DROP COLUMN name"_s;
    QTest::newRow("no flag column") << u"ALTER TABLE questions DROP COLUMN reasoning_required"_s;
}

void TestResultsGrid::without_personas_or_questions_table_the_grid_is_empty()
{
    QFETCH(const QString, damage);
    Stage stage;
    QVERIFY(addSurvey(stage));
    const QTableWidget *table = refreshed(stage);
    QCOMPARE(Stage::cells(table), surveyCells());
    QVERIFY(stage.exec(damage));
    refreshed(stage);
    QCOMPARE(table->rowCount(), 0);
    QCOMPARE(table->columnCount(), 0);
}

void TestResultsGrid::unreadable_answers_leave_the_cells_empty_data()
{
    QTest::addColumn<QString>("damage");
    QTest::newRow("no table") << u"DROP TABLE responses"_s;
    for (const auto &column : {u"text_answer"_s, u"numeric_answer"_s, u"json_answer"_s, u"created_at"_s})
        QTest::newRow(qPrintable(u"no "_s + column)) << u"ALTER TABLE responses DROP COLUMN "_s + column;
}

void TestResultsGrid::unreadable_answers_leave_the_cells_empty()
{
    QFETCH(const QString, damage);
    Stage stage;
    QVERIFY(addSurvey(stage));
    QVERIFY(stage.exec(damage));
    const QTableWidget *table = refreshed(stage);
    QCOMPARE(titles(table), surveyTitles());
    const QStringList empty(4);
    QCOMPARE(Stage::cells(table),
             (QList<QStringList>{QStringList(u"Persona A"_s) + empty, QStringList(u"Persona B"_s) + empty}));
}

QTEST_MAIN(TestResultsGrid)
#include "tst_resultsgrid.moc"

#include "tests/inspect/samplesurvey.h"
#include "tests/support/testcase.h"

#include <QHeaderView>
#include <QTest>

using namespace Qt::StringLiterals;

/// The form of the grid, what its cells show, and what it does when something can't be read.
class TestResultsGrid : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_table_keeps_the_defaults_of_its_kind()
    {
        Stage stage;
        const QTableWidget *table = resultsTable(stage);
        const QTableWidget fresh;
        QCOMPARE(table->isSortingEnabled(), fresh.isSortingEnabled());
        QCOMPARE(table->selectionMode(), fresh.selectionMode());
        QCOMPARE(table->selectionBehavior(), fresh.selectionBehavior());
        QCOMPARE(table->editTriggers(), fresh.editTriggers());
        QCOMPARE(table->verticalHeader()->sectionResizeMode(0), fresh.verticalHeader()->sectionResizeMode(0));
    }

    void rows_are_personas_and_column_pairs_are_questions_data()
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
    void rows_are_personas_and_column_pairs_are_questions()
    {
        QFETCH(const QStringList, personas);
        QFETCH(const QStringList, prompts);
        Stage stage;
        for (const QString &name : personas)
            QVERIFY(enter(stage, PersonaEntered{.uuid = name, .name = name}));
        for (const QString &prompt : prompts)
            QVERIFY(enter(stage, QuestionEntered{.prompt = prompt}));
        const QTableWidget *table = refreshedGrid(stage);
        QTEST(titles(table), "header");
        QCOMPARE(titles(table, Qt::Vertical), personas);
        QCOMPARE(columnTexts(table, 0), personas);
        for (int row = 0; row < table->rowCount(); ++row)
            QVERIFY(table->verticalHeaderItem(row) != nullptr);
    }

    void personas_stand_by_name_and_questions_in_their_order()
    {
        Stage stage;
        for (const auto &name : {u"b"_s, u"A"_s, u"a"_s, u"B"_s})
            QVERIFY(enter(stage, PersonaEntered{.uuid = name, .name = name}));
        QVERIFY(enter(stage, QuestionEntered{.order = 30, .prompt = u"last"_s},
                      QuestionEntered{.order = -1, .prompt = u"first"_s},
                      QuestionEntered{.order = 5, .prompt = u"second"_s}));
        const QTableWidget *table = refreshedGrid(stage);
        QCOMPARE(titles(table, Qt::Vertical), (QStringList{u"A"_s, u"B"_s, u"a"_s, u"b"_s}));
        QCOMPARE(titles(table), (QStringList{u"Persona"_s, u"first"_s, u"Reasoning for first"_s, u"second"_s,
                                             u"Reasoning for second"_s, u"last"_s, u"Reasoning for last"_s}));
    }

    void a_question_without_reasoning_has_its_column_too()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        for (const int required : {0, 1}) {
            QVERIFY(stage.exec(u"UPDATE questions SET reasoning_required=?"_s, {required}));
            const QTableWidget *table = refreshedGrid(stage);
            QCOMPARE(titles(table), surveyTitles());
            QCOMPARE(cells(table), surveyCells());
        }
    }

    void an_odd_prompt_stands_in_the_header_as_it_is_data()
    {
        QTest::addColumn<QString>("prompt");
        QTest::newRow("empty") << u""_s;
        QTest::newRow("null") << QString();
        QTest::newRow("place holders") << u"%1 of %2 & 100 %"_s;
        QTest::newRow("lines") << u"One\nTwo"_s;
    }
    void an_odd_prompt_stands_in_the_header_as_it_is()
    {
        QFETCH(const QString, prompt);
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.prompt = prompt}));
        QCOMPARE(titles(refreshedGrid(stage)), (QStringList{u"Persona"_s, prompt, u"Reasoning for "_s + prompt}));
    }

    void items_are_plain_texts()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        const QTableWidget *table = refreshedGrid(stage);
        QList<QTableWidgetItem *> items = table->findItems({}, Qt::MatchContains);
        // A cell without an answer has its item too.
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

    void columns_fit_their_contents()
    {
        Stage stage;
        QVERIFY(enterSurvey(stage));
        for (int refresh = 0; refresh < 2; ++refresh) {
            const QHeaderView *header = refreshedGrid(stage)->horizontalHeader();
            QCOMPARE(header->count(), 5);
            for (int section = 0; section < header->count(); ++section)
                QCOMPARE(header->sectionResizeMode(section), QHeaderView::ResizeToContents);
        }
    }

    // How an answer reads in general is a matter of the answers; here, that each column is asked for it.
    void two_cells_show_an_answer_data()
    {
        QTest::addColumn<QVariantList>("columns");
        QTest::addColumn<QStringList>("shown");
        const QVariant null;
        const auto json = u"{\"answer\":[1],\"reasoning\":\"why\"}"_s;
        QTest::newRow("text") << QVariantList{u"B"_s, 3, json} << QStringList{u"B"_s, u"why"_s};
        QTest::newRow("number") << QVariantList{null, 3.14159265, json} << QStringList{u"3.14159"_s, u"why"_s};
        QTest::newRow("number that is no number")
            << QVariantList{null, u"few"_s, json} << QStringList{u"0"_s, u"why"_s};
        QTest::newRow("object") << QVariantList{u""_s, null, json} << QStringList{json, u"why"_s};
        QTest::newRow("raw reply") << QVariantList{null, null, u"Rather B."_s}
                                   << QStringList{u"Rather B."_s, QString()};
        QTest::newRow("nothing") << QVariantList{null, null, null} << QStringList{QString(), QString()};
    }
    void two_cells_show_an_answer()
    {
        QFETCH(const QVariantList, columns);
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"a"_s}, QuestionEntered{.id = 1},
                      AnswerEntered{.persona = u"a"_s,
                                    .question = 1,
                                    .text = columns.at(0),
                                    .number = columns.at(1),
                                    .json = columns.at(2)}));
        QTEST(cells(refreshedGrid(stage)).value(0).mid(1), "shown");
    }

    void without_personas_or_questions_table_the_grid_is_empty_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("no personas table") << u"DROP TABLE personas"_s;
        QTest::newRow("no questions table") << u"DROP TABLE questions"_s;
        QTest::newRow("no name column") << u"ALTER TABLE personas DROP COLUMN name"_s;
        QTest::newRow("no flag column") << u"ALTER TABLE questions DROP COLUMN reasoning_required"_s;
    }
    void without_personas_or_questions_table_the_grid_is_empty()
    {
        QFETCH(const QString, damage);
        Stage stage;
        QVERIFY(enterSurvey(stage));
        const QTableWidget *table = refreshedGrid(stage);
        QCOMPARE(cells(table), surveyCells());
        QVERIFY(stage.exec(damage));
        refreshedGrid(stage);
        QCOMPARE(table->rowCount(), 0);
        QCOMPARE(table->columnCount(), 0);
    }

    void unreadable_answers_leave_the_cells_empty_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::newRow("no table") << u"DROP TABLE responses"_s;
        for (const auto &column : {u"text_answer"_s, u"numeric_answer"_s, u"json_answer"_s, u"created_at"_s})
            QTest::newRow(qPrintable(u"no "_s + column)) << u"ALTER TABLE responses DROP COLUMN "_s + column;
    }
    void unreadable_answers_leave_the_cells_empty()
    {
        QFETCH(const QString, damage);
        Stage stage;
        QVERIFY(enterSurvey(stage));
        QVERIFY(stage.exec(damage));
        const QTableWidget *table = refreshedGrid(stage);
        QCOMPARE(titles(table), surveyTitles());
        const QStringList empty(4);
        QCOMPARE(cells(table),
                 (QList<QStringList>{QStringList(u"Persona A"_s) + empty, QStringList(u"Persona B"_s) + empty}));
    }
};

ORRINET_TEST(TestResultsGrid)
#include "tst_resultsgrid.moc"

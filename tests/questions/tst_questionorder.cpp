// Deleting and moving: the buttons that act on the current row and refresh the list alone.

#include "tests/questions/questionlist.h"
#include "tests/support/modal.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// A persona P that answered the questions A, B and C with a, b and c.
static bool enterAnswers(Stage &stage)
{
    return enter(stage, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s},
                 AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"a"_s},
                 AnswerEntered{.persona = u"p"_s, .question = 2, .text = u"b"_s},
                 AnswerEntered{.persona = u"p"_s, .question = 3, .text = u"c"_s});
}

class TestQuestionOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_button_changes_the_numbers_alone_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("numbers");
        QTest::addColumn<int>("current");

        QTest::newRow("delete the first") << u"Delete"_s << 0 << u"24B 25C"_s << -1;
        QTest::newRow("delete from the middle") << u"Delete"_s << 1 << u"10A 25C"_s << -1;
        QTest::newRow("delete the last") << u"Delete"_s << 2 << u"10A 25B"_s << -1;
        QTest::newRow("second up") << u"Up"_s << 1 << u"25A 10B 26C"_s << 0;
        QTest::newRow("third up") << u"Up"_s << 2 << u"10A 26B 25C"_s << 1;
        QTest::newRow("first down") << u"Down"_s << 0 << u"25A 10B 26C"_s << 1;
        QTest::newRow("second down") << u"Down"_s << 1 << u"10A 26B 25C"_s << 2;
        QTest::newRow("first up") << u"Up"_s << 0 << u"10A 25B 26C"_s << 0;
        QTest::newRow("last down") << u"Down"_s << 2 << u"10A 25B 26C"_s << 2;
    }
    void a_button_changes_the_numbers_alone()
    {
        QFETCH(const QString, button);
        QFETCH(const int, row);
        QFETCH(const int, current);
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.order = 10, .prompt = u"A"_s},
                      QuestionEntered{.order = 25, .prompt = u"B"_s}, QuestionEntered{.order = 26, .prompt = u"C"_s}));
        QVERIFY(
            stage.exec(u"UPDATE questions SET serial = 7, judge_question = 1, ask_when = 'never', labels = '[]'"_s));
        QVERIFY(stage.call("loadQuestions"));
        const QString others = u"SELECT prompt, answer_type, labels, description, reasoning_required, judge_question, "
                               "model, temperature, search_enabled, ask_when, depends_on_question_id, "
                               "depends_on_answer, serial, created_at, modified_at FROM questions "
                               "ORDER BY question_id"_s;
        Rows left = stage.rows(others);
        QVERIFY(!stage.asksBeforeClosing());
        questionView(stage)->selectRow(row);
        QVERIFY(asksNothing([&] { press(stage, button); }));

        QTEST(numbering(stage), "numbers");
        if (button == "Delete"_L1)
            left.removeAt(row);
        QCOMPARE(stage.rows(others), left);
        QCOMPARE(columnTexts(stage, u"prompt"_s), stage.column(u"SELECT prompt FROM questions ORDER BY order_num"_s));
        QCOMPARE(questionView(stage)->currentIndex().row(), current);
        const auto selected = questionView(stage)->selectionModel()->selectedRows();
        QCOMPARE(selected.isEmpty() ? -1 : selected.first().row(), current);
        QCOMPARE(stage.asksBeforeClosing(), row != current);
    }

    void deleting_a_question_leaves_its_answers_and_attachments()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 3));
        QVERIFY(enterAnswers(stage));
        QVERIFY(stage.exec(u"INSERT INTO question_attachments (question_id, filename) VALUES (2, 'f')"_s));
        const auto answers = stage.rows(u"SELECT * FROM responses"_s);
        const auto attachments = stage.rows(u"SELECT * FROM question_attachments"_s);

        questionView(stage)->selectRow(1);
        press(stage, u"Delete"_s);
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), answers);
        QCOMPARE(stage.rows(u"SELECT * FROM question_attachments"_s), attachments);

        // The grid starts from the questions there are, and each keeps its own answers.
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(cells(resultsTable(stage)), QList<QStringList>({{u"P"_s, u"a"_s, u""_s, u"c"_s, u""_s}}));
    }

    void the_identity_of_a_deleted_question_is_not_given_again()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"A"_s, u"text"_s, false));
        questionView(stage)->selectRow(0);
        press(stage, u"Delete"_s);
        QVERIFY(stage.call("insertQuestion", u"B"_s, u"text"_s, false));
        QCOMPARE(stage.rows(u"SELECT question_id, order_num, prompt FROM questions"_s),
                 Rows({QVariantList{2, 1, u"B"_s}}));
    }

    void without_a_current_row_nothing_happens()
    {
        Stage stage;
        const QStringList buttons{u"Delete"_s, u"Up"_s, u"Down"_s};
        for (const QString &button : buttons)
            press(stage, button);
        QVERIFY(!stage.asksBeforeClosing());

        QVERIFY(listQuestions(stage, 2));
        QVERIFY(!questionView(stage)->currentIndex().isValid());
        for (const QString &button : buttons)
            press(stage, button);
        QCOMPARE(numbering(stage), u"1A 2B"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }

    // It is the current row and not the selected one, with its number of the last refresh.
    void what_counts_is_the_current_row_as_the_list_shows_it_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("numbers");
        QTest::newRow("delete") << u"Delete"_s << u"39A 59C 69D"_s;
        QTest::newRow("up") << u"Up"_s << u"2A 1B 60C 70D"_s;
        QTest::newRow("down") << u"Down"_s << u"40A 3B 2C 70D"_s;
    }
    void what_counts_is_the_current_row_as_the_list_shows_it()
    {
        QFETCH(const QString, button);
        Stage stage;
        QVERIFY(listQuestions(stage, 4));
        QVERIFY(stage.exec(u"UPDATE questions SET order_num = 30 + 10 * order_num"_s));
        questionView(stage)->selectRow(3);
        questionView(stage)->selectionModel()->setCurrentIndex(questionCell(stage, 1, u"prompt"_s),
                                                               QItemSelectionModel::NoUpdate);
        QCOMPARE(questionView(stage)->selectionModel()->selectedRows().value(0).row(), 3);
        press(stage, button);
        QTEST(numbering(stage), "numbers");
    }

    void repeated_presses_carry_a_question_on()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 4));
        questionView(stage)->selectRow(3);
        for (int time = 0; time < 3; ++time)
            press(stage, u"Up"_s);
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList({u"D"_s, u"A"_s, u"B"_s, u"C"_s}));
        QCOMPARE(numbering(stage), u"2A 3B 4C 1D"_s);
        QCOMPARE(questionView(stage)->currentIndex().row(), 0);
        for (int time = 0; time < 3; ++time)
            press(stage, u"Down"_s);
        QCOMPARE(numbering(stage), u"1A 2B 3C 4D"_s);
    }

    void deleting_and_moving_refresh_the_list_alone_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("shown");
        QTest::newRow("delete") << u"Delete"_s << u"AC"_s;
        QTest::newRow("up") << u"Up"_s << u"BAC"_s;
        QTest::newRow("down") << u"Down"_s << u"ACB"_s;
    }
    void deleting_and_moving_refresh_the_list_alone()
    {
        QFETCH(const QString, button);
        QFETCH(const QString, shown);
        Stage stage;
        QVERIFY(enterAnswers(stage) && listQuestions(stage, 3));
        const auto offered = offeredQuestions(stage);
        QCOMPARE(offered.size(), 3);
        const auto gridTitles = titles(resultsTable(stage));
        const auto gridCells = cells(resultsTable(stage));
        QCOMPARE(gridCells, QList<QStringList>({{u"P"_s, u"a"_s, u""_s, u"b"_s, u""_s, u"c"_s, u""_s}}));
        questionView(stage)->selectRow(1);
        press(stage, button);
        QCOMPARE(columnTexts(stage, u"prompt"_s).join(QString()), shown);
        QCOMPARE(offeredQuestions(stage), offered);
        QCOMPARE(titles(resultsTable(stage)), gridTitles);
        QCOMPARE(cells(resultsTable(stage)), gridCells);

        QVERIFY(stage.call("loadQuestions"));
        QVERIFY(offeredQuestions(stage) != offered);
        QCOMPARE(columnTexts(resultsTable(stage), 1), QStringList(shown.first(1).toLower()));
        QCOMPARE(titles(resultsTable(stage)).size(), (2 * shown.size()) + 1);
    }

    void the_flag_is_set_after_the_list_is_refreshed_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QStringList>("events");
        QTest::newRow("delete") << u"Delete"_s << QStringList(u"1A 2C, marked 0"_s);
        QTest::newRow("up") << u"Up"_s << QStringList({u"2A 1B 3C, marked 0"_s, u"row 0, marked 0"_s});
        QTest::newRow("down") << u"Down"_s << QStringList({u"1A 3B 2C, marked 0"_s, u"row 2, marked 0"_s});
    }
    void the_flag_is_set_after_the_list_is_refreshed()
    {
        QFETCH(const QString, button);
        Stage stage;
        QVERIFY(listQuestions(stage, 3));
        questionView(stage)->selectRow(1);
        QStringList events;
        const QObject context;
        connect(questionModel(stage), &QAbstractItemModel::modelReset, &context,
                [&] { events.append(u"%1, marked %2"_s.arg(numbering(stage)).arg(stage.asksBeforeClosing())); });
        connect(questionView(stage)->selectionModel(), &QItemSelectionModel::currentRowChanged, &context,
                [&](const QModelIndex &current) {
                    events.append(u"row %1, marked %2"_s.arg(current.row()).arg(stage.asksBeforeClosing()));
                });
        press(stage, button);
        QTEST(events, "events");
        QVERIFY(stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestQuestionOrder)
#include "tst_questionorder.moc"

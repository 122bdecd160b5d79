// Deleting and moving: the buttons that act on the current row and refresh the list alone.

#include "tests/questions/questionnaire.h"
#include "tests/support/modal.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestQuestionOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deleting_a_question_closes_the_gap_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("left");

        QTest::newRow("first") << 0 << u"1B 2C"_s;
        QTest::newRow("middle") << 1 << u"1A 2C"_s;
        QTest::newRow("last") << 2 << u"1A 2B"_s;
    }
    void deleting_a_question_closes_the_gap()
    {
        QFETCH(const int, row);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        questionView(stage)->selectRow(row);
        press(stage, u"Delete"_s);
        QTEST(numbering(stage), "left");
        QCOMPARE(shownColumn(stage, u"order_num"_s), QStringList({u"1"_s, u"2"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void deleting_a_question_leaves_its_answers_and_attachments()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO personas (uuid, name) VALUES ('u1', 'A')"_s));
        QVERIFY(enterQuestions(stage, 3));
        QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer) "
                           "VALUES ('u1', 1, 'a'), ('u1', 2, 'b'), ('u1', 3, 'c')"_s));
        QVERIFY(stage.exec(u"INSERT INTO question_attachments (question_id, filename) VALUES (2, 'f')"_s));
        const auto answers = stage.rows(u"SELECT * FROM responses"_s);
        const auto attachments = stage.rows(u"SELECT * FROM question_attachments"_s);

        questionView(stage)->selectRow(1);
        press(stage, u"Delete"_s);
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), answers);
        QCOMPARE(stage.rows(u"SELECT * FROM question_attachments"_s), attachments);

        // The grid starts from the questions there are, and each keeps its own answers.
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)),
                 QList<QStringList>({QStringList({u"A"_s, u"a"_s, u""_s, u"c"_s, u""_s})}));
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

    void nothing_but_the_numbers_changes_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("delete") << u"Delete"_s;
        QTest::newRow("up") << u"Up"_s;
        QTest::newRow("down") << u"Down"_s;
    }
    void nothing_but_the_numbers_changes()
    {
        QFETCH(const QString, button);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        QVERIFY(
            stage.exec(u"UPDATE questions SET serial = 7, judge_question = 1, ask_when = 'never', labels = '[]'"_s));
        const QString others = u"SELECT question_id, prompt, answer_type, labels, description, reasoning_required, "
                               "judge_question, model, temperature, search_enabled, ask_when, "
                               "depends_on_question_id, depends_on_answer, serial, created_at, modified_at "
                               "FROM questions WHERE question_id <> 2 ORDER BY question_id"_s;
        const auto before = stage.rows(others);
        questionView(stage)->selectRow(1);
        press(stage, button);
        QCOMPARE(stage.rows(others), before);
    }

    void nothing_is_asked_before_a_question_is_deleted()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 1));
        questionView(stage)->selectRow(0);
        const Modal modal([](QWidget *box) { box->close(); });
        press(stage, u"Delete"_s);
        QCOMPARE(numbering(stage), QString());
        QVERIFY(!modal.wasAnswered());
    }

    void without_a_current_row_nothing_happens_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("delete") << u"Delete"_s;
        QTest::newRow("up") << u"Up"_s;
        QTest::newRow("down") << u"Down"_s;
    }
    void without_a_current_row_nothing_happens()
    {
        QFETCH(const QString, button);
        Stage stage;
        press(stage, button);
        QVERIFY(!stage.asksBeforeClosing());

        QVERIFY(enterQuestions(stage, 2));
        QVERIFY(!questionView(stage)->currentIndex().isValid());
        press(stage, button);
        QCOMPARE(numbering(stage), u"1A 2B"_s);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void the_current_row_counts_and_not_the_selected_one_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("numbers");
        QTest::newRow("delete") << u"Delete"_s << u"1A 2C 3D"_s;
        QTest::newRow("up") << u"Up"_s << u"2A 1B 3C 4D"_s;
        QTest::newRow("down") << u"Down"_s << u"1A 3B 2C 4D"_s;
    }
    void the_current_row_counts_and_not_the_selected_one()
    {
        QFETCH(const QString, button);
        Stage stage;
        QVERIFY(enterQuestions(stage, 4));
        questionView(stage)->selectRow(3);
        questionView(stage)->selectionModel()->setCurrentIndex(questionCell(stage, 1, u"prompt"_s),
                                                               QItemSelectionModel::NoUpdate);
        QCOMPARE(questionView(stage)->selectionModel()->selectedRows().value(0).row(), 3);
        press(stage, button);
        QTEST(numbering(stage), "numbers");
    }

    void a_second_press_of_delete_does_nothing()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        questionView(stage)->selectRow(0);
        press(stage, u"Delete"_s);
        QVERIFY(!questionView(stage)->currentIndex().isValid());
        QVERIFY(!questionView(stage)->selectionModel()->hasSelection());
        press(stage, u"Delete"_s);
        QCOMPARE(numbering(stage), u"1B 2C"_s);
    }

    void a_move_swaps_two_neighbours_and_keeps_the_row_selected_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("target");
        QTest::addColumn<QString>("numbers");

        QTest::newRow("second up") << u"Up"_s << 1 << 0 << u"2A 1B 3C"_s;
        QTest::newRow("third up") << u"Up"_s << 2 << 1 << u"1A 3B 2C"_s;
        QTest::newRow("first down") << u"Down"_s << 0 << 1 << u"2A 1B 3C"_s;
        QTest::newRow("second down") << u"Down"_s << 1 << 2 << u"1A 3B 2C"_s;
    }
    void a_move_swaps_two_neighbours_and_keeps_the_row_selected()
    {
        QFETCH(const QString, button);
        QFETCH(const int, row);
        QFETCH(const int, target);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        QVERIFY(!stage.asksBeforeClosing());
        const QString moved = shownColumn(stage, u"prompt"_s).at(row);
        questionView(stage)->selectRow(row);
        press(stage, button);
        QTEST(numbering(stage), "numbers");
        QCOMPARE(shownColumn(stage, u"order_num"_s), QStringList({u"1"_s, u"2"_s, u"3"_s}));
        QCOMPARE(shownColumn(stage, u"prompt"_s).at(target), moved);
        QCOMPARE(questionView(stage)->currentIndex().row(), target);
        QCOMPARE(questionView(stage)->selectionModel()->selectedRows().value(0).row(), target);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_move_past_either_end_does_nothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("row");
        QTest::newRow("first up") << u"Up"_s << 0;
        QTest::newRow("last down") << u"Down"_s << 2;
    }
    void a_move_past_either_end_does_nothing()
    {
        QFETCH(const QString, button);
        QFETCH(const int, row);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        questionView(stage)->selectRow(row);
        press(stage, button);
        QCOMPARE(numbering(stage), u"1A 2B 3C"_s);
        QCOMPARE(questionView(stage)->currentIndex().row(), row);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void repeated_presses_carry_a_question_on()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 4));
        questionView(stage)->selectRow(3);
        for (int time = 0; time < 3; ++time)
            press(stage, u"Up"_s);
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList({u"D"_s, u"A"_s, u"B"_s, u"C"_s}));
        QCOMPARE(numbering(stage), u"2A 3B 4C 1D"_s);
        QCOMPARE(questionView(stage)->currentIndex().row(), 0);
        for (int time = 0; time < 3; ++time)
            press(stage, u"Down"_s);
        QCOMPARE(numbering(stage), u"1A 2B 3C 4D"_s);
    }

    void a_move_swaps_numbers_with_gaps_as_they_are()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num, prompt) VALUES (10, 'A'), (25, 'B'), (26, 'C')"_s));
        QVERIFY(stage.call("loadQuestions"));
        questionView(stage)->selectRow(0);
        press(stage, u"Down"_s);
        QCOMPARE(numbering(stage), u"25A 10B 26C"_s);
    }

    // What counts is what the user sees, until the list is refreshed.
    void numbers_are_taken_from_the_list_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("numbers");
        QTest::newRow("up") << u"Up"_s << u"2A 1B 60C"_s;
        QTest::newRow("down") << u"Down"_s << u"40A 3B 2C"_s;
        QTest::newRow("delete") << u"Delete"_s << u"39A 59C"_s;
    }
    void numbers_are_taken_from_the_list()
    {
        QFETCH(const QString, button);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        QVERIFY(stage.exec(u"UPDATE questions SET order_num = 30 + 10 * order_num"_s));
        questionView(stage)->selectRow(1);
        press(stage, button);
        QTEST(numbering(stage), "numbers");
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
        QVERIFY(enterQuestions(stage, 3));
        const auto offered = offeredQuestions(stage);
        QCOMPARE(offered.size(), 3);
        const auto titles = gridTitles(stage);
        questionView(stage)->selectRow(1);
        press(stage, button);
        QCOMPARE(shownColumn(stage, u"prompt"_s).join(QString()), shown);
        QCOMPARE(offeredQuestions(stage), offered);
        QCOMPARE(gridTitles(stage), titles);

        QVERIFY(stage.call("loadQuestions"));
        QVERIFY(offeredQuestions(stage) != offered);
        QCOMPARE(gridTitles(stage).size(), (2 * shown.size()) + 1);
        QCOMPARE(gridTitles(stage).at(1), shown.first(1));
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
        QVERIFY(enterQuestions(stage, 3));
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

QTEST_MAIN(TestQuestionOrder)
#include "tst_questionorder.moc"

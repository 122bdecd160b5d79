#include "tests/support/stage.h"

#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// Keeps a journal, in the project, of what is written to the table boilerplate.
void startJournal(Stage &stage)
{
    const QStringList statements{u"CREATE TABLE journal (id INTEGER PRIMARY KEY, act TEXT)"_s,
                                 u"CREATE TRIGGER deleted AFTER DELETE ON boilerplate BEGIN INSERT INTO journal (act) "
                                 "VALUES ('- ' || OLD.preamble || '|' || OLD.postamble); END"_s,
                                 u"CREATE TRIGGER inserted AFTER INSERT ON boilerplate BEGIN INSERT INTO journal (act) "
                                 "VALUES ('+ ' || NEW.preamble || '|' || NEW.postamble); END"_s};
    for (const QString &statement : statements)
        QVERIFY(stage.exec(statement));
}

QStringList journalOf(Stage &stage)
{
    QStringList acts;
    for (const auto listed = stage.rows(u"SELECT act FROM journal ORDER BY id"_s); const QVariantList &row : listed)
        acts.append(row.first().toString());
    return acts;
}

QPlainTextEdit *preamble(Stage &stage)
{
    return stage.find<QPlainTextEdit>(u"preambleEdit"_s);
}

QPlainTextEdit *postamble(Stage &stage)
{
    return stage.find<QPlainTextEdit>(u"postambleEdit"_s);
}

/// The stored rows, each as "preamble|postamble", with NULL spelled out.
QStringList stored(Stage &stage)
{
    QStringList all;
    for (const auto listed =
             stage.rows(u"SELECT ifnull(preamble, 'NULL') || '|' || ifnull(postamble, 'NULL') FROM boilerplate"_s);
         const QVariantList &row : listed)
        all.append(row.first().toString());
    return all;
}

void store(Stage &stage, const QStringList &rows)
{
    stage.exec(u"DELETE FROM boilerplate"_s);
    for (const QString &row : rows) {
        QVERIFY(stage.exec(u"INSERT INTO boilerplate VALUES (nullif(?, 'NULL'), nullif(?, 'NULL'))"_s,
                           {row.section(u'|', 0, 0), row.section(u'|', 1)}));
    }
}

} // namespace

class TestBoilerplate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refresh_shows_and_rewrites_the_row_data();
    void refresh_shows_and_rewrites_the_row();

    void refresh_passes_through_both_text_slots_in_order()
    {
        Stage stage;
        store(stage, {u"New before|New after"_s});
        startJournal(stage);
        stage.call("loadProject");
        // The first slot keeps the stored postamble, although the edit still shows the one of before.
        const QStringList expected = {u"- New before|New after"_s, u"+ New before|New after"_s,
                                      u"- New before|New after"_s, u"+ New before|New after"_s};
        QCOMPARE(journalOf(stage), expected);
    }

    void refresh_stores_the_default_only_where_there_is_no_row()
    {
        Stage stage;
        store(stage, {});
        startJournal(stage);
        stage.call("loadProject");
        const QStringList expected = {u"+ Act as the following persona.|"_s, u"- Act as the following persona.|"_s,
                                      u"+ Act as the following persona.|"_s};
        QCOMPARE(journalOf(stage), expected);
    }

    void every_keystroke_is_stored_at_once()
    {
        Stage stage;
        preamble(stage)->clear();
        startJournal(stage);
        QTest::keyClicks(preamble(stage), u"Be!"_s);
        const QStringList expected = {u"- |"_s, u"+ B|"_s, u"- B|"_s, u"+ Be|"_s, u"- Be|"_s, u"+ Be!|"_s};
        QCOMPARE(journalOf(stage), expected);
        QTest::keyClicks(postamble(stage), u"So"_s);
        QCOMPARE(journalOf(stage).constLast(), u"+ Be!|So"_s);
        QCOMPARE(stored(stage), QStringList{u"Be!|So"_s});
    }

    void cleared_preamble_is_stored_as_an_empty_text()
    {
        Stage stage;
        preamble(stage)->clear();
        QCOMPARE(stored(stage), QStringList{u"|"_s});
        stage.call("loadProject");
        QCOMPARE(preamble(stage)->toPlainText(), QString());
        QCOMPARE(stored(stage), QStringList{u"|"_s});
    }

    void cleared_postamble_is_stored_as_an_empty_text()
    {
        Stage stage;
        postamble(stage)->setPlainText(u"After"_s);
        postamble(stage)->clear();
        QCOMPARE(stored(stage), QStringList{u"Act as the following persona.|"_s});
    }

    void preamble_slot_takes_the_other_text_from_the_table()
    {
        Stage stage;
        postamble(stage)->setPlainText(u"shown"_s);
        store(stage, {u"old|stored"_s});
        preamble(stage)->setPlainText(u"new"_s);
        QCOMPARE(stored(stage), QStringList{u"new|stored"_s});
        QCOMPARE(postamble(stage)->toPlainText(), u"shown"_s);
    }

    void postamble_slot_takes_the_other_text_from_the_edit()
    {
        Stage stage;
        preamble(stage)->setPlainText(u"shown"_s);
        store(stage, {u"stored|old"_s});
        postamble(stage)->setPlainText(u"new"_s);
        QCOMPARE(stored(stage), QStringList{u"shown|new"_s});
    }

    void preamble_slot_keeps_what_stands_beside_it_data();
    void preamble_slot_keeps_what_stands_beside_it();
    void rows_too_many_are_reduced_to_one_data();
    void rows_too_many_are_reduced_to_one();
    void failing_statement_is_passed_over_data();
    void failing_statement_is_passed_over();
    void refresh_with_nothing_new_counts_as_a_change();

    void line_ends_are_stored_as_line_feeds()
    {
        Stage stage;
        preamble(stage)->setPlainText(u"one\r\ntwo\nthree"_s);
        QCOMPARE(stored(stage), QStringList{u"one\ntwo\nthree|"_s});
    }

    void quotes_are_stored_as_they_are()
    {
        Stage stage;
        preamble(stage)->setPlainText(u"It's 'so'; -- \"really\""_s);
        QCOMPARE(stored(stage), QStringList{u"It's 'so'; -- \"really\"|"_s});
    }
};

void TestBoilerplate::refresh_shows_and_rewrites_the_row_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("after");
    QTest::addRow("two texts") << QStringList{u"Before|After"_s} << u"Before|After"_s;
    QTest::addRow("empty texts") << QStringList{u"|"_s} << u"|"_s;
    QTest::addRow("NULL twice") << QStringList{u"NULL|NULL"_s} << u"|"_s;
    QTest::addRow("NULL behind a text") << QStringList{u"Before|NULL"_s} << u"Before|"_s;
    QTest::addRow("NULL before a text") << QStringList{u"NULL|After"_s} << u"|After"_s;
    QTest::addRow("no row") << QStringList{} << u"Act as the following persona.|"_s;
    QTest::addRow("the first of three rows") << QStringList{u"a|b"_s, u"c|d"_s, u"e|f"_s} << u"a|b"_s;
    QTest::addRow("lines") << QStringList{u"one\ntwo|three\n\nfour"_s} << u"one\ntwo|three\n\nfour"_s;
}

void TestBoilerplate::refresh_shows_and_rewrites_the_row()
{
    QFETCH(QStringList, before);
    QFETCH(QString, after);
    Stage stage;
    preamble(stage)->setPlainText(u"of the project before"_s);
    postamble(stage)->setPlainText(u"of the project before"_s);
    store(stage, before);
    stage.call("loadProject");
    QCOMPARE(preamble(stage)->toPlainText(), after.section(u'|', 0, 0));
    QCOMPARE(postamble(stage)->toPlainText(), after.section(u'|', 1));
    QCOMPARE(stored(stage), QStringList{after});
}

void TestBoilerplate::preamble_slot_keeps_what_stands_beside_it_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("after");
    QTest::addRow("a text") << QStringList{u"old|beside"_s} << u"new|beside"_s;
    QTest::addRow("NULL") << QStringList{u"old|NULL"_s} << u"new|NULL"_s;
    QTest::addRow("no row") << QStringList{} << u"new|"_s;
}

void TestBoilerplate::preamble_slot_keeps_what_stands_beside_it()
{
    QFETCH(QStringList, before);
    Stage stage;
    store(stage, before);
    preamble(stage)->setPlainText(u"new"_s);
    QCOMPARE(stored(stage).size(), 1);
    QTEST(stored(stage).constFirst(), "after");
}

void TestBoilerplate::rows_too_many_are_reduced_to_one_data()
{
    QTest::addColumn<QString>("after");
    QTest::addRow("preambleEdit") << u"new|b"_s;
    QTest::addRow("postambleEdit") << u"shown|new"_s;
}

void TestBoilerplate::rows_too_many_are_reduced_to_one()
{
    Stage stage;
    preamble(stage)->setPlainText(u"shown"_s);
    store(stage, {u"a|b"_s, u"c|d"_s});
    stage.find<QPlainTextEdit>(QString::fromLatin1(QTest::currentDataTag()))->setPlainText(u"new"_s);
    QCOMPARE(stored(stage).size(), 1);
    QTEST(stored(stage).constFirst(), "after");
}

void TestBoilerplate::failing_statement_is_passed_over_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("sabotage");
    QTest::addColumn<QStringList>("after");
    for (const auto edit : {"preambleEdit"_L1, "postambleEdit"_L1}) {
        const bool first = edit == "preambleEdit"_L1;
        QTest::addRow("%s, row can't be deleted", edit.data())
            << QString(edit) << u"BEFORE DELETE"_s
            << QStringList{u"old|stored"_s, first ? u"new|stored"_s : u"shown|new"_s};
        // Each statement stands alone: the row that was deleted is gone.
        QTest::addRow("%s, row can't be inserted", edit.data()) << QString(edit) << u"BEFORE INSERT"_s << QStringList{};
        QTest::addRow("%s, no table", edit.data()) << QString(edit) << QString() << QStringList{};
    }
}

void TestBoilerplate::failing_statement_is_passed_over()
{
    QFETCH(QString, edit);
    QFETCH(QString, sabotage);
    QFETCH(QStringList, after);
    Stage stage;
    {
        const QSignalBlocker unnoticed(preamble(stage));
        preamble(stage)->setPlainText(u"shown"_s);
    }
    store(stage, {u"old|stored"_s});
    if (sabotage.isEmpty())
        QVERIFY(stage.exec(u"DROP TABLE boilerplate"_s));
    else
        QVERIFY(stage.exec("CREATE TRIGGER guard "_L1 + sabotage +
                           " ON boilerplate BEGIN SELECT RAISE(ABORT, 'no'); END"_L1));
    QVERIFY(!stage.asksBeforeClosing());

    stage.find<QPlainTextEdit>(edit)->setPlainText(u"new"_s);
    if (sabotage.isEmpty())
        QVERIFY(!stage.project().tables(QSql::Tables).contains(u"boilerplate"_s));
    else
        QCOMPARE(stored(stage), after);
    QVERIFY(stage.asksBeforeClosing());
}

void TestBoilerplate::refresh_with_nothing_new_counts_as_a_change()
{
    Stage stage;
    QVERIFY(!stage.asksBeforeClosing());
    const QStringList before = stored(stage);
    stage.call("loadProject");
    QCOMPARE(stored(stage), before);
    QVERIFY(stage.asksBeforeClosing());
}

QTEST_MAIN(TestBoilerplate)
#include "tst_boilerplate.moc"

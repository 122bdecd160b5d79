// The two texts of the Boilerplate tab and the one row of the table that keeps them.

#include "tests/project/projectfile.h"

using namespace Qt::StringLiterals;

namespace {

/// Keeps a journal, in the project, of what is written to the table boilerplate.
void keepTexts(Stage &stage)
{
    QVERIFY(stage.exec({u"CREATE TABLE journal (id INTEGER PRIMARY KEY, act TEXT)"_s,
                        u"CREATE TRIGGER deleted AFTER DELETE ON boilerplate BEGIN INSERT INTO journal (act) "
                        "VALUES ('- ' || OLD.preamble || '|' || OLD.postamble); END"_s,
                        u"CREATE TRIGGER inserted AFTER INSERT ON boilerplate BEGIN INSERT INTO journal (act) "
                        "VALUES ('+ ' || NEW.preamble || '|' || NEW.postamble); END"_s}));
}

/// The stored rows, each as "preamble|postamble", with NULL spelled out.
QStringList storedTexts(Stage &stage)
{
    return stage.column(u"SELECT ifnull(preamble, 'NULL') || '|' || ifnull(postamble, 'NULL') FROM boilerplate"_s);
}

/// Replaces the rows by those of this form.
void storeTexts(Stage &stage, const QStringList &rows)
{
    QVERIFY(stage.exec(u"DELETE FROM boilerplate"_s));
    for (const QString &row : rows) {
        QVERIFY(stage.exec(
            u"INSERT INTO boilerplate VALUES (nullif(ifnull(?, ''), 'NULL'), nullif(ifnull(?, ''), 'NULL'))"_s,
            {row.section(u'|', 0, 0), row.section(u'|', 1)}));
    }
    QCOMPARE(storedTexts(stage), rows);
}

/// The shown texts in the same form.
QString shownTexts(Stage &stage)
{
    return preambleEdit(stage)->toPlainText() + u'|' + postambleEdit(stage)->toPlainText();
}

void setText(Stage &stage, const QString &edit, const QString &text)
{
    stage.find<QPlainTextEdit>(edit)->setPlainText(text);
}

constexpr auto defaultTexts = "Act as the following persona.|"_L1;

} // namespace

class TestBoilerplate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refresh_shows_and_rewrites_the_row_data();
    void refresh_shows_and_rewrites_the_row();
    void refresh_passes_through_both_text_slots_in_order();
    void refresh_stores_the_default_only_where_there_is_no_row();
    void every_keystroke_is_stored_at_once();
    void text_is_stored_as_it_shows_data();
    void text_is_stored_as_it_shows();
    void slot_replaces_all_rows_by_its_text_and_the_other_data();
    void slot_replaces_all_rows_by_its_text_and_the_other();
    void failing_statement_is_passed_over_data();
    void failing_statement_is_passed_over();
    void missing_table_is_made_anew();
    void table_that_cannot_be_made_shows_the_defaults_data();
    void table_that_cannot_be_made_shows_the_defaults();
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
    QTest::addRow("no row") << QStringList{} << QString(defaultTexts);
    QTest::addRow("the first of three rows") << QStringList{u"a|b"_s, u"c|d"_s, u"e|f"_s} << u"a|b"_s;
    QTest::addRow("lines") << QStringList{u"one\ntwo|three\n\nfour"_s} << u"one\ntwo|three\n\nfour"_s;
}

void TestBoilerplate::refresh_shows_and_rewrites_the_row()
{
    QFETCH(const QStringList, before);
    QFETCH(const QString, after);
    Stage stage;
    setText(stage, u"preambleEdit"_s, u"of the project before"_s);
    setText(stage, u"postambleEdit"_s, u"of the project before"_s);
    storeTexts(stage, before);
    stage.call("loadProject");
    QCOMPARE(shownTexts(stage), after);
    QCOMPARE(storedTexts(stage), QStringList{after});
}

void TestBoilerplate::refresh_passes_through_both_text_slots_in_order()
{
    Stage stage;
    storeTexts(stage, {u"New before|New after"_s});
    keepTexts(stage);
    stage.call("loadProject");
    // The first slot keeps the stored postamble, although the edit still shows the one of before.
    QCOMPARE(journal(stage), (QStringList{u"- New before|New after"_s, u"+ New before|New after"_s,
                                          u"- New before|New after"_s, u"+ New before|New after"_s}));
}

void TestBoilerplate::refresh_stores_the_default_only_where_there_is_no_row()
{
    Stage stage;
    storeTexts(stage, {});
    keepTexts(stage);
    stage.call("loadProject");
    QCOMPARE(journal(stage), (QStringList{"+ "_L1 + defaultTexts, "- "_L1 + defaultTexts, "+ "_L1 + defaultTexts}));
}

void TestBoilerplate::every_keystroke_is_stored_at_once()
{
    Stage stage;
    preambleEdit(stage)->clear();
    keepTexts(stage);
    QTest::keyClicks(preambleEdit(stage), u"Be!"_s);
    QCOMPARE(journal(stage), (QStringList{u"- |"_s, u"+ B|"_s, u"- B|"_s, u"+ Be|"_s, u"- Be|"_s, u"+ Be!|"_s}));
    QTest::keyClicks(postambleEdit(stage), u"So"_s);
    QCOMPARE(journal(stage).sliced(6), (QStringList{u"- Be!|"_s, u"+ Be!|S"_s, u"- Be!|S"_s, u"+ Be!|So"_s}));
}

void TestBoilerplate::text_is_stored_as_it_shows_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("after");
    const QString first = u"preambleEdit"_s;
    QTest::addRow("cleared preamble") << first << QString() << u"|After"_s;
    QTest::addRow("cleared postamble") << u"postambleEdit"_s << QString() << QString(defaultTexts);
    QTest::addRow("line ends of two kinds") << first << u"one\r\ntwo\nthree"_s << u"one\ntwo\nthree|After"_s;
    QTest::addRow("quotes") << first << u"It's 'so'; -- \"really\""_s << u"It's 'so'; -- \"really\"|After"_s;
}

void TestBoilerplate::text_is_stored_as_it_shows()
{
    QFETCH(const QString, edit);
    QFETCH(const QString, text);
    QFETCH(const QString, after);
    Stage stage;
    setText(stage, u"postambleEdit"_s, u"After"_s);
    setText(stage, edit, text);
    QCOMPARE(storedTexts(stage), QStringList{after});
    QCOMPARE(shownTexts(stage), after);
}

void TestBoilerplate::slot_replaces_all_rows_by_its_text_and_the_other_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QStringList>("before");
    QTest::addColumn<QString>("after");
    // The slot of the preamble takes the other text from the table, that of the postamble from the edit.
    const QString first = u"preambleEdit"_s;
    const QString second = u"postambleEdit"_s;
    QTest::addRow("preamble beside a text") << first << QStringList{u"old|stored"_s} << u"new|stored"_s;
    QTest::addRow("preamble beside NULL") << first << QStringList{u"old|NULL"_s} << u"new|NULL"_s;
    QTest::addRow("preamble without a row") << first << QStringList{} << u"new|"_s;
    QTest::addRow("preamble of two rows") << first << QStringList{u"a|b"_s, u"c|d"_s} << u"new|b"_s;
    QTest::addRow("postamble beside a text") << second << QStringList{u"stored|old"_s} << u"shown|new"_s;
    QTest::addRow("postamble of two rows") << second << QStringList{u"a|b"_s, u"c|d"_s} << u"shown|new"_s;
}

void TestBoilerplate::slot_replaces_all_rows_by_its_text_and_the_other()
{
    QFETCH(const QString, edit);
    QFETCH(const QStringList, before);
    QFETCH(const QString, after);
    Stage stage;
    setText(stage, u"preambleEdit"_s, u"shown"_s);
    setText(stage, u"postambleEdit"_s, u"shown"_s);
    storeTexts(stage, before);
    setText(stage, edit, u"new"_s);
    QCOMPARE(storedTexts(stage), QStringList{after});
    QCOMPARE(shownTexts(stage), edit == "preambleEdit"_L1 ? u"new|shown"_s : u"shown|new"_s);
}

void TestBoilerplate::failing_statement_is_passed_over_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("sabotage");
    QTest::addColumn<QStringList>("after");
    const auto guard = [](const QString &act) {
        return QString("CREATE TRIGGER guard BEFORE "_L1 + act +
                       " ON boilerplate BEGIN SELECT RAISE(ABORT, 'no'); END"_L1);
    };
    for (const auto &edit : {u"preambleEdit"_s, u"postambleEdit"_s}) {
        const QByteArray name = edit.toLatin1();
        QTest::addRow("%s, row can't be deleted", name.constData())
            << edit << guard(u"DELETE"_s)
            << QStringList{u"old|stored"_s, edit == "preambleEdit"_L1 ? u"new|stored"_s : u"shown|new"_s};
        // Each statement stands alone: the row that was deleted is gone.
        QTest::addRow("%s, row can't be inserted", name.constData()) << edit << guard(u"INSERT"_s) << QStringList{};
        QTest::addRow("%s, no table", name.constData()) << edit << u"DROP TABLE boilerplate"_s << QStringList{};
    }
}

void TestBoilerplate::failing_statement_is_passed_over()
{
    QFETCH(const QString, edit);
    QFETCH(const QString, sabotage);
    QFETCH(const QStringList, after);
    Stage stage;
    {
        const QuietRefresh unnoticed(stage);
        setText(stage, u"preambleEdit"_s, u"shown"_s);
    }
    storeTexts(stage, {u"old|stored"_s});
    QVERIFY(stage.exec(sabotage));
    QVERIFY(!stage.asksBeforeClosing());

    setText(stage, edit, u"new"_s);
    const bool dropped = sabotage.startsWith("DROP"_L1);
    QCOMPARE(stage.database().tables(QSql::Tables).contains(u"boilerplate"_s), !dropped);
    if (!dropped)
        QCOMPARE(storedTexts(stage), after);
    QVERIFY(stage.asksBeforeClosing());
}

void TestBoilerplate::missing_table_is_made_anew()
{
    Stage stage;
    const QString statement = u"SELECT sql FROM sqlite_master WHERE name = 'boilerplate'"_s;
    QVERIFY(stage.exec(u"DROP TABLE boilerplate"_s));
    setText(stage, u"preambleEdit"_s, u"Mine."_s);
    setText(stage, u"postambleEdit"_s, u"Mine, too."_s);
    QCOMPARE(stage.rows(statement), Rows());
    stage.call("loadProject");
    QCOMPARE(stage.column(statement), QStringList{u"CREATE TABLE boilerplate (preamble TEXT, postamble TEXT)"_s});
    QCOMPARE(storedTexts(stage), QStringList{defaultTexts});
    QCOMPARE(shownTexts(stage), QString(defaultTexts));
}

void TestBoilerplate::table_that_cannot_be_made_shows_the_defaults_data()
{
    QTest::addColumn<QString>("view");
    QTest::addRow("no row") << u"SELECT 'x' AS preamble, 'y' AS postamble WHERE 0"_s;
    QTest::addRow("no such columns") << u"SELECT 'x' AS other"_s;
    QTest::addRow("a row that fails") << u"SELECT abs(-9223372036854775808) AS preamble, 'y' AS postamble"_s;
}

/// A view takes the name, but is no table: neither the making nor the storing works.
void TestBoilerplate::table_that_cannot_be_made_shows_the_defaults()
{
    QFETCH(const QString, view);
    Stage stage;
    setText(stage, u"preambleEdit"_s, u"Mine."_s);
    setText(stage, u"postambleEdit"_s, u"Mine, too."_s);
    QVERIFY(stage.exec(u"DROP TABLE boilerplate"_s));
    QVERIFY(stage.exec("CREATE VIEW boilerplate AS "_L1 + view));
    stage.call("loadProject");
    QCOMPARE(shownTexts(stage), QString(defaultTexts));
    QVERIFY(!stage.database().tables(QSql::Tables).contains(u"boilerplate"_s));
}

ORRINET_TEST(TestBoilerplate)
#include "tst_boilerplate.moc"

// A project that uses all that a file can hold, saved and opened again; the files are read by SQLite's own program.

#include "tests/project/projectfile.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

/// Texts that encodings and quoting may trip over.
QStringList oddTexts()
{
    return {u""_s,
            u"it's \"so\" `called` \\ --; DROP TABLE personas"_s,
            u"first\nsecond\r\nthird\ttabbed"_s,
            u"\u05e9\u05d0\u05dc\u05d4 \u0645\u0631\u062d\u0628\u0627 \u202eturned\u202c"_s,
            u"\U0001f9ea\U00020000 e\u0301 \u00a0\ufeff\u2028"_s,
            u"%1 ?1 :name @name $name"_s,
            u"123"_s,
            u"1e400"_s,
            u"NULL"_s};
}

QString longText()
{
    return u"Keeps bees, \u0434\u0435\u0440\u0436\u0438\u0442 \U0001f41d. "_s.repeated(130 * 1024 / 24);
}

/// Fills each table behind the program's back, with orphans, gaps in the numbering and values of all types.
void fillProject(Stage &stage)
{
    int number = 0;
    for (const auto all = oddTexts(); const QString &text : all) {
        ++number;
        const QString name = QString::number(number);
        QVERIFY(stage.exec(u"INSERT INTO metadata VALUES (?, ?)"_s, {name, text}));
        QVERIFY(stage.exec(
            u"INSERT INTO personas VALUES (?, ?, ?, ?, ?, ?, NULL)"_s,
            {u"uuid-%1"_s.arg(number), text, text, QVariant(), text.toUtf8(), u"2001-02-03T04:05:06.789"_s}));
        QVERIFY(stage.exec(u"INSERT INTO tags VALUES (?, ?)"_s, {number * 7, text}));
        QVERIFY(stage.exec(u"INSERT INTO persona_tags VALUES (?, ?)"_s, {u"uuid-%1"_s.arg(10 - number), number * 7}));
        QVERIFY(stage.exec(u"INSERT INTO questions (question_id, order_num, prompt, labels, description, temperature, "
                           "depends_on_question_id, depends_on_answer, ask_when) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
                           {number * 3, number, text, text, QVariant(), 0.1 * number, 99, text, QVariant()}));
        QVERIFY(
            stage.exec(u"INSERT INTO question_attachments (question_id, filename) VALUES (?, ?)"_s, {number, text}));
        QVERIFY(
            stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, json_answer, "
                       "question_serial, model, temperature, created_at, token_usage) "
                       "VALUES (?, ?, ?, ?, ?, 1, ?, 1e-9, '2001-02-03 04:05:06', 12345678901)"_s,
                       {u"uuid-%1"_s.arg(number), number * 3, text, std::pow(10, number * 30), QVariant(), text}));
    }
    QVERIFY(stage.exec(u"INSERT INTO metadata VALUES (NULL, x'00ff0027')"_s));
    QVERIFY(stage.exec(u"INSERT INTO personas (uuid, attributes) VALUES ('long', ?)"_s, {longText()}));
    // Answers, links and attachments of nobody and nothing.
    QVERIFY(stage.exec(u"INSERT INTO responses (id, persona_uuid, question_id) VALUES (500, 'nobody', 404)"_s));
    QVERIFY(stage.exec(u"INSERT INTO responses (id, numeric_answer) VALUES (501, -9e999)"_s));
    QVERIFY(stage.exec(u"INSERT INTO persona_tags VALUES ('nobody', 404)"_s));
    QVERIFY(stage.exec(u"INSERT INTO question_attachments VALUES (60, 404, x'cafe')"_s));
    // Numbers that are used up.
    QVERIFY(stage.exec(u"DELETE FROM responses WHERE id = 501 AND numeric_answer > 0"_s));
    QVERIFY(stage.exec(u"DELETE FROM questions WHERE question_id = 27"_s));
    QVERIFY(stage.exec(u"UPDATE boilerplate SET preamble = ?, postamble = ?"_s,
                       {oddTexts().at(1), QString(oddTexts().at(3) + u"\n\U0001f9ea"_s)}));
}

QStringList tables()
{
    return {u"metadata"_s,  u"boilerplate"_s, u"personas"_s,     u"questions"_s,      u"question_attachments"_s,
            u"responses"_s, u"tags"_s,        u"persona_tags"_s, u"sqlite_sequence"_s};
}

/// All rows of a table as SQL literals, which tell NULL, numbers, texts and blobs apart.
QString literalRows(const QString &table, const Rows &columns)
{
    QStringList quoted;
    for (const QVariantList &column : columns)
        quoted.append("quote("_L1 + column.first().toString() + ')'_L1);
    const QString row = quoted.join(u" || ',' || "_s);
    return "SELECT "_L1 + row + " FROM "_L1 + table + " ORDER BY 1"_L1;
}

QString columnsOf(const QString &table)
{
    return "SELECT name FROM pragma_table_info('"_L1 + table + "')"_L1;
}

/// What the program sqlite3 writes of a file, sorted.
QStringList dump(const QString &path)
{
    QProcess program;
    program.start(QStandardPaths::findExecutable(u"sqlite3"_s), {u"-batch"_s, u"-readonly"_s, path, u".dump"_s});
    if (!program.waitForFinished() || program.exitCode() != 0)
        qFatal("sqlite3: %s", program.readAllStandardError().constData());
    QStringList lines = QString::fromUtf8(program.readAllStandardOutput()).split(u'\n');
    lines.sort();
    return lines;
}

QString ask(const QString &path, const QString &query)
{
    QProcess program;
    program.start(QStandardPaths::findExecutable(u"sqlite3"_s), {u"-batch"_s, u"-readonly"_s, path, query});
    if (!program.waitForFinished())
        qFatal("sqlite3 does not end");
    return QString::fromUtf8(program.readAllStandardOutput()).trimmed();
}

} // namespace

class TestProjectRoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(u"sqlite3"_s).isEmpty())
            QSKIP("the program sqlite3 is not installed");
    }

    void every_row_comes_through()
    {
        Stage stage;
        fillProject(stage);
        // What the window has made of the project before must not be written back.
        stage.call("loadProject");
        QMap<QString, Rows> before;
        for (const auto all = tables(); const QString &table : all)
            before.insert(table, stage.rows(literalRows(table, stage.rows(columnsOf(table)))));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"first.ormt"_s)));
        stage.closeWindow();

        QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
        for (const auto all = tables(); const QString &table : all) {
            QVERIFY2(!before.value(table).isEmpty(), qPrintable(table));
            const Rows after = stage.rows(literalRows(table, stage.rows(columnsOf(table))));
            QCOMPARE(after, before.value(table));
        }
    }

    void both_files_hold_the_same()
    {
        Stage stage;
        fillProject(stage);
        const QString first = stage.path(u"first.ormt"_s);
        const QString second = stage.path(u"second.ormt"_s);
        stage.call("loadProject");
        QVERIFY(stage.result("saveProjectToFile", first));
        QMap<QString, int> counts;
        for (const auto all = tables(); const QString &table : all)
            counts.insert(table, count(stage, table));
        stage.closeWindow();

        QVERIFY(stage.result("openProjectFromFile", first));
        QVERIFY(stage.result("saveProjectToFile", second));
        const QStringList lines = dump(first);
        QCOMPARE(dump(second), lines);
        for (const auto all = tables(); const QString &table : all) {
            QCOMPARE_GT(counts.value(table), 0);
            QCOMPARE(ask(first, "SELECT COUNT(*) FROM "_L1 + table).toInt(), counts.value(table));
        }
        for (const QString &path : {first, second})
            QCOMPARE(ask(path, u"PRAGMA integrity_check"_s), u"ok"_s);
    }

    void a_long_persona_text_comes_through()
    {
        Stage stage;
        QCOMPARE_GT(longText().toUtf8().size(), 130 * 1024);
        stage.call("insertPersona", u"Number One"_s, longText(), u"long"_s);
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"first.ormt"_s)));
        stage.closeWindow();
        QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
        QCOMPARE(stage.value(u"SELECT attributes FROM personas"_s).toString(), longText());
        QCOMPARE(ask(stage.path(u"first.ormt"_s), u"SELECT length(attributes) FROM personas"_s).toInt(),
                 longText().toUcs4().size());
    }

    void numbering_goes_on_behind_what_was_deleted()
    {
        Stage stage;
        fillProject(stage);
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"first.ormt"_s)));
        QCOMPARE(ask(stage.path(u"first.ormt"_s), u"SELECT seq FROM sqlite_sequence WHERE name = 'questions'"_s),
                 u"27"_s);
        stage.closeWindow();
        QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
        stage.call("insertQuestion", u"Next?"_s, u"text"_s, false);
        QCOMPARE(stage.value(u"SELECT question_id FROM questions WHERE prompt = 'Next?'"_s).toInt(), 28);
    }

    void the_boilerplate_keeps_what_its_edits_can_show()
    {
        Stage stage;
        QVERIFY(stage.exec(u"UPDATE boilerplate SET preamble = ?, postamble = NULL"_s, {u"a\r\nb\u00a0c"_s}));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"first.ormt"_s)));
        const QString row = u"SELECT hex(preamble), quote(postamble) FROM boilerplate"_s;
        const QByteArray hex = u"a\r\nb\u00a0c"_s.toUtf8().toHex().toUpper();
        QCOMPARE(ask(stage.path(u"first.ormt"_s), row), QString(QString::fromLatin1(hex) + "|NULL"_L1));
        stage.closeWindow();
        QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
        // The refresh of the opening has already passed the texts through the edits.
        QCOMPARE(stage.rows(u"SELECT preamble, quote(postamble) FROM boilerplate"_s), (Rows{{u"a\nb c"_s, u"''"_s}}));
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestProjectRoundTrip)
#include "tst_projectroundtrip.moc"

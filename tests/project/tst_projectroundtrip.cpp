// A project that uses all that a file can hold, saved and opened again; the files are read by SQLite's own program.

#include "tests/project/projectfile.h"

#include <QProcess>

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

/// One row with an odd text in each table but the boilerplate.
void fillWith(Stage &stage, int number, const QString &text)
{
    const QString uuid = u"uuid-%1"_s.arg(number);
    stage.exec(u"INSERT INTO metadata VALUES (?, ?)"_s, {QString::number(number), text});
    stage.exec(u"INSERT INTO personas VALUES (?, ?, ?, NULL, ?, '2001-02-03T04:05:06.789', NULL)"_s,
               {uuid, text, text, text.toUtf8()});
    stage.exec(u"INSERT INTO tags VALUES (?, ?)"_s, {number * 7, text});
    stage.exec(u"INSERT INTO persona_tags VALUES (?, ?)"_s, {u"uuid-%1"_s.arg(10 - number), number * 7});
    stage.exec(u"INSERT INTO questions (question_id, order_num, prompt, labels, temperature, depends_on_question_id, "
               "depends_on_answer, ask_when) VALUES (?, ?, ?, ?, ?, 99, ?, NULL)"_s,
               {number * 3, number, text, text, 0.1 * number, text});
    stage.exec(u"INSERT INTO question_attachments (question_id, filename) VALUES (?, ?)"_s, {number, text});
    stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, question_serial, "
               "model, temperature, created_at, token_usage) "
               "VALUES (?, ?, ?, ?, 1, ?, 1e-9, '2001-02-03 04:05:06', 12345678901)"_s,
               {uuid, number * 3, text, std::pow(10, number * 30), text});
}

/// Fills each table behind the program's back, with orphans, gaps in the numbering and values of all types.
void fillWithAllKinds(Stage &stage)
{
    int number = 0;
    for (const auto all = oddTexts(); const QString &text : all)
        fillWith(stage, ++number, text);
    stage.exec(u"INSERT INTO metadata VALUES (NULL, x'00ff0027')"_s);
    stage.exec(u"INSERT INTO personas (uuid, attributes) VALUES ('long', ?)"_s, {longText()});
    // Answers, links and attachments of nobody and nothing.
    stage.exec(u"INSERT INTO responses (id, persona_uuid, question_id, numeric_answer) "
               "VALUES (500, 'nobody', 404, -9e999)"_s);
    stage.exec(u"INSERT INTO persona_tags VALUES ('nobody', 404)"_s);
    stage.exec(u"INSERT INTO question_attachments VALUES (60, 404, x'cafe')"_s);
    // Numbers that are used up.
    stage.exec(u"INSERT INTO responses (id) VALUES (501)"_s);
    stage.exec(u"DELETE FROM responses WHERE id = 501"_s);
    stage.exec(u"DELETE FROM questions WHERE question_id = 27"_s);
    stage.exec(u"UPDATE boilerplate SET preamble = ?, postamble = ?"_s,
               {oddTexts().at(1), QString(oddTexts().at(3) + u"\n\U0001f9ea"_s)});
    QCOMPARE(stage.rows(u"SELECT name, seq FROM sqlite_sequence ORDER BY name"_s),
             (Rows{{u"question_attachments"_s, 60}, {u"questions"_s, 27}, {u"responses"_s, 501}}));
    QCOMPARE(stage.rows(u"SELECT MAX(id), MIN(numeric_answer) = -9e999 FROM responses"_s), (Rows{{500, 1}}));
    QCOMPARE(stage.value(u"SELECT MAX(question_id) FROM questions"_s).toInt(), 24);
}

/// What the program sqlite3 answers.
QString askProgram(const QString &path, const QString &query)
{
    QProcess program;
    program.start(u"sqlite3"_s, {u"-batch"_s, u"-readonly"_s, path, query});
    if (!program.waitForFinished(-1) || program.exitCode() != 0)
        QTest::qFail(qUtf8Printable(program.errorString() + QString::fromUtf8(program.readAllStandardError())),
                     __FILE__, __LINE__);
    return QString::fromUtf8(program.readAllStandardOutput()).trimmed();
}

} // namespace

class TestProjectRoundTrip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void every_row_comes_through();
    void both_files_hold_the_same();
    void the_boilerplate_keeps_what_its_edits_can_show();
};

void TestProjectRoundTrip::every_row_comes_through()
{
    Stage stage;
    fillWithAllKinds(stage);
    const QStringList before = everyRow(stage.database());
    stage.call("loadProject");
    QCOMPARE(everyRow(stage.database()), before);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"first.ormt"_s)));
    stage.closeWindow();
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"first.ormt"_s)));
    QCOMPARE(everyRow(stage.database()), before);
}

void TestProjectRoundTrip::both_files_hold_the_same()
{
    Stage stage;
    const QString first = stage.path(u"first.ormt"_s);
    const QString second = stage.path(u"second.ormt"_s);
    fillWithAllKinds(stage);
    QVERIFY(stage.result("saveProjectToFile", first));
    const QStringList rowsBefore = tableOfEachRow(stage);
    stage.closeWindow();
    QVERIFY(stage.result("openProjectFromFile", first));
    QVERIFY(stage.result("saveProjectToFile", second));

    for (const auto tables = projectTables(); const QString &table : tables) {
        QCOMPARE_GT(rowsBefore.count(table), 0);
        QCOMPARE(askProgram(first, "SELECT COUNT(*) FROM "_L1 + table).toInt(), rowsBefore.count(table));
    }
    QCOMPARE(askProgram(first, u"SELECT length(attributes) FROM personas WHERE uuid = 'long'"_s).toInt(),
             longText().toUcs4().size());
    QCOMPARE_GT(longText().toUtf8().size(), 130 * 1024);
    const auto lines = [](const QString &path) {
        QStringList all = askProgram(path, u".dump"_s).split(u'\n');
        all.sort();
        return all;
    };
    QCOMPARE(lines(second), lines(first));
    for (const QString &path : {first, second})
        QCOMPARE(askProgram(path, u"PRAGMA integrity_check"_s), u"ok"_s);
}

void TestProjectRoundTrip::the_boilerplate_keeps_what_its_edits_can_show()
{
    Stage stage;
    const QString first = stage.path(u"first.ormt"_s);
    QVERIFY(stage.exec(u"UPDATE boilerplate SET preamble = ?, postamble = NULL"_s, {u"a\r\nb\u00a0c"_s}));
    QVERIFY(stage.result("saveProjectToFile", first));
    QCOMPARE(askProgram(first, u"SELECT hex(preamble), quote(postamble) FROM boilerplate"_s), u"610D0A62C2A063|NULL"_s);
    stage.closeWindow();
    QVERIFY(stage.result("openProjectFromFile", first));
    // The refresh of the opening has already passed the texts through the edits.
    QCOMPARE(stage.rows(u"SELECT preamble, quote(postamble) FROM boilerplate"_s), (Rows{{u"a\nb c"_s, u"''"_s}}));
    QVERIFY(!stage.asksBeforeClosing());
}

ORRINET_TEST(TestProjectRoundTrip)
#include "tst_projectroundtrip.moc"

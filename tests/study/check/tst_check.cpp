// `orrinet-study check` as it is used: what it prints and how it ends.

#include "study/check/findings.h"
#include "tests/support/entries.h"
#include "tests/support/program.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

ProgramRun check(const QStringList &arguments)
{
    return {QStringLiteral(ORRINET_STUDY), QStringList{u"check"_s} + arguments};
}

/// A line of a record: a request with these characters in one message, and what it used.
QByteArray lineOf(int characters, int tokensIn, int tokensOut)
{
    const QJsonObject message{{u"role"_s, u"user"_s}, {u"content"_s, QString(characters, u'x')}};
    const QJsonObject request{{u"messages"_s, QJsonArray{message}}};
    const QJsonObject line{
        {u"request"_s, QString::fromUtf8(QJsonDocument(request).toJson())},
        {u"reply"_s, u"{\"choices\":[{\"message\":{\"content\":\"1234567890\"}}]}"_s},
        {u"status"_s, 200},
        {u"usage"_s, QJsonObject{{u"prompt_tokens"_s, tokensIn}, {u"completion_tokens"_s, tokensOut}}}};
    return QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

class TestCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// Ann has answered the first of three questions, Bea none.
    void init()
    {
        path = folder.filePath(u"%1.ormt"_s.arg(++projects));
        SideDatabase file(writeProject(path));
        QVERIFY(file.exec(u"BEGIN"_s));
        QVERIFY(setBoilerplate(file, u"Act."_s, QVariant()));
        QVERIFY(enter(file, PersonaEntered{.uuid = u"a"_s, .name = u"Ann"_s, .attributes = u"I like tea."_s},
                      PersonaEntered{.uuid = u"b"_s, .name = u"Bea"_s, .attributes = u"I like milk."_s},
                      QuestionEntered{.prompt = u"Tea?"_s, .type = u"text"_s},
                      QuestionEntered{.prompt = u"Milk?"_s, .type = u"text"_s, .judge = 1},
                      QuestionEntered{.prompt = u"Cocoa?"_s, .type = u"text"_s},
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"12345678"_s}));
        QVERIFY(file.exec(u"COMMIT"_s));
    }

    void it_tells_what_is_to_come_in_a_short_report()
    {
        // By a token for each character: system texts of 16 and 17 characters, twice and three times; prompts of 26 in
        // all; and the first question with its answer, 12 characters, four times, as each has two questions behind it.
        const ProgramRun run = check({path, u"--characters-per-token"_s, u"1"_s});
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.status, 0);
        QCOMPARE(run.output, path + uR"(: 2 personas, 3 questions
pairs: 6, answered 1, open 5
personas: 0 with all answers, 1 with some, 1 with none

question  type               answered        open  length of answers to come
       1  Text                      1           1  same question
       2  Text                      0           2  same type
       3  Text                      0           2  same type

requests to come: 5, 2 of them to the adjudicator's model

                           low        middle          high
tokens in                  190           229           268
  system texts              82           103           124
  history                   68            80            92
  questions                 40            46            53
  formats                    0             0             0
tokens out                  30            40            50

characters a token: 1.00 in (assumed; low and high: a quarter fewer and more tokens)
                    1.00 out (assumed; low and high: a quarter fewer and more tokens)
answers to come: as long as those there are; low and high: their quartiles (see --help)

nothing found
)"_s);
    }

    void prices_make_a_cost()
    {
        const ProgramRun run = check({path, u"--characters-per-token"_s, u"1"_s, u"--price-in"_s, u"1000000"_s,
                                      u"--price-out"_s, u"2000000.5"_s});
        QCOMPARE(run.status, 0);
        QVERIFY2(run.output.contains(u"\ncost                    249.75        309.00        368.25\n"_s),
                 qUtf8Printable(run.output));
    }

    void machines_get_all_of_it_in_a_stable_form()
    {
        const QStringList arguments{path,
                                    u"--json"_s,
                                    u"--characters-per-token"_s,
                                    u"1"_s,
                                    u"--price-in"_s,
                                    u"1"_s,
                                    u"--price-out"_s,
                                    u"1"_s,
                                    u"--context"_s,
                                    u"50"_s};
        const ProgramRun run = check(arguments);
        QCOMPARE(run.status, 0);
        QCOMPARE(check(arguments).output, run.output);
        const QJsonObject told = QJsonDocument::fromJson(run.output.toUtf8()).object();
        QCOMPARE(told.keys(), (QStringList{u"context"_s, u"cost"_s, u"findings"_s, u"pairs"_s, u"personas"_s,
                                           u"project"_s, u"questions"_s, u"rates"_s, u"requests"_s, u"tokens"_s}));
        QCOMPARE(told["project"_L1]["file"_L1], path);
        QCOMPARE(told["project"_L1]["sha256"_L1].toString().size(), 64);
        QCOMPARE(told["pairs"_L1], (QJsonObject{{u"answered"_s, 1}, {u"open"_s, 5}}));
        QCOMPARE(told["requests"_L1], (QJsonObject{{u"all"_s, 5}, {u"adjudicated"_s, 2}}));
        QCOMPARE(told["tokens"_L1]["in"_L1], (QJsonObject{{u"low"_s, 190}, {u"middle"_s, 229}, {u"high"_s, 268}}));
        QCOMPARE(told["tokens"_L1].toObject().keys(),
                 (QStringList{u"formats"_s, u"history"_s, u"in"_s, u"out"_s, u"questions"_s, u"system"_s}));
        QCOMPARE(told["cost"_L1]["middle"_L1].toDouble(), 269e-6);
        QCOMPARE(told["rates"_L1]["in"_L1]["middle"_L1], 1);
        QCOMPARE(told["rates"_L1]["exchangesIn"_L1], 0);
        QCOMPARE(told["context"_L1]["tokens"_L1], 50);
        const QJsonObject persona = told["personas"_L1][1].toObject();
        QCOMPARE(persona["name"_L1], u"Bea"_s);
        QCOMPARE(persona["uuid"_L1], u"b"_s);
        QCOMPARE(persona["open"_L1], 3);
        const QJsonObject question = told["questions"_L1][0].toObject();
        QCOMPARE(question.keys(), (QStringList{u"adjudicated"_s, u"answered"_s, u"estimatedBy"_s, u"number"_s,
                                               u"open"_s, u"tokensIn"_s, u"tokensOut"_s, u"type"_s}));
        QCOMPARE(question["tokensOut"_L1]["middle"_L1], 8);
        const QJsonObject finding = told["findings"_L1][0].toObject();
        QCOMPARE(finding["kind"_L1], u"context"_s);
        QCOMPARE(finding["severity"_L1], u"warning"_s);
    }

    void what_blocks_shows_in_the_exit_status_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("line");
        const QString numeric = u"UPDATE questions SET answer_type='numeric' WHERE question_id=3"_s;
        QTest::newRow("a warning") << u"UPDATE questions SET ask_when='if' WHERE question_id=3"_s << QStringList() << 0
                                   << u"\nwarning: question 3 has a condition, and is asked all the same\n"_s;
        QTest::newRow("no prompt") << u"UPDATE questions SET prompt='' WHERE question_id=3"_s << QStringList() << 1
                                   << u"\nblocking: question 3 has no prompt\n"_s;
        QTest::newRow("a refused format") << numeric << QStringList() << 1 << u"\nblocking: question 3 (Numeric)"_s;
        QTest::newRow("the same by a bridge") << numeric << QStringList{u"--bridge"_s} << 0 << u"\nnothing found\n"_s;
        QTest::newRow("all is answered")
            << u"INSERT INTO responses (persona_uuid, question_id, text_answer) SELECT uuid, question_id, 'x' "
               "FROM personas JOIN questions"_s
            << QStringList() << 0 << u"\nrequests to come: none\n"_s;
    }
    void what_blocks_shows_in_the_exit_status()
    {
        QFETCH(const QString, statement);
        QFETCH(const QStringList, options);
        QFETCH(const QString, line);
        {
            SideDatabase file(path);
            QVERIFY(file.exec(statement));
        }
        const ProgramRun run = check(QStringList{path} + options);
        QTEST(run.status, "status");
        QVERIFY2(run.output.contains(line), qUtf8Printable(run.output));
        QCOMPARE(run.errors, QStringList());
    }

    void a_record_sets_the_rates_and_tells_of_a_bridge()
    {
        {
            SideDatabase file(path);
            QVERIFY(file.exec(u"UPDATE questions SET answer_type='numeric' WHERE question_id=3"_s));
        }
        const QString record =
            writeBytes(folder.filePath(u"record"_s), lineOf(100, 54, 5) + "damaged\n" + lineOf(100, 54, 5));
        const ProgramRun run = check({path, u"--json"_s, u"--record"_s, record});
        QCOMPARE(run.errors, QStringList());
        QCOMPARE(run.status, 0);
        const QJsonValue rates = QJsonDocument::fromJson(run.output.toUtf8())["rates"_L1];
        QCOMPARE(rates["in"_L1], (QJsonObject{{u"low"_s, 0.5}, {u"middle"_s, 0.5}, {u"high"_s, 0.5}}));
        QCOMPARE(rates["out"_L1]["middle"_L1], 0.5);
        QCOMPARE(rates["exchangesIn"_L1], 2);
        QCOMPARE(rates["damagedLines"_L1], 1);
        const QString text = check({path, u"--record"_s, record}).output;
        QVERIFY2(text.contains(u"characters a token: 2.00 in (measured at 2 exchanges;"_s), qUtf8Printable(text));
        QVERIFY2(text.contains(u"damaged and passed over: 1\n"_s), qUtf8Printable(text));
    }

    void a_file_that_cannot_be_read_is_told_in_a_sentence_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        const QString missing = folder.filePath(u"missing"_s);
        const QString words = writeBytes(folder.filePath(u"words"_s), QByteArray("Some words. ").repeated(100));
        QTest::newRow("no project") << QStringList{missing} << missing + u" is not there"_s;
        QTest::newRow("a text for a project")
            << QStringList{words} << words + u" is no project: file is not a database"_s;
        QTest::newRow("no record") << QStringList{u"--record"_s, missing} << missing + u" is not there"_s;
        QTest::newRow("a text for a record")
            << QStringList{u"--record"_s, words} << words + u" is no record: none of its lines is an exchange"_s;
    }
    void a_file_that_cannot_be_read_is_told_in_a_sentence()
    {
        QFETCH(QStringList, arguments);
        QFETCH(const QString, reason);
        if (arguments.startsWith(u"--record"_s))
            arguments.prepend(path);
        const ProgramRun run = check(arguments);
        QCOMPARE(run.status, 3);
        QCOMPARE(run.output, QString());
        QCOMPARE(run.errors, QStringList{"orrinet-study: "_L1 + reason});
    }

    void what_makes_no_sense_is_refused_data()
    {
        QTest::addColumn<QStringList>("options");
        for (const QString &value : {u"0"_s, u"-1"_s, u"nan"_s, u"inf"_s, u"many"_s})
            QTest::addRow("%s characters", qUtf8Printable(value)) << QStringList{u"--characters-per-token"_s, value};
        for (const QString &value : {u"0"_s, u"-1"_s, u"1.5"_s, u"many"_s})
            QTest::addRow("a context of %s", qUtf8Printable(value)) << QStringList{u"--context"_s, value};
        QTest::newRow("a price alone") << QStringList{u"--price-in"_s, u"1"_s};
        QTest::newRow("the other price alone") << QStringList{u"--price-out"_s, u"1"_s};
        QTest::newRow("a price below zero") << QStringList{u"--price-in"_s, u"-1"_s, u"--price-out"_s, u"1"_s};
        QTest::newRow("a price of no number") << QStringList{u"--price-in"_s, u"nan"_s, u"--price-out"_s, u"1"_s};
        QTest::newRow("assumed and measured")
            << QStringList{u"--characters-per-token"_s, u"3"_s, u"--record"_s, u"r"_s};
        QTest::newRow("a second project") << QStringList{u"other.ormt"_s};
        QTest::newRow("an unknown option") << QStringList{u"--cost"_s};
    }
    void what_makes_no_sense_is_refused()
    {
        QFETCH(const QStringList, options);
        const ProgramRun run = check(QStringList{path} + options);
        QCOMPARE(run.status, 2);
        QCOMPARE(run.output, QString());
        QVERIFY(!run.errors.isEmpty());
    }

    void a_project_has_to_be_named() { QCOMPARE(check({}).status, 2); }

    void help_tells_every_option_key_and_rule()
    {
        const ProgramRun run = check({u"--help"_s});
        QCOMPARE(run.status, 0);
        QCOMPARE(run.errors, QStringList());
        for (const QString &option : {u"--characters-per-token"_s, u"--record"_s, u"--price-in"_s, u"--price-out"_s,
                                      u"--context"_s, u"--bridge"_s, u"--json"_s, u"--help"_s})
            QVERIFY2(run.output.contains(option), qUtf8Printable(option));
        const QJsonDocument told = QJsonDocument::fromJson(
            check({path, u"--json"_s, u"--price-in"_s, u"1"_s, u"--price-out"_s, u"1"_s, u"--context"_s, u"50"_s})
                .output.toUtf8());
        QStringList keys = told.object().keys();
        for (const auto object : {"rates"_L1, "tokens"_L1, "context"_L1, "project"_L1, "requests"_L1})
            keys += told[object].toObject().keys();
        keys += told["personas"_L1][0].toObject().keys() + told["questions"_L1][0].toObject().keys() +
                told["findings"_L1][0].toObject().keys();
        keys += study::findingKinds();
        for (const QString &key : std::as_const(keys))
            QVERIFY2(run.output.contains(key), qUtf8Printable(key));
        QVERIFY2(run.output.simplified().contains(u"Exit status: 0 nothing blocks, 1 something does, 2 usage, 3 file "
                                                  "can't be read."_s),
                 qUtf8Printable(run.output));
    }

private:
    QTemporaryDir folder;
    QString path;
    int projects = 0;
};

ORRINET_TEST(TestCheck)
#include "tst_check.moc"

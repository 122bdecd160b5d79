// What is found in a project before a run.

#include "study/check/findings.h"
#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::Finding;
using study::Outgrown;
using study::PairMap;
using study::Project;

/// Enters what a test is about, beside "Ann" and what else a sound project has.
using Fill = std::function<bool(Sql &)>;

namespace {

Fill question(const QuestionEntered &entered)
{
    return [entered](Sql &file) { return enter(file, entered); };
}

Fill answers(const QList<AnswerEntered> &entered)
{
    return [entered](Sql &file) {
        return std::all_of(entered.begin(), entered.end(), [&file](const auto &each) { return enter(file, each); });
    };
}

Fill statement(const QString &text)
{
    return [text](Sql &file) { return file.exec(text); };
}

Fill operator+(const Fill &first, const Fill &second)
{
    return [first, second](Sql &file) { return first(file) && second(file); };
}

QString drinkLabels()
{
    return uR"(["Tea","Milk"])"_s;
}

} // namespace

class TestCheckFindings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A zone in which local time and UTC can't be mistaken for each other.
        qputenv("TZ", "XST-5");
        QCOMPARE(QDateTime(QDate(2020, 1, 1), QTime(0, 0)).offsetFromUtc(), 5 * 3600);
    }

    void a_sound_project_has_none()
    {
        QVERIFY(make([](Sql &file) {
            return enter(
                file, QuestionEntered{.prompt = u"Tea or milk?"_s, .type = u"multi_choice"_s, .labels = drinkLabels()},
                QuestionEntered{.prompt = u"1 to 3?"_s, .type = u"likert"_s, .labels = uR"(["1","2","3"])"_s},
                QuestionEntered{
                    .prompt = u"Pick"_s, .type = u"single_choice"_s, .labels = drinkLabels(), .reasoning = 1},
                QuestionEntered{.prompt = u"And?"_s, .type = u"text"_s, .labels = u"[]"_s},
                QuestionEntered{.prompt = u"How many?"_s, .type = u"numeric"_s, .reasoning = 1},
                AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"Tea"_s});
        }));
        QCOMPARE(told(true), QStringList());
    }

    void what_stands_in_the_way_of_a_run_blocks_data()
    {
        QTest::addColumn<Fill>("fill");
        QTest::addColumn<QStringList>("sentences");
        QTest::newRow("no prompt") << question({.type = u"text"_s})
                                   << QStringList{u"blocking: question 1 has no prompt"_s};
        QTest::newRow("a blank prompt") << question({.prompt = u" \n"_s, .type = u"text"_s})
                                        << QStringList{u"blocking: question 1 has no prompt"_s};
        QTest::newRow("nobody to speak") << question({.prompt = u"Tea?"_s}) +
                                                statement(u"UPDATE personas SET attributes=NULL"_s)
                                         << QStringList{uR"(blocking: persona "Ann" has no text)"_s};
        QTest::newRow("a blank system prompt before a text")
            << question({.prompt = u"Tea?"_s}) + statement(u"UPDATE personas SET system_prompt=' '"_s)
            << QStringList{uR"(blocking: persona "Ann" has no text)"_s};
        QTest::newRow("an Option without labels")
            << question({.prompt = u"Tea?"_s, .type = u"single_choice"_s, .labels = u"[]"_s})
            << QStringList{u"blocking: question 1 has no labels, and as an Option needs them"_s};
        for (const auto *labels : {u"Tea, Milk", u"[1,2]", uR"({"a":1})"}) {
            QTest::addRow("an Option with the labels %s", qUtf8Printable(QString(labels)))
                << question({.prompt = u"Tea?"_s, .type = u"single_choice"_s, .labels = QString(labels)})
                << QStringList{u"blocking: question 1 has labels that can't be read, and as an Option needs them"_s};
        }
    }
    void what_stands_in_the_way_of_a_run_blocks()
    {
        QFETCH(const Fill, fill);
        QVERIFY(make(fill));
        QTEST(told(), "sentences");
    }

    void nothing_blocks_that_is_answered()
    {
        QVERIFY(make([](Sql &file) {
            return enter(file, QuestionEntered{}, QuestionEntered{.prompt = u"2"_s, .type = u"single_choice"_s},
                         QuestionEntered{.prompt = u"3"_s, .type = u"likert"_s},
                         AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"x"_s},
                         AnswerEntered{.persona = u"a"_s, .question = 2, .text = u"x"_s},
                         AnswerEntered{.persona = u"a"_s, .question = 3, .text = u"x"_s}) &&
                   file.exec(u"UPDATE personas SET attributes=''"_s);
        }));
        QCOMPARE(told(), QStringList());
    }

    void a_format_that_is_refused_is_one_matter_unless_there_is_a_bridge()
    {
        const QString tail = u" a format that the hosted service is reported to refuse (orrinet-bridge translates it; "
                             "--bridge says that it is used)"_s;
        QVERIFY(make(question({.prompt = u"1"_s, .type = u"numeric"_s})));
        QCOMPARE(told(false), QStringList{u"blocking: question 1 (Numeric) asks for"_s + tail});
        QCOMPARE(told(true), QStringList());

        QVERIFY(make([](Sql &file) {
            bool done = true;
            for (const auto *type : {u"numeric", u"text", u"likert", u"multi_choice", u"single_choice", u"ranking"})
                done = done && enter(file, QuestionEntered{.prompt = QString(type),
                                                           .type = QString(type),
                                                           .labels = uR"(["choice","likert","ranking"])"_s});
            return done;
        }));
        QCOMPARE(told(false).constFirst(), u"blocking: 4 questions ask for"_s + tail + u": 1, 3, 4, 6"_s);
        QVERIFY(told(true).filter(u"blocking"_s).isEmpty());
    }

    void what_may_be_meant_otherwise_is_warned_of_data()
    {
        QTest::addColumn<Fill>("fill");
        QTest::addColumn<QStringList>("sentences");
        for (const auto *type : {u"multi_choice", u"likert", u"ranking"}) {
            QTest::addRow("choices that %s does not send", qUtf8Printable(QString(type)))
                << question({.prompt = u"Tea?"_s, .type = QString(type), .labels = uR"(["tea","Milk","Cocoa"])"_s})
                << QStringList{
                       uR"(question 1 has choices that are not in its prompt, and the model is told no others: )"
                       uR"("Milk", "Cocoa")"_s};
        }
        QTest::newRow("choices in the boilerplate")
            << question({.prompt = u"Tea?"_s, .type = u"likert"_s, .labels = drinkLabels()}) +
                   statement(u"INSERT INTO boilerplate VALUES ('', 'Answer tea or milk.')"_s)
            << QStringList();
        QTest::newRow("a scale without its end")
            << question({.prompt = u"From 1?"_s, .type = u"likert"_s, .labels = uR"(["1","2","3"])"_s})
            << QStringList{uR"(question 1 has choices that are not in its prompt, and the model is told no others: )"
                           uR"("2", "3")"_s};
        QTest::newRow("numbers that are no scale")
            << question({.prompt = u"1 or 3?"_s, .type = u"multi_choice"_s, .labels = uR"(["1","2","3"])"_s})
            << QStringList{uR"(question 1 has choices that are not in its prompt, and the model is told no others: )"
                           uR"("2")"_s};
        QTest::newRow("a label twice") << question({.prompt = u"?"_s,
                                                    .type = u"single_choice"_s,
                                                    .labels = uR"(["Tea","Milk"," tea"])"_s})
                                       << QStringList{uR"(question 1 has a label twice: "tea")"_s};
        QTest::newRow("an empty label") << question({.prompt = u"?"_s,
                                                     .type = u"single_choice"_s,
                                                     .labels = uR"(["Tea","",""])"_s})
                                        << QStringList{u"question 1 has an empty label"_s};
        QTest::newRow("labels that can't be read")
            << question({.prompt = u"?"_s, .type = u"ranking"_s, .labels = u"Tea, Milk"_s})
            << QStringList{u"question 1 has labels that can't be read"_s};
        QTest::newRow("labels that nobody reads")
            << question({.prompt = u"?"_s, .type = u"text"_s, .labels = u"Tea, Milk"_s}) << QStringList();
        QTest::newRow("an unknown type")
            << question({.prompt = u"?"_s, .type = u"Text"_s})
            << QStringList{uR"(question 1 has the type "Text", which is unknown, and is asked like a text)"_s};
        QTest::newRow("a prompt twice") << question({.prompt = u"Tea?"_s}) + question({.prompt = u"Milk?"_s}) +
                                               question({.prompt = u" tea? "_s})
                                        << QStringList{u"question 3 has the prompt of question 1"_s};
        QTest::newRow("a persona's text twice")
            << statement(u"INSERT INTO personas (uuid, name, system_prompt) VALUES ('b', 'Bea', 'likes tea ')"_s)
            << QStringList{uR"(persona "Bea" has the text of "Ann")"_s};
        QTest::newRow("a text that is not spoken")
            << statement(u"INSERT INTO personas (uuid, name, attributes, system_prompt) "
                         "VALUES ('b', 'Bea', 'likes tea', 'likes milk')"_s)
            << QStringList();
        QTest::newRow("a name twice")
            << statement(u"INSERT INTO personas (uuid, name, attributes) VALUES ('b', 'Ann', 'b'), ('c', 'Ann', 'c')"_s)
            << QStringList{uR"(3 personas have the name "Ann")"_s};
        QTest::newRow("no name twice")
            << statement(u"INSERT INTO personas (uuid, name, attributes) VALUES ('b', '', 'b'), ('c', NULL, 'c')"_s)
            << QStringList{u"2 personas have no name"_s};
        const QString unasked = u"question 1 has reasoning ticked, and neither its type nor its words ask for it"_s;
        QTest::newRow("reasoning of a text") << question({.prompt = u"Tea?"_s, .reasoning = 1}) << QStringList{unasked};
        const QString aside = u"question 1 has reasoning ticked, and its type doesn't ask for it: what its words ask "
                              "for will stand in the answer"_s;
        QTest::newRow("reasoning of a text that asks why")
            << question({.prompt = u"Tea? WHY?"_s, .reasoning = 1}) << QStringList{aside};
        QTest::newRow("reasoning asked by the boilerplate")
            << question({.prompt = u"Tea?"_s, .reasoning = 1}) +
                   statement(u"INSERT INTO boilerplate VALUES ('', 'Explain.')"_s)
            << QStringList{aside};
        QTest::newRow("a condition") << question({.prompt = u"?"_s}) +
                                            statement(u"UPDATE questions SET ask_when='if'"_s)
                                     << QStringList{u"question 1 has a condition, and is asked all the same"_s};
        QTest::newRow("a condition's answer")
            << question({.prompt = u"?"_s}) + statement(u"UPDATE questions SET depends_on_answer='yes'"_s)
            << QStringList{u"question 1 has a condition, and is asked all the same"_s};
        QTest::newRow("a condition's question")
            << question({.prompt = u"?"_s}) + statement(u"UPDATE questions SET depends_on_question_id=1"_s)
            << QStringList{u"question 1 has a condition, and is asked all the same"_s};
        QTest::newRow("no condition") << question({.prompt = u"?"_s}) +
                                             statement(u"UPDATE questions SET ask_when='', depends_on_answer=''"_s)
                                      << QStringList();
        QTest::newRow("attachments")
            << question({.prompt = u"?"_s}) +
                   statement(u"INSERT INTO question_attachments (question_id, filename) VALUES (1, 'tea.txt')"_s)
            << QStringList{uR"(question 1 has attachments, which are not sent: "tea.txt")"_s};
        QTest::newRow("a search by choice")
            << question({.prompt = u"?"_s}) + question({.prompt = u"!"_s}) +
                   statement(u"UPDATE questions SET search_enabled=0 WHERE question_id=2"_s)
            << QStringList{u"question 1 wants a web search, which is not made"_s};
        QTest::newRow("no search") << question({.prompt = u"?"_s}) +
                                          statement(u"UPDATE questions SET search_enabled=0"_s)
                                   << QStringList();
    }
    void what_may_be_meant_otherwise_is_warned_of()
    {
        QFETCH(const Fill, fill);
        QFETCH(const QStringList, sentences);
        QVERIFY(make(fill));
        QStringList warnings;
        for (const QString &sentence : sentences)
            warnings << "warning: "_L1 + sentence;
        QCOMPARE(told(true), warnings);
    }

    void answers_that_tell_nothing_later_on_are_warned_of_data()
    {
        QTest::addColumn<Fill>("fill");
        QTest::addColumn<QStringList>("sentences");
        const Fill two = question({.prompt = u"?"_s, .type = u"numeric"_s}) + question({.prompt = u"!"_s});
        const AnswerEntered number{.persona = u"a"_s, .question = 1, .number = 7};
        QTest::newRow("a number") << two + answers({number})
                                  << QStringList{
                                         u"1 answer to question 1 is replayed empty, as only texts are replayed"_s};
        QTest::newRow("two rows") << two + answers({number, number})
                                  << QStringList{
                                         u"2 answers to question 1 are replayed empty, as only texts are replayed"_s};
        QTest::newRow("nobody is asked any more")
            << two + answers({number, {.persona = u"a"_s, .question = 2, .text = u"x"_s}}) << QStringList();
        QTest::newRow("an adjudicated question")
            << two + answers({number}) + statement(u"UPDATE questions SET judge_question=1 WHERE question_id=1"_s)
            << QStringList();
        QTest::newRow("a number to come")
            << two << QStringList{u"question 1 is Numeric, and its answers will be replayed empty"_s};
        QTest::newRow("a number to come, of an adjudicated question")
            << two + statement(u"UPDATE questions SET judge_question=1 WHERE question_id=1"_s) << QStringList();
        QTest::newRow("a number to come, the last")
            << two + answers({{.persona = u"a"_s, .question = 2, .text = u"x"_s}}) << QStringList();
        QTest::newRow("of a deleted persona")
            << answers({{.persona = u"gone"_s, .question = 1}}) + two
            << QStringList{u"question 1 is Numeric, and its answers will be replayed empty"_s,
                           u"1 answer is of personas that were deleted"_s};
        QTest::newRow("to a deleted question")
            << answers({{.persona = u"a"_s, .question = 8}, {.persona = u"a"_s, .question = 9}})
            << QStringList{u"2 answers are to questions that were deleted"_s};
    }
    void answers_that_tell_nothing_later_on_are_warned_of() { what_may_be_meant_otherwise_is_warned_of(); }

    void answers_older_than_what_was_asked_are_warned_of_data()
    {
        QTest::addColumn<QString>("questionChanged");
        QTest::addColumn<QString>("personaChanged");
        QTest::addColumn<QString>("answered");
        QTest::addColumn<QStringList>("sentences");
        const QString before = u"2026-11-20 12:00:00"_s;
        const QString after = u"2026-11-20 12:00:01"_s;
        const QString ofQuestion = u"warning: 1 answer to question 1 is older than its last change"_s;
        const QString ofPersona = uR"(warning: 1 answer of persona "Ann" is older than its last change)"_s;
        QTest::newRow("changed before") << before << before << after << QStringList();
        QTest::newRow("in the same second") << after << after << after << QStringList();
        QTest::newRow("the question") << after << before << before << QStringList{ofQuestion};
        QTest::newRow("the persona") << before << after << before << QStringList{ofPersona};
        QTest::newRow("both") << after << after << before << QStringList{ofQuestion, ofPersona};
        QTest::newRow("never changed") << QString() << QString() << before << QStringList();
        QTest::newRow("at no time") << after << after << QString() << QStringList();
        const QString localAfter = QDateTime(QDate(2026, 11, 20), QTime(12, 0, 1), QTimeZone::UTC)
                                       .toLocalTime()
                                       .toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s);
        QTest::newRow("a local time") << localAfter << before << before << QStringList{ofQuestion};
        QTest::newRow("a local time before") << localAfter << before << u"2026-11-20 12:00:02"_s << QStringList();
    }
    void answers_older_than_what_was_asked_are_warned_of()
    {
        QFETCH(const QString, questionChanged);
        QFETCH(const QString, personaChanged);
        QFETCH(const QString, answered);
        QVERIFY(make(question({.prompt = u"?"_s}) +
                     answers({{.persona = u"a"_s, .question = 1, .text = u"x"_s, .createdAt = answered}}) +
                     statement(u"UPDATE questions SET modified_at='%1'"_s.arg(questionChanged)) +
                     statement(u"UPDATE personas SET modified_at='%1'"_s.arg(personaChanged))));
        QTEST(told(), "sentences");
    }

    void an_answer_that_was_given_anew_is_as_old_as_the_new_one()
    {
        const auto at = [](const QString &time) {
            return AnswerEntered{.persona = u"a"_s, .question = 1, .text = u"x"_s, .createdAt = time};
        };
        QVERIFY(
            make(question({.prompt = u"?"_s}) + answers({at(u"2001-02-03 04:05:07"_s), at(u"2001-01-01 00:00:00"_s)})));
        QCOMPARE(told(), QStringList());
    }

    void several_of_a_kind_are_told_in_one_sentence_and_kept_apart_for_machines()
    {
        QVERIFY(
            make([](Sql &file) { return enterQuestions(file, 7) && file.exec(u"UPDATE questions SET prompt=''"_s); }));
        QCOMPARE(told(), QStringList{u"blocking: 7 questions have no prompt: 1, 2, 3, 4, 5 and 2 more"_s});
        QCOMPARE(found().size(), 7);
        QCOMPARE(found().at(6).text, u"question 7 has no prompt"_s);
        QCOMPARE(found().at(6).question, 7);

        QVERIFY(
            make([](Sql &file) { return enterQuestions(file, 3) && file.exec(u"UPDATE questions SET prompt=''"_s); }));
        QCOMPARE(told().size(), 3);

        QVERIFY(make([](Sql &file) {
            bool done = enterQuestions(file, 1);
            for (const auto *name : {u"Bea", u"Cid", u"Dot"})
                done = done && enter(file, PersonaEntered{.uuid = QString(name), .name = QString(name)});
            return done && file.exec(u"UPDATE personas SET attributes=''"_s);
        }));
        QCOMPARE(told(), QStringList{uR"(blocking: 4 personas have no text: "Ann", "Bea", "Cid", "Dot")"_s});
        QCOMPARE(found().at(3).persona->entry.name, u"Dot"_s);
    }

    void a_context_that_is_outgrown_is_warned_of()
    {
        QVERIFY(make(question({.prompt = u"?"_s})));
        const Project project = read();
        const QList<Finding> all =
            findings(project, PairMap(project), false, {.tokens = 100, .middle = 3, .high = 5, .firstQuestion = 4});
        QCOMPARE(sentences(all),
                 QStringList{u"warning: up to 5 requests, 3 by the middle estimate, outgrow the context "
                             "of 100 tokens, the first of them at question 4"_s});
        QCOMPARE(all.constFirst().count, 5);
    }

    void what_blocks_comes_first()
    {
        QVERIFY(make(question({.prompt = u"Tea?"_s, .reasoning = 1}) + question({.type = u"text"_s}) +
                     statement(u"UPDATE questions SET ask_when='if' WHERE question_id=1"_s)));
        QStringList kinds;
        for (const QList<Finding> all = found(); const Finding &finding : all)
            kinds << finding.kind;
        QCOMPARE(kinds, (QStringList{u"no-prompt"_s, u"reasoning-not-asked"_s, u"unused-condition"_s}));
    }

private:
    /// Makes the project anew with "Ann", and fills it.
    bool make(const Fill &fill)
    {
        path = folder.filePath(u"%1.ormt"_s.arg(++projects));
        SideDatabase file(writeProject(path));
        return file.exec(u"BEGIN"_s) &&
               enter(file, PersonaEntered{.uuid = u"a"_s, .name = u"Ann"_s, .attributes = u"likes tea"_s}) &&
               fill(file) && file.exec(u"COMMIT"_s);
    }

    Project read()
    {
        const auto project = study::readProject(path);
        if (const QString *reason = std::get_if<QString>(&project))
            QTest::qFail(qUtf8Printable(*reason), __FILE__, __LINE__);
        return std::get<Project>(project);
    }

    /// The findings point into the project.
    QList<Finding> found(bool bridged = false)
    {
        kept = std::make_unique<Project>(read());
        return findings(*kept, PairMap(*kept), bridged, Outgrown());
    }

    QStringList told(bool bridged = false) { return sentences(found(bridged)); }

    QTemporaryDir folder;
    QString path;
    int projects = 0;
    std::unique_ptr<Project> kept;
};

ORRINET_TEST(TestCheckFindings)
#include "tst_checkfindings.moc"

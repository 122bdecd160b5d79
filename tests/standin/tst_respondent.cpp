#include "standin/respondent.h"
#include "tests/support/testcase.h"

#include <QHashFunctions>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Request;

namespace {

QStringList personas()
{
    return {u"You keep bees."_s,    u"You repair bicycles."_s, u"You sing in a choir."_s,
            u"You drive a tram."_s, u"You grow pumpkins."_s,   u"You collect maps."_s};
}

QString beekeeper()
{
    return personas().constFirst();
}

QJsonObject message(const QString &role, const QString &content)
{
    return {{u"role"_s, role}, {u"content"_s, content}};
}

QJsonObject plain(const QString &persona, const QString &question)
{
    return {{u"model"_s, u"any"_s},
            {u"messages"_s, QJsonArray{message(u"system"_s, persona), message(u"user"_s, question)}}};
}

QJsonObject withFormat(const QString &persona, const QString &question, bool reasoning = false)
{
    QJsonObject properties{{u"answer"_s, QJsonObject{{u"type"_s, u"string"_s}}}};
    if (reasoning)
        properties.insert("reasoning"_L1, QJsonObject{{u"type"_s, u"string"_s}});
    QJsonObject body = plain(persona, question);
    body.insert("response_format"_L1,
                QJsonObject{{u"type"_s, u"json_object"_s}, {u"schema"_s, QJsonObject{{u"properties"_s, properties}}}});
    return body;
}

QJsonObject withTool(const QString &persona, const QString &question, const QStringList &labels)
{
    const QJsonObject answer{{u"type"_s, u"string"_s}, {u"enum"_s, QJsonArray::fromStringList(labels)}};
    const QJsonObject parameters{{u"properties"_s, QJsonObject{{u"answer"_s, answer}}}};
    const QJsonObject function{{u"name"_s, u"select_answer"_s}, {u"parameters"_s, parameters}};
    QJsonObject body = plain(persona, question);
    body.insert("tools"_L1, QJsonArray{QJsonObject{{u"type"_s, u"function"_s}, {u"function"_s, function}}});
    return body;
}

QByteArray replyTo(const QJsonObject &body)
{
    Request request;
    request.body = QJsonDocument(body).toJson();
    return standin::respond(request).body;
}

QJsonValue messageIn(const QByteArray &reply)
{
    return QJsonDocument::fromJson(reply)["choices"_L1][0]["message"_L1];
}

QString contentFor(const QJsonObject &body)
{
    return messageIn(replyTo(body))["content"_L1].toString();
}

QJsonObject argumentsFor(const QJsonObject &body)
{
    const QJsonValue call = messageIn(replyTo(body))["tool_calls"_L1][0];
    return QJsonDocument::fromJson(call["function"_L1]["arguments"_L1].toString().toUtf8()).object();
}

QJsonObject objectFor(const QJsonObject &body)
{
    return QJsonDocument::fromJson(contentFor(body).toUtf8()).object();
}

/// The answers of all personas to one question.
QStringList answersTo(const QString &question)
{
    QStringList answers;
    const QStringList all = personas();
    for (const QString &persona : all)
        answers << objectFor(withFormat(persona, question)).value("answer"_L1).toString();
    return answers;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

class TestRespondent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_same_persona_and_question_get_the_same_reply_data()
    {
        QTest::addColumn<QJsonObject>("body");
        const QString question = u"Choose all that apply: coffee; tea; water."_s;
        QTest::newRow("plain") << plain(beekeeper(), question);
        QTest::newRow("format") << withFormat(beekeeper(), question, true);
        QTest::newRow("tool") << withTool(beekeeper(), question, {u"yes"_s, u"no"_s, u"perhaps"_s});
    }

    void the_same_persona_and_question_get_the_same_reply()
    {
        QFETCH(const QJsonObject, body);
        // Qt's own hashes differ from run to run: a reply that leant on them would differ between these two calls.
        QHashSeed::setDeterministicGlobalSeed();
        const QByteArray reply = replyTo(body);
        QHashSeed::resetRandomGlobalSeed();
        QCOMPARE(replyTo(body), reply);
    }

    void what_was_said_before_changes_nothing()
    {
        const QJsonObject first = plain(beekeeper(), u"How do you spend a free day?"_s);
        QJsonObject later = first;
        QJsonArray messages = first["messages"_L1].toArray();
        messages.insert(1, message(u"user"_s, u"Do you like rain?"_s));
        messages.insert(2, message(u"assistant"_s, u"Now and then."_s));
        later.insert("messages"_L1, messages);
        QCOMPARE(replyTo(later), replyTo(first));
    }

    void personas_differ_data()
    {
        QTest::addColumn<QString>("question");
        QTest::newRow("subset") << u"Which of these do you drink? Choose all that apply: coffee; tea; water; milk."_s;
        QTest::newRow("ranking") << u"Rank these by how often you use them: train; tram; bicycle; car."_s;
        QTest::newRow("scale") << u"On a scale of agreement, is winter too long: no; hardly; rather; yes."_s;
        QTest::newRow("number") << u"How many cups did you have yesterday?"_s;
    }

    void personas_differ()
    {
        QFETCH(const QString, question);
        QStringList answers = answersTo(question);
        answers.removeDuplicates();
        QCOMPARE_GT(answers.size(), 1);
    }

    void questions_differ()
    {
        QSet<QString> contents;
        for (const QString &place : {u"home"_s, u"work"_s, u"sea"_s, u"market"_s})
            contents << contentFor(plain(beekeeper(), u"What do you do at "_s + place + u'?'));
        QCOMPARE_GT(contents.size(), 1);
    }

    void a_function_call_picks_one_of_its_labels()
    {
        const QStringList labels{u"never"_s, u"sometimes; or so"_s, u"often"_s};
        QSet<QString> seen;
        const QStringList all = personas();
        for (const QString &persona : all) {
            const QJsonObject arguments = argumentsFor(withTool(persona, u"Do you walk?"_s, labels));
            seen << arguments["answer"_L1].toString();
            QVERIFY(arguments["reasoning"_L1].toString().startsWith("Made-up"_L1));
        }
        QVERIFY(QSet<QString>(labels.cbegin(), labels.cend()).contains(seen));
        QCOMPARE_GT(seen.size(), 1);
    }

    void a_label_that_is_no_text_stays_what_it_is()
    {
        QJsonObject body = withTool(beekeeper(), u"How many?"_s, {});
        const QJsonObject answer{{u"enum"_s, QJsonArray{7}}};
        const QJsonObject parameters{{u"properties"_s, QJsonObject{{u"answer"_s, answer}}}};
        body.insert("tools"_L1, QJsonArray{QJsonObject{{u"function"_s, QJsonObject{{u"parameters"_s, parameters}}}}});
        QCOMPARE(argumentsFor(body).value("answer"_L1), QJsonValue(7));
    }

    void a_plain_question_gets_a_sentence_that_owns_up()
    {
        const QString content = contentFor(plain(beekeeper(), u"How do you spend a free day?"_s));
        QVERIFY2(content.startsWith("Made-up"_L1) && content.endsWith(u'.'), qPrintable(content));
    }

    void reasoning_comes_with_the_json_format_only_when_its_schema_has_it()
    {
        const QString question = u"How many cups did you have yesterday?"_s;
        QCOMPARE(objectFor(withFormat(beekeeper(), question)).keys(), QStringList{u"answer"_s});
        const QJsonObject reasoned = objectFor(withFormat(beekeeper(), question, true));
        QCOMPARE(reasoned.keys(), (QStringList{u"answer"_s, u"reasoning"_s}));
        QVERIFY(reasoned["reasoning"_L1].toString().startsWith("Made-up"_L1));
    }

    void choices_give_a_subset_in_their_order()
    {
        const QStringList choices{u"coffee"_s, u"black tea"_s, u"water"_s};
        const QStringList answers =
            answersTo(u"In a usual week: choose all that apply: coffee; black tea; water. Be quick."_s);
        for (const QString &answer : answers) {
            QStringList expected = choices;
            const QStringList chosen = answer.split(u", "_s);
            expected.removeIf([&chosen](const QString &choice) { return !chosen.contains(choice); });
            QCOMPARE(chosen, expected);
        }
        // Somebody takes one thing less than all, or the whole list would do for a subset.
        QVERIFY(std::ranges::any_of(answers, [](const QString &answer) { return answer.count(u',') < 2; }));
    }

    void ranking_orders_all_choices()
    {
        const QStringList choices{u"bicycle"_s, u"car"_s, u"night train"_s, u"tram"_s};
        const QStringList answers = answersTo(u"Rank these: tram; night train; car; bicycle."_s);
        for (const QString &answer : answers)
            QCOMPARE(sorted(answer.split(u", "_s)), choices);
    }

    void a_scale_gives_exactly_one_choice()
    {
        const QStringList choices{u"not at all"_s, u"a little"_s, u"very much"_s};
        const QStringList answers = answersTo(u"On a scale, do you like rain: not at all; a little; very much."_s);
        for (const QString &answer : answers)
            QVERIFY2(choices.contains(answer), qPrintable(answer));
    }

    void without_choices_the_answer_is_one_digit_data()
    {
        QTest::addColumn<QString>("question");
        QTest::newRow("no colon") << u"How many cups; roughly?"_s;
        QTest::newRow("nothing behind the colon") << u"On a scale from 0 to 9, how loud is it: please tell."_s;
        QTest::newRow("no question") << QString();
    }

    void without_choices_the_answer_is_one_digit()
    {
        QFETCH(const QString, question);
        const QStringList answers = answersTo(question);
        for (const QString &answer : answers)
            QVERIFY2(answer.size() == 1 && answer.front().isDigit(), qPrintable(answer));
    }

    void a_body_that_is_no_json_still_gets_an_answer()
    {
        Request request;
        request.body = "no json"_ba;
        QVERIFY(messageIn(standin::respond(request).body)["content"_L1].toString().startsWith("Made-up"_L1));
    }
};

ORRINET_TEST(TestRespondent)
#include "tst_respondent.moc"

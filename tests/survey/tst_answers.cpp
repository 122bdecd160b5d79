// What a reply is interpreted as, and how an answer is shown.

#include "survey/answers.h"
#include "survey/surveyrunner.h"
#include "tests/support/testcase.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

static QStringList choiceTypes()
{
    return {u"single_choice"_s, u"multi_choice"_s, u"likert"_s, u"ranking"_s};
}

/// Words that are no type, and so neither a choice nor a number.
static QStringList otherTypes()
{
    return {QString(), u""_s, u"essay"_s, u"Numeric"_s, u"Single_choice"_s, u" likert"_s};
}

/// The three columns in one line; what is null reads as "-".
static QString columnsOf(const ParsedAnswer &answer)
{
    const auto text = [](const QString &column) { return column.isNull() ? u"-"_s : QString(u'\'' + column + u'\''); };
    QString number = u"-"_s;
    if (answer.numericAnswer.isValid())
        number = QString::fromLatin1(answer.numericAnswer.typeName()) + u' ' +
                 QString::number(answer.numericAnswer.toDouble(), 'g', 17);
    return QStringList{text(answer.textAnswer), number, text(answer.jsonAnswer)}.join(u" | "_s);
}

static QString interpreted(const QString &reply, const QString &type)
{
    return columnsOf(SurveyRunner::interpretAnswer(reply, type));
}

static QString nestedObject(int levels)
{
    // The object itself is one level.
    return uR"({"answer":)"_s + QString(levels - 1, u'[') + QString(levels - 1, u']') + u'}';
}

class TestAnswers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_text_question_takes_the_reply_as_it_is_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::newRow("prose") << u"Well, yes."_s;
        QTest::newRow("blanks and line feeds") << u"  a\n\tb \r\n"_s;
        QTest::newRow("number") << u"12"_s;
        QTest::newRow("object") << uR"( {"answer": "a", "reasoning": "r"} )"_s;
        QTest::newRow("array") << u"[1]"_s;
        QTest::newRow("beyond ASCII") << u"\u00e9\u2713\U0001F600"_s;
        QTest::newRow("empty") << u""_s;
    }
    void a_text_question_takes_the_reply_as_it_is()
    {
        QFETCH(const QString, reply);
        QCOMPARE(interpreted(reply, u"text"_s), QString(u"'%1' | - | -"_s.arg(reply)));
    }

    void an_object_gives_its_answer_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("asNumeric");
        QTest::addColumn<QString>("asOther");
        QTest::newRow("string") << uR"("b")"_s << u"'b' | -"_s << u"'b' | -"_s;
        QTest::newRow("empty string") << uR"("")"_s << u"'' | -"_s << u"'' | -"_s;
        QTest::newRow("blank string") << uR"(" b ")"_s << u"' b ' | -"_s << u"' b ' | -"_s;
        QTest::newRow("whole number in a string") << uR"("7")"_s << u"- | double 7"_s << u"'7' | -"_s;
        QTest::newRow("decimals in a string") << uR"("12.50")"_s << u"- | double 12.5"_s << u"'12.50' | -"_s;
        QTest::newRow("number with a unit") << uR"("7 km")"_s << u"'7 km' | -"_s << u"'7 km' | -"_s;
        QTest::newRow("whole number") << u"42"_s << u"- | double 42"_s << u"'42' | -"_s;
        QTest::newRow("zero") << u"0"_s << u"- | double 0"_s << u"'0' | -"_s;
        QTest::newRow("negative") << u"-1.5"_s << u"- | double -1.5"_s << u"'-1.5' | -"_s;
        QTest::newRow("many decimals") << u"0.123046875"_s << u"- | double 0.123046875"_s << u"'0.123047' | -"_s;
        QTest::newRow("six digits") << u"123456"_s << u"- | double 123456"_s << u"'123456' | -"_s;
        QTest::newRow("seven digits") << u"1234567"_s << u"- | double 1234567"_s << u"'1.23457e+06' | -"_s;
        QTest::newRow("tiny") << u"1e-300"_s << u"- | double 1e-300"_s << u"'1e-300' | -"_s;
        QTest::newRow("true") << u"true"_s << u"'true' | -"_s << u"'true' | -"_s;
        QTest::newRow("false") << u"false"_s << u"'false' | -"_s << u"'false' | -"_s;
        QTest::newRow("null") << u"null"_s << u"- | -"_s << u"- | -"_s;
        QTest::newRow("array") << uR"(["a","b"])"_s << u"- | -"_s << u"- | -"_s;
        QTest::newRow("array of one number") << u"[7]"_s << u"- | -"_s << u"- | -"_s;
        QTest::newRow("object") << uR"({"answer":"a"})"_s << u"- | -"_s << u"- | -"_s;
    }
    void an_object_gives_its_answer()
    {
        QFETCH(const QString, answer);
        QFETCH(const QString, asNumeric);
        QFETCH(const QString, asOther);
        const QString reply = uR"({"answer":%1,"reasoning":"r"})"_s.arg(answer);
        // It is kept as it is, since it stands in compact form.
        QCOMPARE(interpreted(reply, u"numeric"_s), QString(asNumeric + u" | '%1'"_s.arg(reply)));
        for (const auto types = choiceTypes() + otherTypes(); const QString &type : types)
            QCOMPARE(interpreted(reply, type), QString(asOther + u" | '%1'"_s.arg(reply)));
    }

    void the_whole_object_is_kept_in_compact_form_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("kept");
        QTest::newRow("no key at all") << u" { } "_s << u"-"_s << u"{}"_s;
        QTest::newRow("no answer") << uR"({"reasoning":"r"})"_s << u"-"_s << uR"({"reasoning":"r"})"_s;
        QTest::newRow("wrong case") << uR"({"Answer":"a"})"_s << u"-"_s << uR"({"Answer":"a"})"_s;
        QTest::newRow("white space") << u"\n{ \"answer\" :\t\"a\" }\r\n"_s << u"'a'"_s << uR"({"answer":"a"})"_s;
        QTest::newRow("keys in order") << uR"({"z":1,"reasoning":"r","answer":"a","B":[ 1 , 2 ]})"_s << u"'a'"_s
                                       << uR"({"B":[1,2],"answer":"a","reasoning":"r","z":1})"_s;
        QTest::newRow("escapes") << u"{\"answer\":\"\\u00e9\\/\\u2713\"}"_s << u"'\u00e9/\u2713'"_s
                                 << u"{\"answer\":\"\u00e9/\u2713\"}"_s;
    }
    void the_whole_object_is_kept_in_compact_form()
    {
        QFETCH(const QString, reply);
        QFETCH(const QString, text);
        QFETCH(const QString, kept);
        for (const auto types = choiceTypes() + otherTypes() + QStringList{u"numeric"_s}; const QString &type : types)
            QCOMPARE(interpreted(reply, type), QString(text + u" | - | '%1'"_s.arg(kept)));
    }

    void a_reply_that_is_no_object_goes_where_its_type_wants_it_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<bool>("isNumber");
        QTest::newRow("prose") << u"I'd say yes.\n"_s << false;
        QTest::newRow("empty") << u""_s << false;
        QTest::newRow("blank") << u" "_s << false;
        QTest::newRow("array") << uR"( ["b", "a"] )"_s << false;
        QTest::newRow("string literal") << uR"("b")"_s << false;
        QTest::newRow("null literal") << u"null"_s << false;
        QTest::newRow("object not closed") << uR"({"answer":"a")"_s << false;
        QTest::newRow("object and more") << uR"({"answer":"a"} as you asked)"_s << false;
        QTest::newRow("object in a fence") << u"```json\n{\"answer\":\"a\"}\n```"_s << false;
        QTest::newRow("single quotes") << u"{'answer':'a'}"_s << false;
        QTest::newRow("number out of range in it") << u"{\"answer\":1e400}"_s << false;
        QTest::newRow("test mode") << u"test response"_s << false;
        QTest::newRow("bare number") << u"7"_s << true;
        QTest::newRow("bare number with blanks") << u" 12.50\n"_s << true;
    }
    void a_reply_that_is_no_object_goes_where_its_type_wants_it()
    {
        QFETCH(const QString, reply);
        QFETCH(const bool, isNumber);
        for (const auto types = choiceTypes(); const QString &type : types)
            QCOMPARE(interpreted(reply, type), QString(u"- | - | '%1'"_s.arg(reply)));
        for (const auto types = otherTypes(); const QString &type : types)
            QCOMPARE(interpreted(reply, type), QString(u"'%1' | - | -"_s.arg(reply)));
        const ParsedAnswer numeric = SurveyRunner::interpretAnswer(reply, u"numeric"_s);
        QCOMPARE(numeric.numericAnswer.isValid(), isNumber);
        QCOMPARE(numeric.textAnswer, isNumber ? QString() : reply);
        QCOMPARE(numeric.textAnswer.isNull(), isNumber);
        QVERIFY(numeric.jsonAnswer.isNull());
    }

    void a_text_is_a_number_where_it_converts_data()
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr double none = std::numeric_limits<double>::max();
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("number");
        QTest::newRow("whole") << u"7"_s << 7.0;
        QTest::newRow("signs") << u"+7"_s << 7.0;
        QTest::newRow("negative") << u"-0.5"_s << -0.5;
        QTest::newRow("no digit before the point") << u".5"_s << 0.5;
        QTest::newRow("exponent") << u"1.5E3"_s << 1500.0;
        QTest::newRow("leading zeros") << u"007"_s << 7.0;
        QTest::newRow("leading blanks") << u"  7"_s << 7.0;
        QTest::newRow("trailing blanks") << u"7 \t\n"_s << 7.0;
        QTest::newRow("largest") << u"1e308"_s << 1e308;
        QTest::newRow("infinity") << u"inf"_s << infinity;
        QTest::newRow("minus infinity") << u"-inf"_s << -infinity;
        QTest::newRow("not a number") << u"nan"_s << std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("too large") << u"1e400"_s << none;
        QTest::newRow("hexadecimal") << u"0x10"_s << none;
        QTest::newRow("comma") << u"12,5"_s << none;
        QTest::newRow("thousands") << u"1,000"_s << none;
        QTest::newRow("blank within") << u"1 000"_s << none;
        QTest::newRow("per cent") << u"7%"_s << none;
        QTest::newRow("word") << u"seven"_s << none;
        QTest::newRow("full stop behind a word") << u"7 of 10."_s << none;
        QTest::newRow("empty") << u""_s << none;
    }
    void a_text_is_a_number_where_it_converts()
    {
        QFETCH(const QString, text);
        QFETCH(const double, number);
        const QString encoded = QString(text).replace(u'\t', R"(\t)"_L1).replace(u'\n', R"(\n)"_L1);
        const ParsedAnswer bare = SurveyRunner::interpretAnswer(text, u"numeric"_s);
        const ParsedAnswer given = SurveyRunner::interpretAnswer(uR"({"answer":"%1"})"_s.arg(encoded), u"numeric"_s);
        for (const ParsedAnswer &answer : {bare, given}) {
            if (number == std::numeric_limits<double>::max()) {
                QVERIFY(!answer.numericAnswer.isValid());
                QCOMPARE(answer.textAnswer, text);
                continue;
            }
            QVERIFY(answer.textAnswer.isNull());
            QCOMPARE(answer.numericAnswer.typeId(), QMetaType::Double);
            const double read = answer.numericAnswer.toDouble();
            QVERIFY(std::isnan(number) ? std::isnan(read) : read == number);
        }
        QVERIFY(bare.jsonAnswer.isNull());
        QVERIFY(!given.jsonAnswer.isNull());
    }

    void an_object_may_be_1024_levels_deep()
    {
        QCOMPARE(interpreted(nestedObject(1024), u"likert"_s), QString(u"- | - | '%1'"_s.arg(nestedObject(1024))));
        QCOMPARE(interpreted(nestedObject(1024), u"numeric"_s), QString(u"- | - | '%1'"_s.arg(nestedObject(1024))));
        // Deeper it is no object any more, but a text like any other.
        QCOMPARE(interpreted(nestedObject(1025), u"likert"_s), QString(u"- | - | '%1'"_s.arg(nestedObject(1025))));
        QCOMPARE(interpreted(nestedObject(1025), u"numeric"_s), QString(u"'%1' | - | -"_s.arg(nestedObject(1025))));
        QCOMPARE(interpreted(nestedObject(100'000), u"essay"_s), QString(u"'%1' | - | -"_s.arg(nestedObject(100'000))));
    }

    void a_reply_of_a_megabyte_is_kept_whole()
    {
        const QString megabyte(1 << 20, u'x');
        QCOMPARE(interpreted(megabyte, u"text"_s), QString(u"'%1' | - | -"_s.arg(megabyte)));
        QCOMPARE(interpreted(megabyte, u"ranking"_s), QString(u"- | - | '%1'"_s.arg(megabyte)));
        QCOMPARE(interpreted(megabyte, u"numeric"_s), QString(u"'%1' | - | -"_s.arg(megabyte)));
        const QString object = uR"({"answer":"%1"})"_s.arg(megabyte);
        QCOMPARE(interpreted(object, u"likert"_s), QString(u"'%1' | - | '%2'"_s.arg(megabyte, object)));
    }

    void one_column_is_shown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariant>("number");
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("expected");
        const QString none;
        QTest::newRow("nothing") << none << QVariant() << none << u""_s;
        QTest::newRow("text first") << u"t"_s << QVariant(7.0) << u"{}"_s << u"t"_s;
        QTest::newRow("a blank is a text") << u" "_s << QVariant(7.0) << u"{}"_s << u" "_s;
        QTest::newRow("number next") << none << QVariant(7.0) << u"{}"_s << u"7"_s;
        QTest::newRow("an empty text is none") << u""_s << QVariant(7.0) << u"{}"_s << u"7"_s;
        QTest::newRow("zero is a number") << none << QVariant(0.0) << u"{}"_s << u"0"_s;
        QTest::newRow("six digits") << none << QVariant(2.71728182) << u"{}"_s << u"2.71728"_s;
        QTest::newRow("no point without need") << none << QVariant(42.0) << none << u"42"_s;
        QTest::newRow("seven digits") << none << QVariant(1234567.0) << none << u"1.23457e+06"_s;
        QTest::newRow("below zero") << none << QVariant(-0.5) << none << u"-0.5"_s;
        QTest::newRow("very small") << none << QVariant(1.2e-07) << none << u"1.2e-07"_s;
        QTest::newRow("infinity") << none << QVariant(std::numeric_limits<double>::infinity()) << none << u"inf"_s;
        QTest::newRow("integer") << none << QVariant(123456789LL) << none << u"1.23457e+08"_s;
        QTest::newRow("a word as number") << none << QVariant(u"x"_s) << u"{}"_s << u"0"_s;
        QTest::newRow("number that is NULL") << u""_s << QVariant(QMetaType(QMetaType::Double)) << u"{}"_s << u"{}"_s;
        QTest::newRow("JSON as it is") << none << QVariant() << u" {\"b\" : 1 } "_s << u" {\"b\" : 1 } "_s;
        QTest::newRow("prose for JSON") << none << QVariant() << u"no JSON"_s << u"no JSON"_s;
    }
    void one_column_is_shown()
    {
        QFETCH(const QString, text);
        QFETCH(const QVariant, number);
        QFETCH(const QString, json);
        QTEST(displayValue({.textAnswer = text, .numericAnswer = number, .jsonAnswer = json}), "expected");
    }

    void reasoning_comes_from_the_object_alone_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("expected");
        QTest::newRow("string") << uR"({"answer":"a","reasoning":"r"})"_s << u"r"_s;
        QTest::newRow("white space") << u" {\n\"reasoning\" : \"r \\n s\" }\n"_s << u"r \n s"_s;
        QTest::newRow("escaped letter") << uR"({"reasoning":"caf\u00e9"})"_s << u"caf\u00e9"_s;
        QTest::newRow("letters beyond ASCII") << u"{\"reasoning\":\"\u03c0\U0001f41d\"}"_s << u"\u03c0\U0001f41d"_s;
        QTest::newRow("text behind the object") << uR"({"reasoning":"r"} indeed)"_s << u""_s;
        QTest::newRow("empty") << uR"({"reasoning":""})"_s << u""_s;
        QTest::newRow("missing") << uR"({"answer":"a"})"_s << u""_s;
        QTest::newRow("wrong case") << uR"({"Reasoning":"r"})"_s << u""_s;
        QTest::newRow("number") << uR"({"reasoning":7})"_s << u""_s;
        QTest::newRow("array") << uR"({"reasoning":["r"]})"_s << u""_s;
        QTest::newRow("null") << uR"({"reasoning":null})"_s << u""_s;
        QTest::newRow("within the answer") << uR"({"answer":{"reasoning":"r"}})"_s << u""_s;
        QTest::newRow("in an array") << uR"([{"reasoning":"r"}])"_s << u""_s;
        QTest::newRow("not closed") << uR"({"reasoning":"r")"_s << u""_s;
        QTest::newRow("prose") << u"reasoning"_s << u""_s;
        QTest::newRow("NULL") << QString() << u""_s;
    }
    void reasoning_comes_from_the_object_alone()
    {
        QFETCH(const QString, json);
        QFETCH(const QString, expected);
        // Whatever is shown as the answer.
        QCOMPARE(reasoning({.textAnswer = {}, .numericAnswer = {}, .jsonAnswer = json}), expected);
        QCOMPARE(reasoning({.textAnswer = u"t"_s, .numericAnswer = 7.0, .jsonAnswer = json}), expected);
    }
};

ORRINET_TEST(TestAnswers)
#include "tst_answers.moc"

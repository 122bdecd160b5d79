#include "survey/answers.h"
#include "survey/surveyrunner.h"

#include <QJsonDocument>
#include <QJsonObject>
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

/// The three columns in one line; what is null shows as "-".
static QString shown(const ParsedAnswer &answer)
{
    const auto text = [](const QString &column) { return column.isNull() ? u"-"_s : QString(u'\'' + column + u'\''); };
    QString number = u"-"_s;
    if (answer.numericAnswer.isValid())
        number = QString::fromLatin1(answer.numericAnswer.typeName()) + u' ' +
                 QString::number(answer.numericAnswer.toDouble(), 'g', 17);
    return QStringList{text(answer.textAnswer), number, text(answer.jsonAnswer)}.join(u" | "_s);
}

static QString read(const QString &reply, const QString &type)
{
    return shown(SurveyRunner::interpretAnswer(reply, type));
}

static QString nested(int levels)
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
        QCOMPARE(read(reply, u"text"_s), QString(u"'%1' | - | -"_s.arg(reply)));
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
        // As JSON is written, a number has no more digits than it needs.
        const QString kept = QString::fromUtf8(QJsonDocument::fromJson(reply.toUtf8()).toJson(QJsonDocument::Compact));
        QCOMPARE(read(reply, u"numeric"_s), QString(asNumeric + u" | '%1'"_s.arg(kept)));
        for (const auto types = choiceTypes() + otherTypes(); const QString &type : types)
            QCOMPARE(read(reply, type), QString(asOther + u" | '%1'"_s.arg(kept)));
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
            QCOMPARE(read(reply, type), QString(text + u" | - | '%1'"_s.arg(kept)));
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
            QCOMPARE(read(reply, type), QString(u"- | - | '%1'"_s.arg(reply)));
        for (const auto types = otherTypes(); const QString &type : types)
            QCOMPARE(read(reply, type), QString(u"'%1' | - | -"_s.arg(reply)));
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
        QCOMPARE(read(nested(1024), u"likert"_s), QString(u"- | - | '%1'"_s.arg(nested(1024))));
        QCOMPARE(read(nested(1024), u"numeric"_s), QString(u"- | - | '%1'"_s.arg(nested(1024))));
        // Deeper it is no object any more, but a text like any other.
        QCOMPARE(read(nested(1025), u"likert"_s), QString(u"- | - | '%1'"_s.arg(nested(1025))));
        QCOMPARE(read(nested(1025), u"numeric"_s), QString(u"'%1' | - | -"_s.arg(nested(1025))));
        QCOMPARE(read(nested(100'000), u"essay"_s), QString(u"'%1' | - | -"_s.arg(nested(100'000))));
    }

    void a_reply_of_a_megabyte_is_kept_whole()
    {
        const QString megabyte(1 << 20, u'x');
        QCOMPARE(read(megabyte, u"text"_s), QString(u"'%1' | - | -"_s.arg(megabyte)));
        QCOMPARE(read(megabyte, u"ranking"_s), QString(u"- | - | '%1'"_s.arg(megabyte)));
        QCOMPARE(read(megabyte, u"numeric"_s), QString(u"'%1' | - | -"_s.arg(megabyte)));
        const QString object = uR"({"answer":"%1"})"_s.arg(megabyte);
        QCOMPARE(read(object, u"likert"_s), QString(u"'%1' | - | '%2'"_s.arg(megabyte, object)));
    }
};

QTEST_GUILESS_MAIN(TestAnswers)
#include "tst_answers.moc"

// Tokens and money from characters, by assumption or by a record.

#include "study/check/tokens.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using study::AnswerSize;
using study::assumedRates;
using study::Outgrown;
using study::PairMap;
using study::Project;
using study::Range;
using study::RateMeter;
using study::RecordedExchange;
using study::TokenRates;
using study::Tokens;
using study::Volume;

namespace {

/// A request with these many characters in two messages, and its reply.
RecordedExchange exchange(qsizetype asked, qint64 tokensIn, qsizetype answered, qint64 tokensOut)
{
    const QJsonArray messages{QJsonObject{{u"role"_s, u"system"_s}, {u"content"_s, u"1234"_s}},
                              QJsonObject{{u"role"_s, u"user"_s}, {u"content"_s, QString(asked - 4, u'x')}}};
    const QJsonObject message{{u"content"_s, QString(answered, u'x')}};
    const QJsonObject reply{{u"choices"_s, QJsonArray{QJsonObject{{u"message"_s, message}}}}};
    RecordedExchange exchange;
    exchange.status = 200;
    exchange.request = QJsonDocument(QJsonObject{{u"messages"_s, messages}}).toJson();
    exchange.reply = QJsonDocument(reply).toJson();
    exchange.tokensIn = tokensIn;
    exchange.tokensOut = tokensOut;
    return exchange;
}

} // namespace

class TestCheckTokens : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_assumed_rate_is_a_quarter_wide_on_each_side()
    {
        const TokenRates rates = assumedRates(4);
        QCOMPARE(rates.in, (Range{0.1875, 0.25, 0.3125}));
        QCOMPARE(rates.out, rates.in);
        QCOMPARE(rates.measuredIn + rates.measuredOut, 0);
    }

    void each_part_has_its_characters_and_each_message_four_tokens_more()
    {
        const TokenRates rates{.in = {0.25, 0.5, 1}, .out = {1, 2, 3}};
        const Tokens tokens = tokensOf({.requests = 2,
                                        .systemMessages = 1,
                                        .historyMessages = 6,
                                        .systemCharacters = 40,
                                        .historyCharacters = {80, 120, 160},
                                        .questionCharacters = 20,
                                        .formatCharacters = 400,
                                        .replyCharacters = {10, 20, 30}},
                                       rates);
        QCOMPARE(tokens.system, (Range{14, 24, 44}));
        QCOMPARE(tokens.history, (Range{44, 84, 184}));
        QCOMPARE(tokens.questions, (Range{13, 18, 28}));
        QCOMPARE(tokens.formats, (Range{100, 200, 400}));
        QCOMPARE(tokens.in(), (Range{171, 326, 656}));
        QCOMPARE(tokens.out, (Range{10, 40, 90}));
        const Range cost = costOf(tokens, {.in = 2, .out = 10});
        QCOMPARE(cost.low, (171 * 2 + 10 * 10) / 1e6);
        QCOMPARE(cost.high, (656 * 2 + 90 * 10) / 1e6);
    }

    void a_rate_is_measured_at_what_an_exchange_used()
    {
        RateMeter meter;
        meter.add(exchange(100, 58, 40, 10)); // two messages: 50 tokens for 100 characters
        const TokenRates rates = meter.rates(4);
        QCOMPARE(rates.in, Range::exactly(0.5));
        QCOMPARE(rates.out, Range::exactly(0.25));
        QCOMPARE(rates.measuredIn, 1);
        QCOMPARE(rates.measuredOut, 1);
    }

    void a_format_is_part_of_what_is_measured()
    {
        RecordedExchange formatted = exchange(100, 58, 40, 10);
        QJsonObject body = QJsonDocument::fromJson(formatted.request).object();
        body["tools"_L1] = QJsonArray{u"12345678"_s};                   // 12 characters
        body["tool_choice"_L1] = QJsonObject{{u"a"_s, u"12"_s}};        // 10
        body["response_format"_L1] = QJsonObject{{u"b"_s, u"12345"_s}}; // 13
        body["model"_L1] = u"not counted"_s;
        formatted.request = QJsonDocument(body).toJson();
        RateMeter meter;
        meter.add(formatted);
        QCOMPARE(meter.rates(4).in, Range::exactly(50.0 / 135));
    }

    void many_exchanges_give_their_whole_and_the_tenths_at_the_ends()
    {
        RateMeter meter;
        for (int number = 1; number <= 21; ++number)
            meter.add(exchange(100, 8 + number, 10, number));
        const TokenRates rates = meter.rates(4);
        QCOMPARE(rates.in, (Range{0.03, 0.11, 0.19}));
        QCOMPARE(rates.out, (Range{0.3, 1.1, 1.9}));
        QCOMPARE(rates.measuredIn, 21);
    }

    void what_tells_nothing_is_not_measured_data()
    {
        QTest::addColumn<RecordedExchange>("told");
        RecordedExchange refused = exchange(100, 58, 40, 10);
        refused.status = 429;
        QTest::newRow("refused") << refused;
        QTest::newRow("no usage") << exchange(100, 0, 40, 0);
        QTest::newRow("fewer tokens than its messages") << exchange(100, 8, 0, 5);
        RecordedExchange bare = exchange(100, 58, 0, 10);
        bare.request = "no JSON";
        QTest::newRow("no messages") << bare;
    }
    void what_tells_nothing_is_not_measured()
    {
        QFETCH(const RecordedExchange, told);
        RateMeter meter;
        meter.add(told);
        QCOMPARE(meter.rates(5).in, assumedRates(5).in);
        QCOMPARE(meter.rates(5).out, assumedRates(5).out);
        QCOMPARE(meter.rates(5).measuredIn + meter.rates(5).measuredOut, 0);
    }

    void requests_beyond_a_context_are_counted_with_their_answers_data()
    {
        QTest::addColumn<qint64>("context");
        QTest::addColumn<qint64>("middle");
        QTest::addColumn<qint64>("high");
        QTest::addColumn<int>("first");
        // The requests have 14 or 15 and 52 or 54 tokens: 4 for a message, a question of 4 or 24, an answer of 6 or 7,
        // which is replayed once.
        QTest::newRow("not looked at") << 0LL << 0LL << 0LL << 0;
        QTest::newRow("room for all") << 54LL << 0LL << 0LL << 0;
        QTest::newRow("room for all but the longest") << 53LL << 0LL << 1LL << 2;
        QTest::newRow("all but room") << 51LL << 1LL << 1LL << 2;
        QTest::newRow("room for the first at most") << 14LL << 1LL << 2LL << 1;
        QTest::newRow("no room") << 1LL << 2LL << 2LL << 1;
    }
    void requests_beyond_a_context_are_counted_with_their_answers()
    {
        QFETCH(const qint64, context);
        Project project;
        study::Persona persona;
        persona.entry.uuid = u"a"_s;
        project.personas << persona;
        for (const int length : {4, 24}) {
            study::Question question;
            question.entry.prompt = QString(length, u'x');
            question.number = int(project.questions.size()) + 1;
            project.questions << question;
        }
        const Range size{6, 6, 7};
        const Outgrown found =
            outgrown(project, PairMap(project), QList<AnswerSize>(2, {.replayed = size, .replied = size}),
                     {.in = Range::exactly(1), .out = Range::exactly(1)}, context);
        QCOMPARE(found.tokens, context);
        QTEST(found.middle, "middle");
        QTEST(found.high, "high");
        QTEST(found.firstQuestion, "first");
    }
};

ORRINET_TEST(TestCheckTokens)
#include "tst_checktokens.moc"

#include "study/check/tokens.h"

#include "survey/requestassembly.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

TokenRates assumedRates(double charactersPerToken)
{
    static constexpr double doubt = 0.25;
    const double rate = 1 / charactersPerToken;
    const Range range{.low = rate * (1 - doubt), .middle = rate, .high = rate * (1 + doubt)};
    return {.in = range, .out = range};
}

void RateMeter::Side::add(double moreTokens, double moreCharacters)
{
    if (moreTokens <= 0 || moreCharacters <= 0)
        return;
    tokens += moreTokens;
    characters += moreCharacters;
    rates << moreTokens / moreCharacters;
}

Range RateMeter::Side::rate() const
{
    QList<double> sorted = rates;
    std::sort(sorted.begin(), sorted.end());
    const qsizetype last = sorted.size() - 1;
    const double middle = tokens / characters;
    return {.low = std::min(sorted.at(last / 10), middle),
            .middle = middle,
            .high = std::max(sorted.at(last - (last / 10)), middle)};
}

void RateMeter::add(const RecordedExchange &exchange)
{
    if (!exchange.succeeded())
        return;
    const QJsonObject body = QJsonDocument::fromJson(exchange.request).object();
    const QJsonArray messages = body.value("messages"_L1).toArray();
    double characters = formatCharacters({.tools = body.value("tools"_L1).toArray(),
                                          .toolChoice = body.value("tool_choice"_L1).toObject(),
                                          .responseFormat = body.value("response_format"_L1).toObject()});
    for (const QJsonValueConstRef message : messages)
        characters += double(message["content"_L1].toString().size());
    in.add(double(exchange.tokensIn) - (tokensPerMessage * double(messages.size())), characters);
    out.add(double(exchange.tokensOut), double(exchange.answerText().size()));
}

TokenRates RateMeter::rates(double charactersPerToken) const
{
    TokenRates rates = assumedRates(charactersPerToken);
    if (!in.rates.isEmpty())
        rates.in = in.rate();
    if (!out.rates.isEmpty())
        rates.out = out.rate();
    rates.measuredIn = int(in.rates.size());
    rates.measuredOut = int(out.rates.size());
    return rates;
}

static Range frames(qint64 messages)
{
    return Range::exactly(double(messages) * tokensPerMessage);
}

Tokens tokensOf(const Volume &volume, const TokenRates &rates)
{
    return {.system = (Range::exactly(volume.systemCharacters) * rates.in) + frames(volume.systemMessages),
            .history = (volume.historyCharacters * rates.in) + frames(volume.historyMessages),
            .questions = (Range::exactly(volume.questionCharacters) * rates.in) + frames(volume.requests),
            .formats = Range::exactly(volume.formatCharacters) * rates.in,
            .out = volume.replyCharacters * rates.out};
}

Range costOf(const Tokens &tokens, const Prices &prices)
{
    static constexpr double million = 1e6;
    return (tokens.in() * Range::exactly(prices.in / million)) + (tokens.out * Range::exactly(prices.out / million));
}

Outgrown outgrown(const Project &project, const PairMap &pairs, const QList<AnswerSize> &sizes, const TokenRates &rates,
                  qint64 context)
{
    Outgrown found{.tokens = context};
    if (context <= 0)
        return found;
    forEachRequest(project, pairs, sizes, [&](int /*persona*/, int question, const Volume &request) {
        const Tokens tokens = tokensOf(request, rates);
        const Range whole = tokens.in() + tokens.out;
        found.middle += whole.middle > double(context) ? 1 : 0;
        if (whole.high <= double(context))
            return;
        ++found.high;
        const int number = project.questions.at(question).number;
        found.firstQuestion = found.firstQuestion == 0 ? number : std::min(found.firstQuestion, number);
    });
    return found;
}

} // namespace study

#pragma once

#include "study/check/requests.h"
#include "study/record.h"

// Tokens and money from characters.

namespace study {

/// What a model adds to each message: the marks of its beginning and end, and the role.
inline constexpr double tokensPerMessage = 4;
/// Of English text; less of other languages.
inline constexpr double usualCharactersPerToken = 4;

/// How many tokens a character makes.
struct TokenRates
{
    Range in = {};
    Range out = {};
    int measuredIn = 0; ///< exchanges that the rate is measured at; 0 where it is assumed
    int measuredOut = 0;
};

/// The assumed rates: in the middle one token for so many characters, a quarter less and more at the ends.
TokenRates assumedRates(double charactersPerToken);

/// Measures the rates at exchanges: in the middle all their tokens by all their characters, at the ends the exchanges
/// that a tenth lie below and above of. Requests are counted as the program made them, like those to come; what a
/// bridge adds to them, and reasoning that is not shown, is then in the rate.
class RateMeter
{
public:
    void add(const RecordedExchange &exchange);
    /// The assumed ones where no exchange tells its usage.
    TokenRates rates(double charactersPerToken) const;

private:
    struct Side
    {
        double tokens = 0;
        double characters = 0;
        QList<double> rates; ///< of each exchange

        void add(double moreTokens, double moreCharacters);
        Range rate() const;
    };

    Side in;
    Side out;
};

struct Tokens
{
    Range system = {};
    Range history = {};
    Range questions = {};
    Range formats = {};
    Range out = {};

    Range in() const { return system + history + questions + formats; }
};

Tokens tokensOf(const Volume &volume, const TokenRates &rates);

/// For a million tokens each, in any currency.
struct Prices
{
    double in = 0;
    double out = 0;
};

Range costOf(const Tokens &tokens, const Prices &prices);

/// How many requests are larger than a context, the answer included.
struct Outgrown
{
    qint64 tokens = 0;     ///< of the context; 0 where none is given
    qint64 middle = 0;     ///< requests, by the middle estimate
    qint64 high = 0;       ///< requests, by the high one
    int firstQuestion = 0; ///< the number of the first question with one by the high estimate, 0 where there is none
};

Outgrown outgrown(const Project &project, const PairMap &pairs, const QList<AnswerSize> &sizes, const TokenRates &rates,
                  qint64 context);

} // namespace study

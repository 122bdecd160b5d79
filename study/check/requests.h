#pragma once

#include "study/check/answersizes.h"

#include <QBitArray>

#include <functional>

struct AnswerFormat;

// What the requests to come will hold, counted and not made: a survey of 2,000 personas and 50 questions makes some
// gigabytes of them.

namespace study {

/// What a request holds, or several. Only the history and the replies are estimates, as they hold answers to come.
struct Volume
{
    qint64 requests = 0; ///< each has one message with its question
    qint64 systemMessages = 0;
    qint64 historyMessages = 0;
    double systemCharacters = 0;
    Range historyCharacters = {};
    double questionCharacters = 0;
    double formatCharacters = 0; ///< of the tools and the response format as compact JSON
    Range replyCharacters = {};  ///< of what comes back

    Volume &operator+=(const Volume &other);
    bool operator==(const Volume &) const = default;
};

/// The characters of the format of an answer.
double formatCharacters(const AnswerFormat &format);

/// The pairs that have an answer, persona by persona.
class PairMap
{
public:
    explicit PairMap(const Project &project);

    bool isAnswered(int persona, int question) const { return answered.at((persona * questions) + question); }
    bool hasOpen(int persona) const { return openOfPersona.at(persona) > 0; }
    int openOf(int question) const { return openOfQuestion.at(question); }

private:
    qsizetype questions;
    QBitArray answered;
    QList<int> openOfPersona;
    QList<int> openOfQuestion;
};

/// A request to come, and its pair.
using TakeRequest = std::function<void(int persona, int question, const Volume &request)>;

/// Gives each request to come in the order of a run in which none fails: the history of a persona grows by its
/// answers, those to adjudicated questions excepted.
void forEachRequest(const Project &project, const PairMap &pairs, const QList<AnswerSize> &sizes,
                    const TakeRequest &take);

/// The pairs of a persona, of a question or of all, and the requests to come for them.
struct PairCount
{
    qint64 answered = 0;
    qint64 open = 0;
    Volume volume;
};

struct RunCount
{
    PairCount all;
    PairCount adjudicated; ///< those of all that another model is asked
    QList<PairCount> byPersona;
    QList<PairCount> byQuestion;
};

RunCount countRun(const Project &project, const PairMap &pairs, const QList<AnswerSize> &sizes);

} // namespace study

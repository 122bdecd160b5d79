#pragma once

#include "study/check/range.h"
#include "study/project.h"

#include <QList>

// How long the answers to come will be. What is counted are UTF-16 units, called characters.

namespace study {

/// What the length of the answers to come is taken from.
enum class Basis {
    SameQuestion, ///< the answers that the question has
    SameType,     ///< those to questions of the same type that ask for reasoning alike
    Default,      ///< a rule for the type
};

/// The length of an answer to come.
struct AnswerSize
{
    Range replayed = {}; ///< what later requests repeat of it
    Range replied = {};  ///< the whole reply, with its reasoning and its JSON
    Basis basis = Basis::Default;
};

/// The range of a sample: the lower quartile, the mean and the upper quartile, or the mean in place of a quartile that
/// lies on its other side. Of an empty sample it is 0.
Range sampleRange(QList<qsizetype> sample);

/// One answer as long as there are answers: of a question's own if there are any, else of its type, else the default.
QList<AnswerSize> answerSizes(const Project &project);

/// The length of an answer that nothing is known of. A choice is as long as its labels let it be: one of them, half of
/// them (one to all) for several, all for a ranking. A number is not replayed. A text, and a choice that has no labels,
/// has 100, 400 or 1,200 characters, and reasoning that is demanded 80, 200 or 500.
AnswerSize defaultSize(const Question &question);

/// "same question", "same type", "default".
QString shownName(Basis basis);

} // namespace study

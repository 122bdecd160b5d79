#include "questions/answertypes.h"

#include <algorithm>

using namespace Qt::StringLiterals;

QStringList storedAnswerTypes()
{
    return {AnswerType::singleChoice.toString(), AnswerType::multiChoice.toString(), AnswerType::text.toString(),
            AnswerType::numeric.toString(),      AnswerType::likert.toString(),      AnswerType::ranking.toString()};
}

QStringList shownAnswerTypes()
{
    return {u"Option"_s, u"Multiple Choice"_s, u"Text"_s, u"Numeric"_s, u"Likert Scale"_s, u"Rank Choices"_s};
}

int answerTypeIndex(const QString &stored)
{
    return static_cast<int>(std::max(qsizetype(0), storedAnswerTypes().indexOf(stored)));
}

#include "study/told.h"

#include "study/match.h"
#include "study/project.h"

#include <algorithm>
#include <iterator>

namespace study {

static bool isOfWord(QChar character)
{
    const QChar::Script script = character.script();
    return character.isDigit() ||
           (character.isLetter() &&
            (script == QChar::Script_Latin || script == QChar::Script_Greek || script == QChar::Script_Cyrillic));
}

bool hasWords(const QString &text, const QString &words)
{
    if (words.isEmpty())
        return true;
    for (qsizetype at = text.indexOf(words); at >= 0; at = text.indexOf(words, at + 1)) {
        const qsizetype end = at + words.size();
        const bool goesOnBefore = at > 0 && isOfWord(text.at(at - 1)) && isOfWord(words.front());
        const bool goesOnBehind = end < text.size() && isOfWord(text.at(end)) && isOfWord(words.back());
        if (!goesOnBefore && !goesOnBehind)
            return true;
    }
    return false;
}

static bool isWholeNumber(const QString &label)
{
    bool isNumber = false;
    label.trimmed().toInt(&isNumber);
    return isNumber;
}

QStringList untoldLabels(const Question &question, const Boilerplate &boilerplate)
{
    if (question.kind == Kind::SingleChoice || !question.hasList())
        return {};
    const QString told =
        caselessText(question.entry.prompt + u'\n' + boilerplate.preamble + u'\n' + boilerplate.postamble);
    const auto isUntold = [&told](const QString &label) {
        const QString words = caselessText(label);
        return !words.isEmpty() && !hasWords(told, words);
    };
    const QStringList &labels = question.labels;
    const bool isScale = question.kind == Kind::Likert && std::all_of(labels.begin(), labels.end(), isWholeNumber);
    if (isScale && !isUntold(labels.constFirst()) && !isUntold(labels.constLast()))
        return {};
    QStringList untold;
    std::copy_if(labels.begin(), labels.end(), std::back_inserter(untold), isUntold);
    return untold;
}

} // namespace study

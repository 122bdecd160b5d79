#pragma once

#include <QList>
#include <QStringList>

// What free texts are made of.

namespace study {

/// The words of a text as Unicode cuts them, in lower case: what has a letter or a digit. "Don't" is one, "tea-time"
/// two, and where a script writes no spaces a character may be one.
QStringList wordsOf(const QString &text);

struct FrequentWord
{
    QString word;
    int texts = 0; ///< in how many it occurs
    int times = 0; ///< how often in all
};
/// The words that occur in most texts, at most `most` of them; of those in as many the one that occurs more often
/// comes first, then by the alphabet. Words of a single Latin letter or digit are left out, and the articles, pronouns,
/// prepositions, conjunctions and auxiliary verbs of English that are listed in words.cpp.
QList<FrequentWord> frequentWords(const QStringList &texts, int most);

/// The length of a text in characters, of which one beyond the first 65,536 counts as one too.
int characterCount(const QString &text);

} // namespace study

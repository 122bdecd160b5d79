#include "study/report/phrases.h"

#include "study/match.h"
#include "study/report/wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

const QStringList &refusals()
{
    static const QStringList phrases{u"as an AI"_s,
                                     u"as a language model"_s,
                                     u"as a large language model"_s,
                                     u"I am an AI"_s,
                                     u"I'm an AI"_s,
                                     u"I am just an AI"_s,
                                     u"I'm just an AI"_s,
                                     u"I don't have personal"_s,
                                     u"I do not have personal"_s,
                                     u"I cannot answer"_s,
                                     u"I can't answer"_s,
                                     u"I won't answer"_s,
                                     u"I decline to"_s,
                                     u"I refuse to"_s,
                                     u"I prefer not to answer"_s,
                                     u"I'd rather not answer"_s,
                                     u"I am unable to"_s,
                                     u"I'm unable to"_s,
                                     u"I am not able to"_s,
                                     u"I'm not able to"_s,
                                     u"I cannot assist"_s,
                                     u"I can't assist"_s,
                                     u"I cannot help with"_s,
                                     u"I can't help with"_s,
                                     u"I'm sorry, but"_s,
                                     u"I am sorry, but"_s};
    return phrases;
}

const QStringList &hedges()
{
    static const QStringList phrases{u"it depends"_s,    u"hard to say"_s,           u"difficult to say"_s,
                                     u"I'm not sure"_s,  u"I am not sure"_s,         u"I don't know"_s,
                                     u"I do not know"_s, u"on the one hand"_s,       u"on one hand"_s,
                                     u"both sides"_s,    u"to some extent"_s,        u"pros and cons"_s,
                                     u"it varies"_s,     u"no strong opinion"_s,     u"perhaps"_s,
                                     u"maybe"_s,         u"neither here nor there"_s};
    return phrases;
}

static QString searchable(const QString &text)
{
    return text.first(std::min(text.size(), searchedLength)).toCaseFolded().replace(QChar(0x2019), u'\'');
}

/// Where whole words begin in a text, -1 where they don't occur. Both are folded.
static qsizetype placeOf(const QString &words, const QString &text)
{
    const auto isPart = [&text](qsizetype at) { return at >= 0 && at < text.size() && text.at(at).isLetterOrNumber(); };
    const bool beginsAsWord = !words.isEmpty() && words.front().isLetterOrNumber();
    const bool endsAsWord = !words.isEmpty() && words.back().isLetterOrNumber();
    for (qsizetype at = text.indexOf(words); at >= 0 && !words.isEmpty(); at = text.indexOf(words, at + 1)) {
        if ((!beginsAsWord || !isPart(at - 1)) && (!endsAsWord || !isPart(at + words.size())))
            return at;
    }
    return -1;
}

/// From the folded text, which is what was searched: folding may change lengths.
static Found foundAt(const QString &phrase, const QString &text, const QString &folded, qsizetype at)
{
    constexpr qsizetype around = 90;
    const QString &source = folded.size() <= text.size() ? text : folded;
    const qsizetype from = std::max(qsizetype(0), at - around);
    const qsizetype end = std::min(source.size(), at + phrase.size() + around);
    QString excerpt = line(source.sliced(from, end - from), 300);
    if (from > 0)
        excerpt.prepend(u'\u2026');
    if (end < source.size())
        excerpt.append(u'\u2026');
    return {phrase, excerpt};
}

std::optional<Found> findPhrase(const QString &text, const QStringList &phrases)
{
    const QString folded = searchable(text);
    for (const QString &phrase : phrases) {
        if (const qsizetype at = placeOf(phrase.toCaseFolded(), folded); at >= 0)
            return foundAt(phrase, text, folded, at);
    }
    return std::nullopt;
}

std::optional<Found> findOtherLabel(const QString &text, const QStringList &labels, int chosen)
{
    constexpr qsizetype shortest = 3;
    const QString folded = searchable(text);
    const QString own = caselessText(labels.at(chosen));
    if (folded.isEmpty() || placeOf(own, folded) >= 0)
        return std::nullopt;
    for (const QString &label : labels) {
        const QString other = caselessText(label);
        if (other.size() < shortest || placeOf(other, own) >= 0)
            continue;
        if (const qsizetype at = placeOf(other, folded); at >= 0)
            return foundAt(label, text, folded, at);
    }
    return std::nullopt;
}

} // namespace study

#include "study/statistics/words.h"

#include <QHash>
#include <QSet>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace study {

static bool hasLetterOrDigit(QStringView piece)
{
    for (qsizetype at = 0; at < piece.size(); ++at) {
        const bool isPair =
            piece.at(at).isHighSurrogate() && at + 1 < piece.size() && piece.at(at + 1).isLowSurrogate();
        const char32_t character =
            isPair ? QChar::surrogateToUcs4(piece.at(at), piece.at(at + 1)) : char32_t(piece.at(at).unicode());
        if (QChar::isLetterOrNumber(character))
            return true;
    }
    return false;
}

QStringList wordsOf(const QString &text)
{
    QStringList words;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    for (qsizetype from = 0, to = finder.toNextBoundary(); to > from; from = to, to = finder.toNextBoundary()) {
        const QStringView piece = QStringView(text).sliced(from, to - from);
        if (hasLetterOrDigit(piece))
            words << piece.toString().toCaseFolded().replace(u'\u2019', u'\'');
    }
    return words;
}

static const QSet<QString> &wordsLeftOut()
{
    static const QSet<QString> words = [] {
        const QStringList list =
            u"a about after again all also although always am an and another any are aren't around as at be because "
            u"been "
            "before being but by can can't cannot could couldn't did didn't do does doesn't doing don't down during "
            "each "
            "either else even ever every few for from had hadn't has hasn't have haven't having he he'd he'll he's her "
            "here hers herself him himself his how however i i'd i'll i'm i've if in into is isn't it it's its itself "
            "just least less let's like many may me might mine more most much must my myself neither no nor not of off "
            "often on one only onto or other others our ours ourselves out over own per quite rather really same shall "
            "she she'd she'll she's should shouldn't since so some still such than that that's the their theirs them "
            "themselves then there there's these they they'd they'll they're they've this those though through to too "
            "towards under until up upon us very was wasn't we we'd we'll we're we've were weren't what when where "
            "whether which while who whom whose why will with within without won't would wouldn't yet you you'd you'll "
            "you're you've your yours yourself yourselves"_s.split(u' ');
        return QSet<QString>(list.begin(), list.end());
    }();
    return words;
}

static bool isLeftOut(const QString &word)
{
    return (word.size() == 1 && word.at(0).unicode() < 0x250) || wordsLeftOut().contains(word);
}

QList<FrequentWord> frequentWords(const QStringList &texts, int most)
{
    QHash<QString, FrequentWord> found;
    for (const QString &text : texts) {
        const QStringList words = wordsOf(text);
        for (const QString &word : words) {
            FrequentWord &entry = found[word];
            entry.word = word;
            ++entry.times;
        }
        for (const QSet<QString> different(words.begin(), words.end()); const QString &word : different)
            ++found[word].texts;
    }
    found.removeIf([](QHash<QString, FrequentWord>::iterator entry) { return isLeftOut(entry.key()); });
    QList<FrequentWord> sorted = found.values();
    std::sort(sorted.begin(), sorted.end(), [](const FrequentWord &a, const FrequentWord &b) {
        return std::tie(b.texts, b.times, a.word) < std::tie(a.texts, a.times, b.word);
    });
    return sorted.first(std::clamp<qsizetype>(most, 0, sorted.size()));
}

int characterCount(const QString &text)
{
    return int(text.size() - std::count_if(text.begin(), text.end(), [](QChar unit) { return unit.isLowSurrogate(); }));
}

} // namespace study

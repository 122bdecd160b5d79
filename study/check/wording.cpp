#include "study/check/wording.h"

using namespace Qt::StringLiterals;

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

QString inQuotes(const QString &text)
{
    static constexpr qsizetype most = 40;
    QString shown = text.simplified();
    if (shown.size() > most) {
        shown.truncate(most - 1);
        if (shown.back().isHighSurrogate())
            shown.chop(1);
        shown += u'\u2026';
    }
    for (QChar &character : shown) {
        if (!character.isPrint() && !character.isSurrogate())
            character = QChar::ReplacementCharacter;
    }
    return u'"' + shown + u'"';
}

QString listed(const QStringList &texts)
{
    static constexpr qsizetype most = 3;
    QStringList named;
    for (const QString &text : texts.first(std::min(most, texts.size())))
        named << inQuotes(text);
    const QString list = named.join(", "_L1);
    return texts.size() > most ? u"%1 and %2 more"_s.arg(list).arg(texts.size() - most) : list;
}

} // namespace study

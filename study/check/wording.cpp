#include "study/check/wording.h"

using namespace Qt::StringLiterals;

namespace study {

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
    for (const auto all = texts.first(std::min(most, texts.size())); const QString &text : all)
        named << inQuotes(text);
    const QString list = named.join(", "_L1);
    return texts.size() > most ? u"%1 and %2 more"_s.arg(list).arg(texts.size() - most) : list;
}

} // namespace study

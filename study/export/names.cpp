#include "study/export/names.h"

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype longestName = 32;

QString answerName(int number)
{
    return u"q%1"_s.arg(number);
}

QString labelName(int number, int label)
{
    return u"q%1_%2"_s.arg(number).arg(label);
}

QString textName(int number)
{
    return u"q%1t"_s.arg(number);
}

QString reasoningName(int number)
{
    return u"q%1r"_s.arg(number);
}

QString statusName(int number)
{
    return u"q%1s"_s.arg(number);
}

QString tagName(const QString &tag)
{
    QString kept;
    for (const QChar character : tag.normalized(QString::NormalizationForm_KD).toLower()) {
        if (character.isMark())
            continue;
        const bool fits = character.unicode() < 128 && character.isLetterOrNumber();
        if (fits || (!kept.isEmpty() && !kept.endsWith(u'_')))
            kept += fits ? character : QChar(u'_');
    }
    kept = "tag_"_L1 + kept;
    kept.truncate(longestName);
    while (kept.endsWith(u'_'))
        kept.chop(1);
    return kept;
}

QString Names::unique(const QString &name)
{
    QString given = name;
    for (int number = 2; taken.contains(given.toLower()); ++number) {
        const QString suffix = u"_%1"_s.arg(number);
        given = name.left(longestName - suffix.size()) + suffix;
    }
    taken.insert(given.toLower());
    return given;
}

} // namespace study

#include "study/report/wording.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

static bool isForbidden(char16_t unit, bool isolates)
{
    const bool isControl = (unit < 0x20 && unit != u'\n' && unit != u'\t') || (unit >= 0x7f && unit < 0xa0);
    const bool isIsolate = unit == 0x2068 || unit == 0x2069;
    const bool turns =
        (unit >= 0x202a && unit <= 0x202e) || unit == 0x2066 || unit == 0x2067 || (isIsolate && !isolates);
    return isControl || turns || unit >= 0xfffe;
}

static QString cleaned(const QString &text, bool isolates)
{
    QString kept = text;
    kept.replace("\r\n"_L1, "\n"_L1).replace(u'\r', u'\n');
    for (qsizetype at = 0; at < kept.size(); ++at) {
        const QChar unit = kept.at(at);
        if (unit.isHighSurrogate() && at + 1 < kept.size() && kept.at(at + 1).isLowSurrogate())
            ++at;
        else if (unit.isSurrogate() || isForbidden(unit.unicode(), isolates))
            kept[at] = QChar::ReplacementCharacter;
    }
    return kept;
}

QString clean(const QString &text)
{
    return cleaned(text, false);
}

QString fitForPage(const QString &text)
{
    return cleaned(text, true);
}

/// As much of the beginning as doesn't cut a character in two.
static QString beginning(const QString &text, qsizetype limit)
{
    const bool halves = limit > 0 && text.at(limit - 1).isHighSurrogate();
    return text.first(halves ? limit - 1 : limit);
}

QString cut(const QString &text, qsizetype limit)
{
    if (text.size() <= limit)
        return clean(text);
    return clean(beginning(text, limit)) + u"\u2026 (%1 characters)"_s.arg(text.size());
}

QString brief(const QString &text, qsizetype limit)
{
    // What is far behind the limit needs no simplifying, and there may be much of it.
    const QString simple = text.first(std::min(text.size(), 4 * limit)).simplified();
    return simple.size() <= limit && text.size() <= 4 * limit
               ? clean(simple)
               : clean(beginning(simple, std::min(simple.size(), limit))) + u'\u2026';
}

QString line(const QString &text, qsizetype limit)
{
    return text.size() <= limit
               ? clean(text.simplified())
               : clean(beginning(text, limit).simplified()) + u"\u2026 (%1 characters)"_s.arg(text.size());
}

QString quoted(const QString &text, qsizetype limit)
{
    return u"\u201c\u2068"_s + line(text, limit) + u"\u2069\u201d"_s;
}

QString percent(double share)
{
    if (!std::isfinite(share))
        return u"-"_s;
    const double value = share * 100;
    if (value > 0 && value < 0.1)
        return u"<0.1 %"_s;
    if (value < 100 && value > 99.9)
        return u">99.9 %"_s;
    return shownNumber(std::round(value * 10) / 10) + u" %"_s;
}

QString percentOf(qsizetype part, qsizetype all)
{
    return all > 0 ? percent(double(part) / double(all)) : u"-"_s;
}

QString shownNumber(double value)
{
    if (!std::isfinite(value))
        return u"-"_s;
    const bool isLong = std::abs(value) >= 1e9 || (value != 0 && std::abs(value) < 0.0005);
    if (isLong)
        return QString::number(value, 'g', 4);
    QString text = QString::number(value, 'f', 3);
    while (text.endsWith(u'0'))
        text.chop(1);
    if (text.endsWith(u'.'))
        text.chop(1);
    return text == "-0"_L1 ? u"0"_s : text;
}

QString counted(qsizetype count, const QString &one, const QString &several)
{
    return QString::number(count) + u' ' + (count == 1 ? one : several);
}

} // namespace study

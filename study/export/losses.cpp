#include "study/export/losses.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace study {

QList<Loss> Losses::list() const
{
    QList<Loss> all;
    for (auto loss = counts.begin(); loss != counts.end(); ++loss)
        all.append({.column = loss.key().second, .what = loss.key().first, .count = loss.value()});
    return all;
}

QStringList sentencesOf(const QString &file, const QList<Loss> &losses)
{
    static constexpr int mostNamed = 5;
    QMap<QString, QStringList> columns;
    for (const Loss &loss : losses)
        columns[loss.what] << u"%1 (%2)"_s.arg(loss.column, QString::number(loss.count));
    QStringList sentences;
    for (auto what = columns.begin(); what != columns.end(); ++what) {
        const qsizetype others = what->size() - mostNamed;
        const QString named = what->mid(0, mostNamed).join(", "_L1);
        sentences << u"%1: %2: %3"_s.arg(file, what.key(), named) +
                         (others > 0 ? u", and %1 more"_s.arg(others) : QString());
    }
    return sentences;
}

QString cleaned(const QString &text)
{
    if (text.isValidUtf16() && !text.contains(QChar(u'\0')))
        return text;
    QString clean;
    for (qsizetype place = 0; place < text.size(); ++place) {
        const QChar character = text.at(place);
        const bool isWhole =
            character.isHighSurrogate() && place + 1 < text.size() && text.at(place + 1).isLowSurrogate();
        if (isWhole)
            clean.append(character).append(text.at(++place));
        else if (character.isSurrogate())
            clean += QChar(QChar::ReplacementCharacter);
        else if (!character.isNull())
            clean += character;
    }
    return clean;
}

QString cleaned(const QString &text, const QString &column, Losses &losses)
{
    const QString clean = cleaned(text);
    if (clean != text)
        losses.add(column, u"characters that are none replaced or left out"_s);
    return clean;
}

QByteArray cutBytes(const QByteArray &utf8, qsizetype bytes)
{
    if (utf8.size() <= bytes)
        return utf8;
    // The bytes of a character after its first begin with the bits 10.
    while (bytes > 0 && (uchar(utf8.at(bytes)) & 0xC0U) == 0x80U)
        --bytes;
    return utf8.first(bytes);
}

QByteArray fitted(const QString &text, qsizetype bytes, const QString &column, Losses &losses)
{
    const QByteArray utf8 = cleaned(text, column, losses).toUtf8();
    if (utf8.size() > bytes)
        losses.add(column, cutAt(bytes, u"bytes"_s));
    return cutBytes(utf8, bytes);
}

QString cutAt(qsizetype limit, const QString &unit)
{
    return u"cut at %1 %2"_s.arg(QString::number(limit), unit);
}

} // namespace study

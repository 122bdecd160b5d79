#include "fuzz/bytes.h"

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;

quint8 Bytes::byte()
{
    if (left.isEmpty())
        return 0;
    const auto first = static_cast<quint8>(left.front());
    left = left.sliced(1);
    return first;
}

char Bytes::letter(QByteArrayView letters)
{
    const auto value = static_cast<char>(byte());
    return letters.contains(value) ? value : letters.at(static_cast<quint8>(value) % letters.size());
}

QByteArrayView Bytes::piece()
{
    const qsizetype length = byte();
    const QByteArrayView found = left.first(std::min(length, left.size()));
    left = left.sliced(found.size());
    return found;
}

QString Bytes::text(bool wide) const
{
    if (!wide)
        return QString::fromUtf8(left);
    QString units(left.size() / 2, Qt::Uninitialized);
    std::memcpy(units.data(), left.data(), static_cast<size_t>(units.size()) * sizeof(QChar));
    return units;
}

bool survivesJson(const QString &text)
{
    if (!text.isValidUtf16() || text.contains(QChar::Null) || text.contains(QChar::ByteOrderMark) ||
        text.contains(QChar::ReplacementCharacter))
        return false;
    static constexpr auto escape = "\\u"_L1;
    for (qsizetype place = text.indexOf(escape); place >= 0; place = text.indexOf(escape, place + 1)) {
        bool isNumber = false;
        const auto unit = static_cast<char16_t>(QStringView(text).sliced(place + 2).left(4).toUInt(&isNumber, 16));
        if (!isNumber || unit == 0 || unit == QChar::ByteOrderMark || QChar::isSurrogate(unit))
            return false;
    }
    return true;
}

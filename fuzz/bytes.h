#pragma once

#include <QByteArrayView>
#include <QString>

/// An input, read from its start to its end. Behind the end everything reads as zero and empty.
class Bytes
{
public:
    explicit Bytes(QByteArrayView input)
        : left(input)
    {
    }

    bool atEnd() const { return left.isEmpty(); }
    quint8 byte();
    /// The next byte as one of some letters: itself where it is among them, else any of them.
    char letter(QByteArrayView letters);
    /// So many bytes as the next byte says, as far as there are.
    QByteArrayView piece();
    QByteArrayView rest() const { return left; }
    /// All that is left, as a text: in UTF-16 of this machine where @p wide, so that it may be no valid text at all,
    /// else in UTF-8.
    QString text(bool wide) const;

private:
    QByteArrayView left;
};

/// True for a JSON text that Qt's reader gives back as it was when it has been written and read again. That leaves out
/// zeros, byte order marks and halves of surrogate pairs, by whatever escapes: some are dropped or replaced, and a key
/// with zeros at its end is found by the name before them.
bool survivesJson(const QString &text);

#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

// What a format can't take as it is, counted while a table is written.

namespace study {

struct Loss
{
    QString column; ///< name of the variable
    QString what;   ///< for example "cut at 32767 characters"
    qsizetype count = 0;
};

class Losses
{
public:
    void add(const QString &column, const QString &what) { ++counts[{what, column}]; }

    /// By what it is, then by column.
    QList<Loss> list() const;

private:
    QMap<std::pair<QString, QString>, qsizetype> counts;
};

/// A sentence for each kind of loss in a file, with the variables and how often.
QStringList sentencesOf(const QString &file, const QList<Loss> &losses);

/// The text without NULs, and with U+FFFD for each half of a character.
QString cleaned(const QString &text);

/// The same, counted as a loss where that is another text.
QString cleaned(const QString &text, const QString &column, Losses &losses);

/// At most so many bytes of UTF-8, whole characters.
QByteArray cutBytes(const QByteArray &utf8, qsizetype bytes);

/// A text as UTF-8 that fits, with what it lost counted.
QByteArray fitted(const QString &text, qsizetype bytes, const QString &column, Losses &losses);

/// "cut at 32767 bytes"
QString cutAt(qsizetype limit, const QString &unit);

} // namespace study

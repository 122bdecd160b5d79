#pragma once

#include <QByteArray>
#include <QSqlQuery>

class QSqlDatabase;

/// Turns a text into the bytes that SQLite looks it up by when it is bound to a statement. They are not always those of
/// its UTF-8 form: SQLite encodes lone surrogates, noncharacters and byte order marks differently.
class TextBytes
{
public:
    explicit TextBytes(const QSqlDatabase &database);

    QByteArray of(const QString &text);

private:
    QSqlQuery query;
};

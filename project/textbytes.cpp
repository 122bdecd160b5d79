#include "project/textbytes.h"

#include <QSqlDatabase>
#include <QVariant>

using namespace Qt::StringLiterals;

TextBytes::TextBytes(const QSqlDatabase &database)
    : query(database)
{
    query.prepare(u"SELECT CAST(? AS BLOB)"_s);
}

QByteArray TextBytes::of(const QString &text)
{
    query.bindValue(0, text);
    const bool found = query.exec() && query.next();
    const QByteArray bytes = found ? query.value(0).toByteArray() : QByteArray();
    query.finish();
    return bytes;
}

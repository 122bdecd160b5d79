#include "tests/study/export/tableshow.h"

#include "study/export/format.h"

#include <QTest>

using study::Column;
using study::Status;
using study::Table;
using study::Value;

QString shownValue(const Value &value)
{
    if (const auto *number = std::get_if<double>(&value))
        return study::numberText(*number);
    if (const auto *reason = std::get_if<Status>(&value))
        return u'<' + study::shownName(*reason) + u'>';
    const auto *text = std::get_if<QString>(&value);
    return text == nullptr ? QString() : *text;
}

QStringList columnNames(const Table &table)
{
    QStringList names;
    for (const Column &column : table.columns)
        names << column.name;
    return names;
}

Column columnOf(const Table &table, const QString &name)
{
    const qsizetype place = columnNames(table).indexOf(name);
    if (place < 0)
        QTest::qFail(qUtf8Printable(name), __FILE__, __LINE__);
    return table.columns.value(place);
}

QStringList columnShown(const Table &table, const QString &name)
{
    const qsizetype place = columnNames(table).indexOf(name);
    if (place < 0)
        QTest::qFail(qUtf8Printable(name), __FILE__, __LINE__);
    QStringList shown;
    for (const QStringList &row : rowsShown(table))
        shown << row.value(place);
    return shown;
}

QList<QStringList> rowsShown(const Table &table)
{
    QList<QStringList> rows;
    for (qsizetype row = 0; row < table.rows; ++row) {
        QStringList shown;
        for (const Value &value : table.row(row))
            shown << shownValue(value);
        rows << shown;
    }
    return rows;
}

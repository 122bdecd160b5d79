#include "study/export/statwriter.h"

#include <QDateTime>
#include <QIODevice>

#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

static ssize_t writeBytes(const void *bytes, size_t length, void *device)
{
    return ssize_t(static_cast<QIODevice *>(device)->write(static_cast<const char *>(bytes), qint64(length)));
}

StatWriter::StatWriter(QIODevice &device)
    : out(&device)
    , writer(readstat_writer_init())
{
    check(readstat_set_data_writer(writer, writeBytes));
    // The clock would make each file another. The library writes the local time, so the time is given as a local one.
    const QDateTime noon(QDate(2000, 1, 1), QTime(12, 0));
    check(readstat_writer_set_file_timestamp(writer, time_t(noon.toSecsSinceEpoch())));
}

StatWriter::~StatWriter()
{
    readstat_writer_free(writer);
}

void StatWriter::check(readstat_error_t error)
{
    if (firstError == READSTAT_OK)
        firstError = error;
}

QString StatWriter::failure() const
{
    return hasFailed() ? QString::fromUtf8(readstat_error_message(firstError)) : QString();
}

void StatWriter::writeRows(const Table &table, const std::function<void(const Value &value, qsizetype place)> &insert)
{
    for (qsizetype row = 0; row < table.rows && !hasFailed(); ++row) {
        check(readstat_begin_row(writer));
        const QList<Value> values = table.row(row);
        for (qsizetype place = 0; place < values.size() && !hasFailed(); ++place)
            insert(values.at(place), place);
        check(readstat_end_row(writer));
    }
    if (!hasFailed())
        check(readstat_end_writing(writer));
}

QByteArray codeLabel(const Column &column, int code, qsizetype mostBytes, Losses &losses)
{
    const QByteArray label = cleaned(column.codes.at(code)).toUtf8();
    if (label.size() > mostBytes)
        losses.add(column.name, u"value labels "_s + cutAt(mostBytes, u"bytes"_s));
    return cutBytes(label, mostBytes);
}

std::optional<double> storableNumber(const Value &value, double greatest, const QString &column, Losses &losses)
{
    if (const auto *number = std::get_if<double>(&value)) {
        if (std::abs(*number) <= greatest)
            return *number;
        losses.add(column, u"numbers too large for the format left out"_s);
    } else if (std::holds_alternative<QString>(value)) {
        losses.add(column, u"texts in the place of a number left out"_s);
    }
    return std::nullopt;
}

} // namespace study

#pragma once

#include "study/export/losses.h"
#include "study/export/table.h"

#include <readstat.h>

#include <functional>

class QIODevice;

namespace study {

/// What the files of SPSS and Stata have in common: the library's writer, to a device.
class StatWriter
{
public:
    explicit StatWriter(QIODevice &device);
    ~StatWriter();
    Q_DISABLE_COPY_MOVE(StatWriter)

    readstat_writer_t *handle() const { return writer; }
    QIODevice *device() const { return out; }

    /// Keeps the first error.
    void check(readstat_error_t error);
    bool hasFailed() const { return firstError != READSTAT_OK; }
    /// Empty where nothing failed.
    QString failure() const;

    /// Writes the rows, value by value, and the end of the file, unless something has failed.
    void writeRows(const Table &table, const std::function<void(const Value &value, qsizetype place)> &insert);

private:
    QIODevice *out;
    readstat_writer_t *writer;
    readstat_error_t firstError = READSTAT_OK;
};

/// What a code stands for, cut where that is longer than a format takes, which is counted as a loss.
QByteArray codeLabel(const Column &column, int code, qsizetype mostBytes, Losses &losses);

/// The number to store, nothing where it is none that a format takes, which is counted as a loss.
std::optional<double> storableNumber(const Value &value, double greatest, const QString &column, Losses &losses);

} // namespace study

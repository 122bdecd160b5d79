#pragma once

#include "study/export/losses.h"
#include "study/export/table.h"

#include <QByteArray>

struct lxw_format;
struct lxw_workbook;
struct lxw_worksheet;

namespace study {

/// An XLSX file, a sheet for each table, written row by row. The same tables make the same bytes. Texts are texts,
/// whatever they begin with. A cell holds 32,767 characters, and 16 digits of a number.
class Workbook
{
public:
    /// Pieces are kept in the folder until the file is whole.
    Workbook(const QString &path, const QString &folder);
    ~Workbook();
    Q_DISABLE_COPY_MOVE(Workbook)

    void add(const Table &table, Losses &losses);

    /// Writes the file. Returns why that failed, empty where it didn't.
    QString close();

private:
    void writeRow(lxw_worksheet *sheet, qsizetype row, const QList<Value> &values, const QList<Column> &columns,
                  Losses &losses);
    void writeText(lxw_worksheet *sheet, qsizetype row, int column, const QString &text);
    /// Keeps the first error.
    void check(int error);

    QByteArray piecesFolder;
    lxw_workbook *book = nullptr;
    lxw_format *titleFormat = nullptr;
    int firstError = 0;
};

} // namespace study

#include "study/export/csv.h"

#include "study/export/format.h"

#include <QIODevice>

#include <string_view>

using namespace Qt::StringLiterals;

namespace study {

static QByteArray csvText(const QString &text)
{
    QByteArray cell = text.toUtf8();
    if (!text.isEmpty() && u"=+-@\t\r"_s.contains(text.front()))
        cell.prepend('\'');
    static constexpr std::string_view special = "\",\n\r";
    const bool wantsQuotes =
        std::string_view(cell.constData(), size_t(cell.size())).find_first_of(special) != special.npos;
    return wantsQuotes ? '"' + cell.replace('"', "\"\"") + '"' : cell;
}

static QByteArray csvCell(const Value &value, const QString &column, Losses &losses)
{
    if (const auto *number = std::get_if<double>(&value))
        return numberText(*number).toLatin1();
    if (const auto *text = std::get_if<QString>(&value))
        return csvText(cleaned(*text, column, losses));
    return {};
}

void writeCsv(QIODevice &out, const Table &table, bool byteOrderMark, Losses &losses)
{
    if (byteOrderMark)
        out.write("\xEF\xBB\xBF");
    QByteArrayList cells;
    for (const Column &column : table.columns)
        cells << csvText(column.name);
    out.write(cells.join(',') + "\r\n");
    for (qsizetype row = 0; row < table.rows; ++row) {
        cells.clear();
        const QList<Value> values = table.row(row);
        for (qsizetype column = 0; column < values.size(); ++column)
            cells << csvCell(values.at(column), table.columns.at(column).name, losses);
        out.write(cells.join(',') + "\r\n");
    }
}

} // namespace study

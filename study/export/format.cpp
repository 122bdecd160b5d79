#include "study/export/format.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace study {

Value missingMark(Format format, const Column &column, const Summary &summary, qsizetype reason)
{
    if (column.type == Column::Type::Text)
        return {};
    if (format == Format::Sav)
        return summary.missingCode(reason);
    if (format == Format::Dta)
        return u".%1"_s.arg(QChar(u'a' + char16_t(reason)));
    return {};
}

QString objectionToSize(Format format, const Table &table)
{
    const auto objection = [&table](const QString &what, qsizetype count, qsizetype most) {
        return u"the %1 table has %2 %3 and the format takes %4; --to csv takes them all"_s.arg(
            table.name, QString::number(count), what, QString::number(most));
    };
    // One row holds the names.
    static constexpr qsizetype sheetRows = 1048576 - 1;
    static constexpr qsizetype sheetColumns = 16384;
    static constexpr qsizetype stataVariables = 32767;
    if (format == Format::Xlsx && table.rows > sheetRows)
        return objection(u"rows"_s, table.rows, sheetRows);
    if (format == Format::Xlsx && table.columns.size() > sheetColumns)
        return objection(u"columns"_s, table.columns.size(), sheetColumns);
    if (format == Format::Dta && table.columns.size() > stataVariables)
        return objection(u"columns"_s, table.columns.size(), stataVariables);
    return {};
}

QString numberText(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

} // namespace study

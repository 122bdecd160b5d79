#include "study/export/workbook.h"

#include "study/export/format.h"

#include <QFile>
#include <QRegularExpression>

#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype cellCharacters = 32767;
/// Of the properties; the clock would make each file another. The first second of 2000.
static constexpr time_t creationTime = 946684800;

/// XML hasn't all characters.
static QString xmlText(const QString &text, const QString &column, Losses &losses)
{
    QString fit = cleaned(text, column, losses);
    const auto isNone = [](QChar character) { return character.unicode() >= 0xFFFE; };
    if (std::any_of(fit.cbegin(), fit.cend(), isNone)) {
        std::replace_if(fit.begin(), fit.end(), isNone, QChar(QChar::ReplacementCharacter));
        losses.add(column, u"characters that are none replaced or left out"_s);
    }
    return fit;
}

/// A spreadsheet takes _x0041_ for an A, which the library leaves to us.
static QString escapedText(QString text)
{
    static const QRegularExpression underscore(u"_(?=x[0-9A-Fa-f]{4}_)"_s);
    return text.contains("_x"_L1) ? text.replace(underscore, u"_x005F_"_s) : text;
}

static QString cellText(const QString &text, const QString &column, Losses &losses)
{
    QString fit = xmlText(text, column, losses);
    QString cell = escapedText(fit);
    if (cell.size() > cellCharacters)
        losses.add(column, cutAt(cellCharacters, u"characters"_s));
    // Escaped, a text is at most twice as long.
    for (; cell.size() > cellCharacters; cell = escapedText(fit)) {
        fit.truncate(std::min(cellCharacters, fit.size() - ((cell.size() - cellCharacters + 1) / 2)));
        if (fit.back().isHighSurrogate())
            fit.chop(1);
    }
    return cell;
}

Workbook::Workbook(const QString &path, const QString &folder)
    : piecesFolder(QFile::encodeName(folder))
{
    const QByteArray name = QFile::encodeName(path);
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    options.tmpdir = piecesFolder.constData();
    options.use_zip64 = LXW_FALSE;
    book = workbook_new_opt(name.constData(), &options);
    if (book == nullptr) {
        firstError = LXW_ERROR_CREATING_XLSX_FILE;
        return;
    }
    lxw_doc_properties properties{};
    properties.created = creationTime;
    check(workbook_set_properties(book, &properties));
    titleFormat = workbook_add_format(book);
    format_set_bold(titleFormat);
}

Workbook::~Workbook()
{
    close();
}

void Workbook::add(const Table &table, Losses &losses)
{
    lxw_worksheet *sheet = book == nullptr ? nullptr : workbook_add_worksheet(book, table.name.toUtf8().constData());
    if (sheet == nullptr) {
        check(LXW_ERROR_CREATING_TMPFILE);
        return;
    }
    worksheet_freeze_panes(sheet, 1, 0);
    worksheet_set_row(sheet, 0, LXW_DEF_ROW_HEIGHT, titleFormat);
    for (int column = 0; column < table.columns.size(); ++column)
        writeText(sheet, 0, column, table.columns.at(column).name);
    for (qsizetype row = 0; row < table.rows && firstError == 0; ++row)
        writeRow(sheet, row + 1, table.row(row), table.columns, losses);
}

void Workbook::writeRow(lxw_worksheet *sheet, qsizetype row, const QList<Value> &values, const QList<Column> &columns,
                        Losses &losses)
{
    for (int column = 0; column < values.size(); ++column) {
        const QString &name = columns.at(column).name;
        if (const auto *text = std::get_if<QString>(&values.at(column))) {
            writeText(sheet, row, column, cellText(*text, name, losses));
        } else if (const auto *number = std::get_if<double>(&values.at(column))) {
            if (!std::isfinite(*number)) {
                writeText(sheet, row, column, numberText(*number));
                continue;
            }
            if (QString::number(*number, 'g', 16).toDouble() != *number)
                losses.add(name, u"numbers rounded to 16 digits"_s);
            check(worksheet_write_number(sheet, lxw_row_t(row), lxw_col_t(column), *number, nullptr));
        }
    }
}

void Workbook::writeText(lxw_worksheet *sheet, qsizetype row, int column, const QString &text)
{
    check(worksheet_write_string(sheet, lxw_row_t(row), lxw_col_t(column), text.toUtf8().constData(),
                                 row == 0 ? titleFormat : nullptr));
}

void Workbook::check(int error)
{
    if (firstError == 0)
        firstError = error;
}

QString Workbook::close()
{
    if (book != nullptr)
        check(workbook_close(std::exchange(book, nullptr)));
    return firstError == 0 ? QString() : QString::fromUtf8(lxw_strerror(lxw_error(firstError)));
}

} // namespace study

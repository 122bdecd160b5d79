#include "study/export/sav.h"

#include "study/export/statwriter.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// The format's own limit is 32,767, see widthOf().
constexpr qsizetype longestText = 32759;
constexpr qsizetype longestPlainText = 255;
constexpr qsizetype longestWording = 255;
constexpr qsizetype longestValueLabel = 120;

/// The width of a column of texts. R and Python read SAV files by a library that, of some widths above 255, loses the
/// last byte of a text that fills them; so there are a few more.
qsizetype widthOf(const Summary &summary)
{
    const qsizetype widest = std::clamp<qsizetype>(summary.widest, 1, longestText);
    return widest > longestPlainText ? widest + 8 : widest;
}

/// A text of more than 255 bytes is stored in pieces, each with a name of its own: the first five letters of the
/// variable's and one more. The other variables have their first eight letters there. Returns whose would be mixed up.
QString mixedUp(const Table &table, const QList<Summary> &summaries)
{
    QSet<QString> shortNames;
    for (const Column &column : table.columns)
        shortNames.insert(column.name.left(8).toUpper());
    static const QString letters = u"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"_s;
    QSet<QString> stems;
    for (qsizetype place = 0; place < table.columns.size(); ++place) {
        const Column &column = table.columns.at(place);
        if (column.type != Column::Type::Text || widthOf(summaries.at(place)) <= longestPlainText)
            continue;
        const QString stem = column.name.left(5).toUpper();
        bool isTaken = stems.contains(stem);
        const qsizetype pieces = (widthOf(summaries.at(place)) + 251) / 252;
        for (qsizetype piece = 1; piece < pieces; ++piece)
            isTaken |= shortNames.contains(stem + letters.at(piece % letters.size()));
        if (isTaken)
            return column.name;
        stems.insert(stem);
    }
    return {};
}

/// How wide a text is stored and how wide it is shown. What it is printed by has to be as wide as it is, or as the
/// first of its pieces.
void setWidth(readstat_variable_t *variable, qsizetype width)
{
    static constexpr qsizetype widestShown = 40;
    const QByteArray format = 'A' + QByteArray::number(std::min(width, longestPlainText));
    readstat_variable_set_format(variable, format.constData());
    readstat_variable_set_display_width(variable, int(std::min(width, widestShown)));
}

class SavTable
{
public:
    SavTable(QIODevice &device, const Table &written, const QList<Summary> &itsSummaries, Losses &counted)
        : writer(device)
        , table(written)
        , summaries(itsSummaries)
        , losses(counted)
    {
    }

    QString write();

private:
    readstat_variable_t *addVariable(const Column &column, const Summary &summary);
    void addLabels(readstat_variable_t *variable, const Column &column, const Summary &summary);
    void insert(readstat_variable_t *variable, const Value &value, qsizetype place);
    std::optional<double> numberOf(const Value &value, qsizetype place);

    StatWriter writer;
    const Table &table;
    const QList<Summary> &summaries;
    Losses &losses;
};

QString SavTable::write()
{
    QList<readstat_variable_t *> variables;
    for (qsizetype place = 0; place < table.columns.size(); ++place)
        variables << addVariable(table.columns.at(place), summaries.at(place));
    // Most of a column of texts is white space.
    writer.check(readstat_writer_set_compression(writer.handle(), READSTAT_COMPRESS_ROWS));
    writer.check(readstat_begin_writing_sav(writer.handle(), writer.device(), long(table.rows)));
    writer.writeRows(table, [&](const Value &value, qsizetype place) { insert(variables.at(place), value, place); });
    return writer.failure();
}

readstat_variable_t *SavTable::addVariable(const Column &column, const Summary &summary)
{
    const bool isText = column.type == Column::Type::Text;
    readstat_variable_t *variable = readstat_add_variable(writer.handle(), column.name.toUtf8().constData(),
                                                          isText ? READSTAT_TYPE_STRING : READSTAT_TYPE_DOUBLE,
                                                          isText ? size_t(widthOf(summary)) : 0);
    const QByteArray wording = cleaned(column.label).toUtf8();
    if (wording.size() > longestWording)
        losses.add(column.name, u"wording "_s + cutAt(longestWording, u"bytes"_s));
    readstat_variable_set_label(variable, cutBytes(wording, longestWording).constData());
    readstat_variable_set_measure(variable, column.type == Column::Type::Number ? READSTAT_MEASURE_SCALE
                                            : column.isOrdered                  ? READSTAT_MEASURE_ORDINAL
                                                                                : READSTAT_MEASURE_NOMINAL);
    if (isText)
        setWidth(variable, widthOf(summary));
    else
        addLabels(variable, column, summary);
    if (column.type == Column::Type::Code)
        readstat_variable_set_format(variable, "F8.0");
    return variable;
}

void SavTable::addLabels(readstat_variable_t *variable, const Column &column, const Summary &summary)
{
    if (column.codes.isEmpty() && column.reasons.isEmpty())
        return;
    readstat_label_set_t *set =
        readstat_add_label_set(writer.handle(), READSTAT_TYPE_DOUBLE, column.name.toUtf8().constData());
    for (int code = 0; code < column.codes.size(); ++code) {
        const QByteArray label = codeLabel(column, code, longestValueLabel, losses);
        readstat_label_double_value(set, column.firstCode + code, label.constData());
    }
    for (qsizetype reason = 0; reason < column.reasons.size(); ++reason) {
        const double code = summary.missingCode(reason);
        readstat_label_double_value(set, code, shownName(column.reasons.at(reason)).toUtf8().constData());
        writer.check(readstat_variable_add_missing_double_value(variable, code));
    }
    readstat_variable_set_label_set(variable, set);
}

void SavTable::insert(readstat_variable_t *variable, const Value &value, qsizetype place)
{
    const Column &column = table.columns.at(place);
    if (column.type == Column::Type::Text) {
        const auto *text = std::get_if<QString>(&value);
        const QByteArray bytes = text == nullptr ? QByteArray() : fitted(*text, longestText, column.name, losses);
        writer.check(readstat_insert_string_value(writer.handle(), variable, bytes.constData()));
    } else if (const auto number = numberOf(value, place)) {
        writer.check(readstat_insert_double_value(writer.handle(), variable, *number));
    } else {
        writer.check(readstat_insert_missing_value(writer.handle(), variable));
    }
}

std::optional<double> SavTable::numberOf(const Value &value, qsizetype place)
{
    const Column &column = table.columns.at(place);
    if (const auto *reason = std::get_if<Status>(&value))
        return summaries.at(place).missingCode(column.reasons.indexOf(*reason));
    // The two outermost numbers mean something else there.
    static const double greatest = std::nextafter(std::nextafter(std::numeric_limits<double>::max(), 0), 0);
    return storableNumber(value, greatest, column.name, losses);
}

} // namespace

QString writeSav(QIODevice &out, const Table &table, const QList<Summary> &summaries, Losses &losses)
{
    if (const QString name = mixedUp(table, summaries); !name.isEmpty())
        return u"the format can't tell the long texts of %1 from another variable's"_s.arg(name);
    return SavTable(out, table, summaries, losses).write();
}

} // namespace study

#include "study/export/dta.h"

#include "study/export/statwriter.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype longestPlainText = 2045;
/// Of Stata's 2,000,000,000.
constexpr qsizetype longestText = 1'999'999'999;
constexpr qsizetype longestWording = 80;
constexpr qsizetype longestValueLabel = 32000;
/// What is above it is a missing value.
constexpr double greatestNumber = 0x1.fffffffffffffp+1022;

QByteArray wordingOf(const Column &column, Losses &losses)
{
    const QList<uint> characters = cleaned(column.label).toUcs4();
    if (characters.size() <= longestWording)
        return cleaned(column.label).toUtf8();
    losses.add(column.name, u"wording "_s + cutAt(longestWording, u"characters"_s));
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(characters.constData()), longestWording).toUtf8();
}

class DtaTable
{
public:
    DtaTable(QIODevice &device, const Table &written, const QList<Summary> &itsSummaries, Losses &counted)
        : writer(device)
        , table(written)
        , summaries(itsSummaries)
        , losses(counted)
    {
    }

    QString write();

private:
    bool isLong(qsizetype place) const
    {
        return table.columns.at(place).type == Column::Type::Text && summaries.at(place).widest > longestPlainText;
    }
    void addVariable(qsizetype place);
    void addLabels(readstat_variable_t *variable, const Column &column);
    void collectLongTexts();
    void insert(const Value &value, qsizetype place);
    void insertText(const QString &text, qsizetype place);
    void insertNumber(const Value &value, qsizetype place);

    StatWriter writer;
    const Table &table;
    const QList<Summary> &summaries;
    Losses &losses;
    QList<readstat_variable_t *> variables;
    QHash<QByteArray, readstat_string_ref_t *> longTexts;
};

QString DtaTable::write()
{
    for (qsizetype place = 0; place < table.columns.size(); ++place)
        addVariable(place);
    collectLongTexts();
    writer.check(readstat_writer_set_file_format_version(writer.handle(), 118));
    writer.check(readstat_begin_writing_dta(writer.handle(), writer.device(), long(table.rows)));
    writer.writeRows(table, [this](const Value &value, qsizetype place) { insert(value, place); });
    return writer.failure();
}

void DtaTable::addVariable(qsizetype place)
{
    const Column &column = table.columns.at(place);
    readstat_type_t type = READSTAT_TYPE_DOUBLE;
    size_t width = 0;
    if (column.type == Column::Type::Code) {
        type = READSTAT_TYPE_INT32;
    } else if (isLong(place)) {
        type = READSTAT_TYPE_STRING_REF;
    } else if (column.type == Column::Type::Text) {
        type = READSTAT_TYPE_STRING;
        width = size_t(std::max<qsizetype>(summaries.at(place).widest, 1));
    }
    readstat_variable_t *variable =
        readstat_add_variable(writer.handle(), column.name.toUtf8().constData(), type, width);
    readstat_variable_set_label(variable, wordingOf(column, losses).constData());
    if (column.type != Column::Type::Text)
        addLabels(variable, column);
    variables << variable;
}

void DtaTable::addLabels(readstat_variable_t *variable, const Column &column)
{
    if (column.codes.isEmpty() && column.reasons.isEmpty())
        return;
    readstat_label_set_t *set =
        readstat_add_label_set(writer.handle(), READSTAT_TYPE_INT32, column.name.toUtf8().constData());
    for (int code = 0; code < column.codes.size(); ++code) {
        const QByteArray label = codeLabel(column, code, longestValueLabel, losses);
        readstat_label_int32_value(set, column.firstCode + code, label.constData());
    }
    for (qsizetype reason = 0; reason < column.reasons.size(); ++reason) {
        const QByteArray label = shownName(column.reasons.at(reason)).toUtf8();
        readstat_label_tagged_value(set, char('a' + reason), label.constData());
    }
    readstat_variable_set_label_set(variable, set);
}

/// Long texts stand behind the rows, each once, and are known before the first row is written.
void DtaTable::collectLongTexts()
{
    QList<qsizetype> places;
    for (qsizetype place = 0; place < table.columns.size(); ++place) {
        if (isLong(place))
            places << place;
    }
    Losses uncounted;
    for (qsizetype row = 0; row < table.rows && !places.isEmpty(); ++row) {
        const QList<Value> values = table.row(row);
        for (const qsizetype place : std::as_const(places)) {
            const auto *text = std::get_if<QString>(&values.at(place));
            if (text == nullptr)
                continue;
            const QByteArray bytes = fitted(*text, longestText, {}, uncounted);
            readstat_string_ref_t *&reference = longTexts[bytes];
            if (reference == nullptr)
                reference = readstat_add_string_ref(writer.handle(), bytes.constData());
        }
    }
}

void DtaTable::insert(const Value &value, qsizetype place)
{
    if (table.columns.at(place).type != Column::Type::Text)
        insertNumber(value, place);
    else if (const auto *text = std::get_if<QString>(&value))
        insertText(*text, place);
    // A row begins with all texts empty.
}

void DtaTable::insertText(const QString &text, qsizetype place)
{
    const QByteArray bytes = fitted(text, longestText, table.columns.at(place).name, losses);
    if (isLong(place))
        writer.check(readstat_insert_string_ref(writer.handle(), variables.at(place), longTexts.value(bytes)));
    else
        writer.check(readstat_insert_string_value(writer.handle(), variables.at(place), bytes.constData()));
}

void DtaTable::insertNumber(const Value &value, qsizetype place)
{
    const Column &column = table.columns.at(place);
    readstat_variable_t *variable = variables.at(place);
    if (const auto *reason = std::get_if<Status>(&value)) {
        const char tag = char('a' + column.reasons.indexOf(*reason));
        writer.check(readstat_insert_tagged_missing_value(writer.handle(), variable, tag));
        return;
    }
    const auto number = storableNumber(value, greatestNumber, column.name, losses);
    if (!number)
        writer.check(readstat_insert_missing_value(writer.handle(), variable));
    else if (column.type == Column::Type::Code)
        writer.check(readstat_insert_int32_value(writer.handle(), variable, int32_t(*number)));
    else
        writer.check(readstat_insert_double_value(writer.handle(), variable, *number));
}

} // namespace

QString writeDta(QIODevice &out, const Table &table, const QList<Summary> &summaries, Losses &losses)
{
    return DtaTable(out, table, summaries, losses).write();
}

} // namespace study

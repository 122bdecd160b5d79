#include "study/export/codebook.h"

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// What a variable's rows have in common, and the rows.
class VariableRows
{
public:
    VariableRows(const QList<Value> &common, const QString &remark, QList<QList<Value>> &all)
        : head(common)
        , note(remark)
        , rows(all)
    {
    }

    void add(const Value &value, const QString &label, qsizetype count)
    {
        rows.append(head + QList<Value>{value, textValue(label), double(count), textValue(note)});
    }

private:
    QList<Value> head;
    QString note;
    QList<QList<Value>> &rows;
};

QString typeOf(const Project &project, const Column &column)
{
    if (column.question >= 0)
        return shownName(project.questions.at(column.question).kind);
    switch (column.type) {
    case Column::Type::Text:
        return u"text"_s;
    case Column::Type::Number:
        return u"number"_s;
    case Column::Type::Code:
        return u"yes or no"_s;
    }
    Q_UNREACHABLE_RETURN({});
}

QString noteOn(const Column &column, const QList<Loss> &losses)
{
    QStringList notes;
    for (const Loss &loss : losses) {
        if (loss.column == column.name)
            notes << u"%1 (%2)"_s.arg(loss.what, QString::number(loss.count));
    }
    return notes.join("; "_L1);
}

Value rangeOf(const Summary &summary)
{
    if (summary.values == 0)
        return {};
    return u"from %1 to %2"_s.arg(numberText(summary.least), numberText(summary.greatest));
}

void describe(const Column &column, const Summary &summary, Format format, VariableRows &rows)
{
    if (column.type == Column::Type::Code) {
        for (int place = 0; place < column.codes.size(); ++place) {
            const int code = column.firstCode + place;
            rows.add(double(code), column.codes.at(place), summary.codes.value(code));
        }
    } else {
        rows.add(column.type == Column::Type::Number ? rangeOf(summary) : Value(), {}, summary.values);
    }
    for (qsizetype reason = 0; reason < column.reasons.size(); ++reason) {
        const Status status = column.reasons.at(reason);
        rows.add(missingMark(format, column, summary, reason), shownName(status), summary.reasons.value(status));
    }
}

QList<Column> codebookColumns()
{
    const auto column = [](const QString &name, Column::Type type = Column::Type::Text) {
        return Column{.name = name, .label = {}, .type = type};
    };
    return {
        column(u"table"_s), column(u"variable"_s), column(u"wording"_s), column(u"question"_s, Column::Type::Number),
        column(u"type"_s),  column(u"value"_s),    column(u"label"_s),   column(u"count"_s, Column::Type::Number),
        column(u"note"_s)};
}

} // namespace

Table codebook(const Project &project, const QList<Described> &tables, Format format)
{
    QList<QList<Value>> rows;
    for (const Described &described : tables) {
        for (qsizetype place = 0; place < described.table.columns.size(); ++place) {
            const Column &column = described.table.columns.at(place);
            const Value question = column.question < 0 ? Value() : Value(column.question + 1.0);
            VariableRows variable(
                {described.table.name, column.name, textValue(column.label), question, typeOf(project, column)},
                noteOn(column, described.losses), rows);
            describe(column, described.summaries.at(place), format, variable);
        }
    }
    return tableOf(u"codebook"_s, codebookColumns(), rows);
}

} // namespace study

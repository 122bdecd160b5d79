#include "study/export/longtable.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// A stored answer, or an open pair.
struct Entry
{
    int persona = -1;
    int question = -1;
    qsizetype answer = -1; ///< its place in the project, -1 for an open pair
};

/// By persona, then by question; what is not there any more comes last, in an order of its own.
bool isEarlier(const Project &project, const Entry &left, const Entry &right)
{
    // The least is -1, which becomes the greatest.
    const auto places = [](const Entry &entry) { return std::pair(unsigned(entry.persona), unsigned(entry.question)); };
    if (places(left) != places(right))
        return places(left) < places(right);
    if (left.persona >= 0 && left.question >= 0)
        return false;
    const Answer &first = project.answers.at(left.answer);
    const Answer &second = project.answers.at(right.answer);
    if (left.persona < 0 && first.personaUuid != second.personaUuid)
        return first.personaUuid < second.personaUuid;
    return left.question < 0 && first.questionId < second.questionId;
}

QList<Entry> entriesOf(const Project &project, const Cells &cells)
{
    QList<Entry> entries;
    for (int persona = 0; persona < project.personas.size(); ++persona) {
        for (int question = 0; question < project.questions.size(); ++question) {
            if (cells.at(persona, question).status == Status::Open)
                entries.append({.persona = persona, .question = question});
        }
    }
    for (qsizetype place = 0; place < project.answers.size(); ++place) {
        const Answer &answer = project.answers.at(place);
        entries.append({.persona = project.personaIndex(answer.personaUuid),
                        .question = project.questionIndex(answer.questionId),
                        .answer = place});
    }
    // The answers come by time already.
    std::stable_sort(entries.begin(), entries.end(),
                     [&project](const Entry &left, const Entry &right) { return isEarlier(project, left, right); });
    return entries;
}

QString statusOf(const Entry &entry, const Cell &cell, const Cells &cells)
{
    if (entry.answer < 0)
        return shownName(Status::Open);
    switch (cells.standing(entry.answer)) {
    case Cells::Standing::Newest:
        return shownName(cell.status);
    case Cells::Standing::Superseded:
        return u"answered twice"_s;
    case Cells::Standing::Orphan:
        return u"orphan"_s;
    }
    Q_UNREACHABLE_RETURN({});
}

Value storedNumber(const QVariant &stored)
{
    if (stored.isNull())
        return {};
    return stored.typeId() == QMetaType::QString ? textValue(stored.toString()) : Value(stored.toDouble());
}

QList<Value> personaValues(const Project &project, const Entry &entry)
{
    if (entry.persona < 0)
        return {textValue(project.answers.at(entry.answer).personaUuid), {}, {}};
    const Persona &persona = project.personas.at(entry.persona);
    return {textValue(persona.entry.uuid), textValue(persona.entry.name), textValue(persona.tags.join("; "_L1))};
}

QList<Value> questionValues(const Project &project, const Entry &entry)
{
    if (entry.question < 0)
        return {double(project.answers.at(entry.answer).questionId), {}, {}, {}};
    const Question &question = project.questions.at(entry.question);
    return {double(question.entry.id), double(question.number), textValue(question.entry.prompt),
            shownName(question.kind)};
}

QList<Value> meaningOf(const Project &project, const Entry &entry, const Cell &cell)
{
    QStringList labels;
    QStringList positions;
    for (const int label : cell.matches.labels) {
        labels << project.questions.at(entry.question).labels.at(label);
        positions << QString::number(label + 1);
    }
    return {cell.number ? Value(*cell.number) : Value(), textValue(labels.join("; "_L1)),
            textValue(positions.join("; "_L1))};
}

QList<Value> storedValues(const Answer &answer)
{
    return {textValue(answer.reasoning()), textValue(answer.createdAt), textValue(answer.parsed.textAnswer),
            storedNumber(answer.parsed.numericAnswer), textValue(answer.parsed.jsonAnswer)};
}

QList<Value> longRow(const Project &project, const Cells &cells, const Entry &entry)
{
    Cell cell;
    Answer answer;
    if (entry.answer >= 0) {
        answer = project.answers.at(entry.answer);
        if (cells.standing(entry.answer) == Cells::Standing::Newest)
            cell = cells.at(entry.persona, entry.question);
        else if (entry.question >= 0)
            cell = readCell(project.questions.at(entry.question), answer);
    }
    return personaValues(project, entry) + questionValues(project, entry) +
           QList<Value>{statusOf(entry, cell, cells), textValue(answer.shown())} + meaningOf(project, entry, cell) +
           storedValues(answer);
}

QList<Column> longColumns()
{
    using Type = Column::Type;
    const auto column = [](const QString &name, const QString &label, Type type = Type::Text) {
        return Column{.name = name, .label = label, .type = type};
    };
    return {column(u"uuid"_s, u"Persona"_s),
            column(u"name"_s, u"Name of the persona"_s),
            column(u"tags"_s, u"Tags of the persona, separated by semicolons"_s),
            column(u"question_id"_s, u"Question, as the project numbers it"_s, Type::Number),
            column(u"question"_s, u"Question, by its place in the questionnaire"_s, Type::Number),
            column(u"prompt"_s, u"Wording of the question"_s),
            column(u"type"_s, u"Answer type of the question"_s),
            column(u"status"_s, u"What became of the answer"_s),
            column(u"shown"_s, u"Answer as the grid shows it"_s),
            column(u"number"_s, u"Answer as a number"_s, Type::Number),
            column(u"label"_s, u"Labels that the answer names, in its order, separated by semicolons"_s),
            column(u"position"_s, u"Places of these labels in the list of the question, from 1"_s),
            column(u"reasoning"_s, u"Reasoning that came with the answer"_s),
            column(u"time"_s, u"When the answer was stored, in UTC"_s),
            column(u"text_answer"_s, u"Answer as stored: its text"_s),
            column(u"numeric_answer"_s, u"Answer as stored: its number"_s, Type::Number),
            column(u"json_answer"_s, u"Answer as stored: its JSON"_s)};
}

} // namespace

Table longTable(const Project &project, const Cells &cells)
{
    const QList<Entry> entries = entriesOf(project, cells);
    return {.name = u"long"_s,
            .columns = longColumns(),
            .rows = entries.size(),
            .row = [&project, &cells, entries](qsizetype row) { return longRow(project, cells, entries.at(row)); }};
}

} // namespace study

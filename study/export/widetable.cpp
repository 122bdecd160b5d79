#include "study/export/widetable.h"

#include "study/export/names.h"

using namespace Qt::StringLiterals;

namespace study {

namespace {

using Type = Column::Type;

/// Makes the value of a persona in a column.
using Source = std::function<Value(int)>;

class WideBuilder
{
public:
    WideBuilder(const Project &asked, const Cells &answered)
        : project(asked)
        , cells(answered)
    {
    }

    Table build();

private:
    void add(Column column, Source source);
    void addPersona(const QString &name, const QString &label, const std::function<QString(const Persona &)> &text);
    void addTags();
    void addAnswer(int question);
    void addCode(int question);
    void addLabels(int question);
    void addNumber(int question);
    void addText(int question);
    void addReasoning(int question);
    void addStatus(int question);

    /// What a question's value is where the pair is answered, and why there is none where it isn't.
    Source whereAnswered(int question, const std::function<Value(const Cell &)> &value) const;
    const QString &prompt(int question) const { return project.questions.at(question).entry.prompt; }
    int number(int question) const { return project.questions.at(question).number; }

    const Project &project;
    const Cells &cells;
    Names names;
    QList<Column> columns;
    QList<Source> sources;
};

Table WideBuilder::build()
{
    addPersona(u"uuid"_s, u"Persona"_s, [](const Persona &persona) { return persona.entry.uuid; });
    addPersona(u"name"_s, u"Name of the persona"_s, [](const Persona &persona) { return persona.entry.name; });
    addPersona(u"attributes"_s, u"Attributes of the persona"_s,
               [](const Persona &persona) { return persona.entry.attributes; });
    addPersona(u"system_prompt"_s, u"System prompt of the persona"_s,
               [](const Persona &persona) { return persona.entry.systemPrompt; });
    addPersona(u"notes"_s, u"Notes on the persona"_s, [](const Persona &persona) { return persona.notes; });
    addTags();
    for (int question = 0; question < project.questions.size(); ++question) {
        addAnswer(question);
        addReasoning(question);
        addStatus(question);
    }
    return {.name = u"wide"_s,
            .columns = columns,
            .rows = project.personas.size(),
            .row = [made = sources](qsizetype persona) {
                QList<Value> values;
                values.reserve(made.size());
                for (const Source &source : made)
                    values << source(int(persona));
                return values;
            }};
}

void WideBuilder::add(Column column, Source source)
{
    column.name = names.unique(column.name);
    columns.append(std::move(column));
    sources.append(std::move(source));
}

void WideBuilder::addPersona(const QString &name, const QString &label,
                             const std::function<QString(const Persona &)> &text)
{
    add({.name = name, .label = label},
        [of = &project, text](int persona) { return textValue(text(of->personas.at(persona))); });
}

void WideBuilder::addTags()
{
    QStringList tags = project.tags;
    tags.removeDuplicates();
    for (const QString &tag : std::as_const(tags)) {
        add({.name = tagName(tag),
             .label = u"Tag: %1"_s.arg(tag),
             .type = Type::Code,
             .codes = {u"no"_s, u"yes"_s},
             .firstCode = 0},
            [of = &project, tag](int persona) { return double(of->personas.at(persona).tags.contains(tag)); });
    }
}

void WideBuilder::addAnswer(int question)
{
    const Question &asked = project.questions.at(question);
    if (asked.kind == Kind::Numeric)
        addNumber(question);
    else if (!asked.hasList())
        addText(question);
    else if (asked.kind == Kind::SingleChoice || asked.kind == Kind::Likert)
        addCode(question);
    else
        addLabels(question);
}

void WideBuilder::addCode(int question)
{
    const Question &asked = project.questions.at(question);
    add({.name = answerName(asked.number),
         .label = asked.entry.prompt,
         .type = Type::Code,
         .codes = asked.labels,
         .isOrdered = asked.kind == Kind::Likert,
         .question = question,
         .reasons = {Status::Open, Status::OutOfList, Status::Unreadable}},
        whereAnswered(question, [](const Cell &cell) { return Value(cell.matches.labels.at(0) + 1.0); }));
}

void WideBuilder::addLabels(int question)
{
    const Question &asked = project.questions.at(question);
    const bool isRanking = asked.kind == Kind::Ranking;
    for (int label = 0; label < asked.labels.size(); ++label) {
        const Source value = whereAnswered(question, [label, isRanking](const Cell &cell) {
            const qsizetype rank = cell.matches.labels.indexOf(label);
            if (isRanking)
                return rank < 0 ? Value() : Value(double(rank) + 1);
            return Value(rank < 0 ? 0.0 : 1.0);
        });
        add({.name = labelName(asked.number, label + 1),
             .label = u"%1: %2"_s.arg(asked.labels.at(label), asked.entry.prompt),
             .type = isRanking ? Type::Number : Type::Code,
             .codes = isRanking ? QStringList() : QStringList{u"not named"_s, u"named"_s},
             .firstCode = 0,
             .question = question,
             .reasons = {Status::Open, Status::OutOfList, Status::Unreadable}},
            value);
    }
}

void WideBuilder::addNumber(int question)
{
    add({.name = answerName(number(question)),
         .label = prompt(question),
         .type = Type::Number,
         .question = question,
         .reasons = {Status::Open, Status::NotANumber, Status::Unreadable}},
        whereAnswered(question, [](const Cell &cell) { return cell.number ? Value(*cell.number) : Value(); }));
}

void WideBuilder::addText(int question)
{
    add({.name = textName(number(question)),
         .label = prompt(question),
         .question = question,
         .reasons = {Status::Open, Status::Unreadable}},
        whereAnswered(question, [](const Cell &cell) { return textValue(cell.answer->shown()); }));
}

void WideBuilder::addReasoning(int question)
{
    const auto reasoningOf = [&all = cells, question](int persona) {
        const Answer *answer = all.at(persona, question).answer;
        return answer == nullptr ? QString() : answer->reasoning();
    };
    int persona = 0;
    while (persona < project.personas.size() && reasoningOf(persona).isEmpty())
        ++persona;
    if (persona == project.personas.size())
        return;
    add({.name = reasoningName(number(question)),
         .label = u"Reasoning: %1"_s.arg(prompt(question)),
         .question = question},
        [reasoningOf](int row) { return textValue(reasoningOf(row)); });
}

void WideBuilder::addStatus(int question)
{
    add({.name = statusName(number(question)), .label = u"Status: %1"_s.arg(prompt(question)), .question = question},
        [&all = cells, question](int persona) { return Value(shownName(all.at(persona, question).status)); });
}

Source WideBuilder::whereAnswered(int question, const std::function<Value(const Cell &)> &value) const
{
    return [&all = cells, question, value](int persona) {
        const Cell &cell = all.at(persona, question);
        return cell.status == Status::Answered ? value(cell) : Value(cell.status);
    };
}

} // namespace

Table wideTable(const Project &project, const Cells &cells)
{
    return WideBuilder(project, cells).build();
}

} // namespace study

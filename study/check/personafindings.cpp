#include "study/check/findings.h"
#include "study/check/wording.h"

using namespace Qt::StringLiterals;

namespace study {

/// What a persona speaks from, as the program chooses it.
static QString spokenText(const PersonaEntry &persona)
{
    return (persona.systemPrompt.isEmpty() ? persona.attributes : persona.systemPrompt).trimmed();
}

static Finding ofPersona(const Persona &persona, const QString &kind, const QString &predicate)
{
    return {.kind = kind, .text = u"persona %1 %2"_s.arg(inQuotes(persona.entry.name), predicate), .persona = &persona};
}

static QList<Finding> repeatedNames(const QList<Persona> &personas)
{
    QHash<QString, int> counts;
    for (const Persona &persona : personas)
        ++counts[persona.entry.name];
    QList<Finding> found;
    for (const Persona &persona : personas) {
        const int count = counts.take(persona.entry.name);
        if (count < 2)
            continue;
        const QString text = persona.entry.name.isEmpty()
                                 ? u"%1 personas have no name"_s.arg(count)
                                 : u"%1 personas have the name %2"_s.arg(count).arg(inQuotes(persona.entry.name));
        found.append({.kind = u"persona-name-twice"_s, .text = text, .persona = &persona, .count = count});
    }
    return found;
}

QList<Finding> personaFindings(const Project &project, const PairMap &pairs)
{
    QList<Finding> found;
    QHash<QString, const Persona *> firstWith;
    for (int place = 0; place < project.personas.size(); ++place) {
        const Persona &persona = project.personas.at(place);
        const QString text = spokenText(persona.entry);
        if (text.isEmpty()) {
            if (pairs.hasOpen(place)) {
                found << ofPersona(persona, u"no-persona-text"_s, u"has no text"_s);
                found.last().blocks = true;
            }
        } else if (const Persona *first = firstWith.value(text)) {
            found << ofPersona(persona, u"persona-text-twice"_s, "has the text of "_L1 + inQuotes(first->entry.name));
            found.last().details = {first->entry.name};
        } else {
            firstWith.insert(text, &persona);
        }
    }
    return found << repeatedNames(project.personas);
}

} // namespace study

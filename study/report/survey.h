#pragma once

#include "study/cells.h"
#include "study/project.h"
#include "study/report/document.h"

#include <QList>
#include <QStringList>

// What the sections of a report are made from: the project, what became of its pairs, and what was answered to each
// question by a group.

namespace study {

/// Personas by their places.
struct PersonaGroup
{
    QString name;
    QList<int> personas;
};

/// Below so many answers a group is shown, but faint: by chance alone its shares may be anything.
inline constexpr int smallGroup = 10;
/// The largest tags that a question is told by.
inline constexpr int mostGroups = 20;

/// The answers of a group to a question. Lists that run by persona hold those alone that answered, in their order.
struct Answers
{
    const Question *question = nullptr;
    int all = 0;             ///< personas of the group
    QList<int> personas;     ///< those that answered
    int open = 0;            ///< without any answer
    int unusable = 0;        ///< with one that is out of the list, no number or unreadable
    QStringList kinds;       ///< the labels, or where there are none the texts that were given
    QList<int> codes;        ///< by persona the kind; for several labels that of the combination
    QStringList given;       ///< by persona what the grid shows
    QList<double> counts;    ///< by kind how often it was given; several labels count each
    QList<double> numbers;   ///< by persona, of a numeric question
    QList<QList<int>> lists; ///< by persona the labels of a choice of several, or in the order of ranks
    QStringList reasonings;  ///< by persona, empty where there is none

    int n() const { return int(personas.size()); }
    /// How often each different answer occurs as a whole, for what is said of sameness: a combination of labels, an
    /// order, a text or a number is an answer like a label.
    QList<double> wholeCounts() const;
};

Answers answersOf(const Project &project, const Cells &cells, int question, const QList<int> &personas);

class Survey
{
public:
    explicit Survey(const Project &project);

    const Project &project;
    const Cells cells;
    QList<int> everybody;
    QList<PersonaGroup> tags;   ///< all of them, by name
    QList<PersonaGroup> groups; ///< the largest of them, by name
    QList<Answers> answers;     ///< of everybody, by question

    Answers answersOf(int question, const QList<int> &personas) const;
    QString nameOf(int persona) const;
    /// "Question 3".
    static QString titleOf(const Question &question);
    static QString anchorOf(const Question &question);
};

/// Something that a reader ought to look at, and where.
struct Flag
{
    QString text;
    QString anchor;
};

/// A part of the report, with what of it belongs at the top.
struct Section
{
    Blocks blocks;
    QList<Flag> flags;
};

} // namespace study

#pragma once

#include "study/match.h"
#include "study/project.h"

#include <optional>

// What became of each question to each persona.

namespace study {

enum class Status {
    Answered,
    Open,       ///< no answer is stored
    OutOfList,  ///< the answer names something that is no label
    NotANumber, ///< the answer to a numeric question is no finite number
    Unreadable, ///< an answer is stored and has no text and no number
};

/// A pair of a persona and a question, with the newest answer to it, as the grid shows it.
struct Cell
{
    Status status = Status::Open;
    const Answer *answer = nullptr; ///< of the project, null where the pair is open
    int repeats = 0;                ///< older answers to the same pair
    Matches matches;                ///< of a question with labels
    std::optional<double> number;   ///< of a numeric question
};

/// The cells of a project, which has to live as long.
class Cells
{
public:
    explicit Cells(const Project &project);

    const Cell &at(int persona, int question) const { return cells.at((persona * questions) + question); }

    enum class Standing {
        Newest,
        Superseded, ///< there is a newer one to the same pair
        Orphan,     ///< its persona or its question is not there any more
    };
    /// What became of an answer, by its place in the project.
    Standing standing(qsizetype answer) const { return standings.at(answer); }

private:
    qsizetype questions;
    QList<Cell> cells;
    QList<Standing> standings;
};

/// What an answer says to a question.
Cell readCell(const Question &question, const Answer &answer);

/// "answered", "open", "out of list", "not a number", "unreadable".
QString shownName(Status status);

} // namespace study

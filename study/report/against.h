#pragma once

#include "study/report/survey.h"
#include "study/statistics/agreement.h"
#include "study/statistics/divergence.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <variant>

// What the answers of a survey are held against: those of people, from a table, or those of another project.

namespace study {

/// The other side's answers to a question.
struct Counterpart
{
    int question = 0;                            ///< its place in the survey
    QList<double> counts;                        ///< by label, of any sum; of a ranking how often it came first
    QList<Weighted> numbers;                     ///< of a numeric question
    QList<std::pair<QString, double>> unmatched; ///< what is no label (or number) of the question, with its share
    /// How often the same persona gave the same answer on both sides, where both are projects.
    std::optional<Agreement> agreement;
};

struct Against
{
    QString name; ///< of the file, without its folder
    bool isPeople = true;
    QList<Counterpart> counterparts; ///< in the order of the questionnaire
    QStringList strangers;           ///< questions of the other side that this survey doesn't have
};

/// Reads a table (CSV in UTF-8) with a header and the columns question (a number, or the wording of the prompt), label
/// or value, and share or count, in any order, others passed over; or a project. Gives one sentence where the file
/// can't be read or is neither.
std::variant<Against, QString> readAgainst(const QString &path, const Survey &survey);

/// The counts of a survey's own answers in the same form as those of a counterpart.
QList<double> ownCounts(const Answers &answers);

} // namespace study

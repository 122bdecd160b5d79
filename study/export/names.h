#pragma once

#include <QSet>
#include <QString>

// How variables are named. A name has letters, digits and underscores, begins with a letter and is at most 32 long, so
// that every format takes it; in one table no two differ in case alone.
//
// What belongs to question 12 begins with q12: q12 is its answer as a code or a number, q12_3 what it says of the third
// label, q12t its text, q12r the reasoning, q12s the status. The letters stand within the first five places, by which
// SPSS tells long texts apart.

namespace study {

QString answerName(int number);
QString labelName(int number, int label);
QString textName(int number);
QString reasoningName(int number);
QString statusName(int number);

/// "tag_" and what can be kept of a tag, in lower case: accents are dropped, everything else becomes an underscore.
QString tagName(const QString &tag);

/// Gives each name once.
class Names
{
public:
    /// The name, or, where it is taken, the same with a number.
    QString unique(const QString &name);

private:
    QSet<QString> taken; ///< in lower case
};

} // namespace study

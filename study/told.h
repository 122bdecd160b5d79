#pragma once

#include <QStringList>

struct Boilerplate;

// What of its labels a question tells the model.

namespace study {

struct Question;

/// Whether words stand in a text, both without case. In scripts that part words by blanks they have to be whole: "no"
/// is not in "know".
bool hasWords(const QString &text, const QString &words);

/// The labels that nothing tells the model: an Option has all of them in what is sent, another question those alone
/// that stand in its prompt or in the boilerplate. Of a scale of numbers the first and the last tell the others.
QStringList untoldLabels(const Question &question, const Boilerplate &boilerplate);

} // namespace study

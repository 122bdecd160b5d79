#pragma once

#include <QStringList>

#include <optional>

// What is looked for in free text, English phrases in one place. They tell where to look, and no more: whoever quotes a
// refusal doesn't refuse.

namespace study {

/// Of longer texts the beginning alone is searched.
inline constexpr qsizetype searchedLength = 20'000;

/// By which a model tells that it is one, or doesn't answer.
const QStringList &refusals();
/// By which somebody leaves open what they think.
const QStringList &hedges();

struct Found
{
    QString phrase;
    QString excerpt; ///< the phrase with what stands around it, on one line
};

/// The first of these phrases that a text holds, in their order: whole words, whatever their case and the form of their
/// apostrophes.
std::optional<Found> findPhrase(const QString &text, const QStringList &phrases);

/// The first label that a text names where it names another than the chosen one and not the chosen one: whole words,
/// whatever their case. Labels of fewer than three characters don't count, nor do those that are a part of the chosen
/// one.
std::optional<Found> findOtherLabel(const QString &text, const QStringList &labels, int chosen);

} // namespace study

#pragma once

#include <QStringList>

/// The words that questions.answer_type holds. Any other word there is kept and asked like a text question.
namespace AnswerType {
inline constexpr QStringView singleChoice = u"single_choice";
inline constexpr QStringView multiChoice = u"multi_choice";
inline constexpr QStringView text = u"text";
inline constexpr QStringView numeric = u"numeric";
inline constexpr QStringView likert = u"likert";
inline constexpr QStringView ranking = u"ranking";
} // namespace AnswerType

/// The stored words in the order in which the types are offered.
QStringList storedAnswerTypes();

/// What the user reads for them, in the same order.
QStringList shownAnswerTypes();

/// The place of a stored word among the types, 0 for a word that is none of them; words are compared with case.
int answerTypeIndex(const QString &stored);

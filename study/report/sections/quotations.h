#pragma once

#include "study/report/survey.h"

namespace study {

/// Two of what was said to a question, chosen by a rule and not by taste, from the reasoning where there is any, else
/// from the answers to a question for a text: the one nearest to the median length, and the longest one under 300
/// characters; the first persona's of those that are as near or as long.
QList<Quotation> quotationsOf(const Survey &survey, const Answers &answers);

/// The rule in words.
QString quotationRule();

} // namespace study

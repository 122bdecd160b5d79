#pragma once

#include "study/report/survey.h"

#include <QStringList>

// The sections of a report, each from the same survey. What a section found worth a look at the top is in its flags.

namespace study {

struct Against;

/// What the models and their settings were, in sentences; empty where no record was given.
using Recorded = QStringList;

Section madeSection(const Survey &survey, const Recorded &recorded);
Section panelSection(const Survey &survey);
Section completenessSection(const Survey &survey);
Section questionsSection(const Survey &survey);
Section samenessSection(const Survey &survey);
Section wordsSection(const Survey &survey);
/// What the answers are held against, question by question.
Section againstSection(const Survey &survey, const Against &against);
Section codebookSection(const Survey &survey);

/// The first page, from what the others found: the first seven of these flags.
Blocks glanceSection(const Survey &survey, const QList<Flag> &flags);

} // namespace study

#pragma once

#include "study/report/document.h"
#include "study/report/survey.h"

#include <QString>

#include <memory>

/// A survey with the project that it is of.
struct ReadSurvey
{
    explicit ReadSurvey(const QString &path);

    study::Project project;
    std::unique_ptr<study::Survey> survey;
};

/// A project of twelve personas, half of them "rural", a quarter "young", and a question of each type: 1 an Option of
/// tea, coffee and milk, where 9 take tea and 3 coffee; 2 Multiple Choice; 3 a Text; 4 a Numeric, of 0 to 11; 5 a
/// Likert Scale of five, one out of its list; 6 Rank Choices, open for the last persona. Gives its path.
QString writeDrinks(const QString &path);

/// What a document says, a line for each text of each block: "Heading: ...", "TextTable: a | b".
QStringList saidBy(const study::Blocks &blocks);

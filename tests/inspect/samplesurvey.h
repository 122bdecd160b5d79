#pragma once

#include "tests/support/entries.h"
#include "tests/support/shown.h"

#include <QTableWidget>

// A survey that has been run halfway, as the grid shows it.

/// Enters the personas A and B, the questions One and Two, and answers to the first question.
inline bool enterSurvey(Stage &stage)
{
    const auto answer = [](const QString &persona, const QString &text) {
        return AnswerEntered{
            .persona = persona, .question = 1, .text = text, .json = QStringLiteral("{\"reasoning\":\"why\"}")};
    };
    const auto a = QStringLiteral("a");
    const auto b = QStringLiteral("b");
    return enter(stage, PersonaEntered{.uuid = a, .name = QStringLiteral("Persona A")},
                 PersonaEntered{.uuid = b, .name = QStringLiteral("Persona B")},
                 QuestionEntered{.prompt = QStringLiteral("One")}, QuestionEntered{.prompt = QStringLiteral("Two")},
                 answer(a, QStringLiteral("a1")), answer(b, QStringLiteral("b1")));
}

inline QList<QStringList> surveyCells()
{
    return {{QStringLiteral("Persona A"), QStringLiteral("a1"), QStringLiteral("why"), QString(), QString()},
            {QStringLiteral("Persona B"), QStringLiteral("b1"), QStringLiteral("why"), QString(), QString()}};
}

inline QStringList surveyTitles()
{
    return {QStringLiteral("Persona"), QStringLiteral("One"), QStringLiteral("Reasoning for One"),
            QStringLiteral("Two"), QStringLiteral("Reasoning for Two")};
}

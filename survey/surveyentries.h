#pragma once

#include <QList>
#include <QString>

class QSqlDatabase;

/// A persona as a run found it when it started.
struct PersonaEntry
{
    QString uuid;
    QString name;
    QString systemPrompt;
    QString attributes;
};

/// A question as a run found it when it started.
struct QuestionEntry
{
    int id = 0;
    QString prompt;
    /// Adjudicated: another model answers it, and its answer is left out of what the persona is sent later on.
    bool judge = false;
    QString answerType;
    /// The encoded column text, see questions/labels.h.
    QString labels;
    bool reasoningRequired = false;
};

/// The personas of the project by name. A failing statement gives an empty list.
QList<PersonaEntry> readPersonas(const QSqlDatabase &database);

/// The questions of the project in their order. A failing statement gives an empty list.
QList<QuestionEntry> readQuestions(const QSqlDatabase &database);

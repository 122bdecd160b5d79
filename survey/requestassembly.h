#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

struct PersonaEntry;
struct QuestionEntry;

// What is sent to the model when one persona is asked one question, made of plain values.

/// A question that the persona has answered before, and its answer as text (empty for one that is no text).
struct Exchange
{
    QString prompt;
    QString answer;
};

/// How the shape of the answer is demanded: by a forced function call, by a JSON format, or, all empty, not at all.
struct AnswerFormat
{
    QJsonArray tools;
    QJsonObject toolChoice;
    QJsonObject responseFormat;
};

/// Preamble, persona and postamble, each on lines of its own. A persona speaks from its system prompt if it has one,
/// and from its attributes only otherwise.
QString systemText(const QString &preamble, const PersonaEntry &persona, const QString &postamble);

/// The messages of a request: the system text if there is any, the earlier exchanges, the question.
QJsonArray chatMessages(const QString &systemText, const QList<Exchange> &history, const QString &prompt);

/// The format that the type of a question asks for. Only a single choice tells the model its labels.
AnswerFormat answerFormat(const QuestionEntry &question);

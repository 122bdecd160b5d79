#pragma once

#include <QList>
#include <QString>

#include <utility>

/// What a persona was sent and has said, up to a question.
struct ConversationLog
{
    QString systemPrompt;
    /// Prompts and answers.
    QList<std::pair<QString, QString>> exchanges;
    /// The prompt of the question that has no answer yet, empty where there is none.
    QString pendingQuestion;
};

/// The conversation as one text: the system text, then "Q: " and "A: " lines, without white space at its ends.
QString formatConversation(const ConversationLog &log);

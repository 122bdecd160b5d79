#include "inspect/conversation.h"

using namespace Qt::StringLiterals;

QString formatConversation(const ConversationLog &log)
{
    QString text = log.systemPrompt;
    if (!text.isEmpty())
        text += u'\n';
    for (const auto &[prompt, answer] : log.exchanges)
        text += "Q: "_L1 + prompt + "\nA: "_L1 + answer + u'\n';
    if (!log.pendingQuestion.isEmpty())
        text += "Q: "_L1 + log.pendingQuestion + "\nA: (pending)\n"_L1;
    return text.trimmed();
}

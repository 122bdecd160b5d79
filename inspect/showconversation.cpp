// What a persona has said, up to a chosen question, as one text: laid out from the boilerplate, the persona and the
// answers as they are now, and no record of the requests that were sent.

#include "app/mainwindow.h"
#include "inspect/conversation.h"
#include "inspect/newestanswers.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

/// The text that a persona speaks from, empty where it is not there.
static QString personaText(const QSqlDatabase &database, const QString &uuid)
{
    QSqlQuery query(database);
    query.prepare(u"SELECT system_prompt,attributes FROM personas WHERE uuid=?"_s);
    query.addBindValue(uuid);
    if (!query.exec() || !query.next())
        return {};
    const QString systemPrompt = query.value(0).toString();
    return systemPrompt.isEmpty() ? query.value(1).toString() : systemPrompt;
}

/// The persona's answers in the order of the questions, ending at the chosen one.
static void collectExchanges(const QSqlDatabase &database, const NewestAnswers::ByQuestion &answers, int chosen,
                             ConversationLog &log)
{
    QSqlQuery query(database);
    query.exec(u"SELECT question_id,prompt FROM questions ORDER BY order_num"_s);
    while (query.next()) {
        const int id = query.value(0).toInt();
        const QString prompt = query.value(1).toString();
        const QString answer = answers.value(id).answer;
        if (!answer.isEmpty())
            log.exchanges.append({prompt, answer});
        else if (id == chosen)
            log.pendingQuestion = prompt;
        if (id == chosen)
            return;
    }
}

void MainWindow::showConversation()
{
    if (!db.isOpen())
        return;
    const QString uuid = conversationPersonaCombo->currentData(Qt::UserRole).toString();
    const int chosen = conversationQuestionCombo->currentData(Qt::UserRole).toInt();

    ConversationLog log;
    log.systemPrompt = preambleEdit->toPlainText();
    if (!log.systemPrompt.isEmpty())
        log.systemPrompt += u'\n';
    log.systemPrompt += personaText(db, uuid);
    const QString postamble = postambleEdit->toPlainText();
    if (!postamble.isEmpty())
        log.systemPrompt += u'\n' + postamble;
    collectExchanges(db, NewestAnswers(db, parsedReasonings).of(uuid), chosen, log);
    conversationView->setPlainText(formatConversation(log));
}

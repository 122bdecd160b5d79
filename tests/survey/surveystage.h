#pragma once

#include "inspect/chatlogwindow.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "tests/support/stage.h"

#include <QAction>
#include <QJsonArray>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QSignalSpy>

/// One message of a request.
inline QJsonObject turn(const QString &role, const QString &content)
{
    return {{QStringLiteral("role"), role}, {QStringLiteral("content"), content}};
}

/// A stage with a key, whose requests end at an endpoint of its own. Runs are started as a user does and waited for by
/// the menu entry, which is enabled again at their end.
class SurveyStage : public Stage
{
public:
    SurveyStage() { setSetting(QStringLiteral("openai/api_key"), QStringLiteral("test-key")); }
    ~SurveyStage() { closeWindow(); }

    standin::ChatEndpoint endpoint;

    /// Gives the uuid.
    QString addPersona(const QString &name, const QString &description)
    {
        call("insertPersona", name, description);
        return value(QStringLiteral("SELECT uuid FROM personas ORDER BY rowid DESC")).toString();
    }
    /// Gives the question_id.
    int addQuestion(const QString &prompt, const QString &type = QStringLiteral("text"), bool reasoning = false,
                    const QString &labels = {})
    {
        call("insertQuestion", prompt, type, reasoning, labels);
        return value(QStringLiteral("SELECT MAX(question_id) FROM questions")).toInt();
    }

    /// Two personas and two questions, the personas not in the order of their names. They are asked as in twoByTwo.
    void fillTwoByTwo()
    {
        addPersona(QStringLiteral("P2"), QStringLiteral("P2"));
        addPersona(QStringLiteral("P1"), QStringLiteral("P1"));
        addQuestion(QStringLiteral("Q1"));
        addQuestion(QStringLiteral("Q2"));
    }
    const QStringList twoByTwo{QStringLiteral("P1 Q1"), QStringLiteral("P1 Q2"), QStringLiteral("P2 Q1"),
                               QStringLiteral("P2 Q2")};

    QAction *runEntry() { return action(QStringLiteral("Run")); }
    void startRun() { runEntry()->trigger(); }
    bool runEnded()
    {
        QSignalSpy changed(runEntry(), &QAction::enabledChanged);
        return runEntry()->isEnabled() || changed.wait();
    }
    bool run()
    {
        startRun();
        return runEnded();
    }

    /// Waits until this many requests have come in altogether.
    bool arrived(int count)
    {
        QSignalSpy arrival(&endpoint, &standin::ChatEndpoint::requestArrived);
        while (endpoint.requests().size() < count) {
            if (!arrival.wait())
                return false;
        }
        return true;
    }
    /// Who was asked what so far: the last lines of the system texts and the questions, as "persona question".
    QStringList asked() const
    {
        QStringList all;
        for (const standin::Request &request : endpoint.requests()) {
            const QJsonArray messages = request.json().value(u"messages").toArray();
            all << messages.first()[u"content"].toString().section(u'\n', -1) + u' ' +
                       messages.last()[u"content"].toString();
        }
        return all;
    }

    /// The pairs that have an answer, in the order of the answers, as "persona question".
    QStringList answered()
    {
        QStringList all;
        for (const QVariantList &row : rows(QStringLiteral("SELECT p.name || ' ' || q.prompt FROM responses r "
                                                           "JOIN personas p ON p.uuid=r.persona_uuid "
                                                           "JOIN questions q USING (question_id) ORDER BY r.id")))
            all << row.first().toString();
        return all;
    }

    ChatLogWindow *log() { return window()->findChild<ChatLogWindow *>(); }
    /// All entries, separated by line feeds.
    QString logText() { return log()->findChild<QPlainTextEdit *>()->toPlainText(); }

private:
    standin::Detour detour{endpoint};
};

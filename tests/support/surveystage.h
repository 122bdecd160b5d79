#pragma once

#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "tests/support/stage.h"

#include <QJsonObject>

class ChatLogWindow;

/// One message of a request.
QJsonObject turn(const QString &role, const QString &content);

/// A stage with a key, whose requests end at an endpoint of its own. Runs are started as a user does and waited for by
/// the menu entry, which is enabled again at their end.
class SurveyStage : public Stage
{
public:
    SurveyStage();
    ~SurveyStage() override;

    standin::ChatEndpoint endpoint;

    /// Enter one through the window's slots and give its uuid, its question_id.
    QString addPersona(const QString &name, const QString &description);
    int addQuestion(const QString &prompt, const QString &type = QStringLiteral("text"), bool reasoning = false,
                    const QString &labels = {});
    /// The uuid of a persona by its name, invalid where there is none.
    QVariant uuidOf(const QString &name);
    /// Two personas and two questions, the personas not in the order of their names. They are asked as in twoByTwo.
    void fillTwoByTwo();
    const QStringList twoByTwo{QStringLiteral("P1 Q1"), QStringLiteral("P1 Q2"), QStringLiteral("P2 Q1"),
                               QStringLiteral("P2 Q2")};

    QAction *runEntry() { return action(QStringLiteral("Run")); }
    void startRun() { runEntry()->trigger(); }
    /// Waits for the end of the run, as long as something comes of it now and then.
    bool runEnded();
    bool run();
    /// Waits until this many requests have come in altogether, in the same way.
    bool arrived(int count);

    /// Who was asked what so far: the last lines of the system texts and the questions, as "persona question".
    QStringList asked() const;
    /// The pairs that have an answer, in the order of the answers, as "persona question".
    QStringList answered();

private:
    bool waitUntil(const std::function<bool()> &reached);

    standin::Detour detour{endpoint};
};

/// The log window of the program, null where there is none.
ChatLogWindow *logWindow(Stage &stage);
/// The text of the log window, null where there is none.
QString logText(Stage &stage);

#pragma once

#include "tests/support/stage.h"

#include <functional>

class ChatLogWindow;
class QPlainTextEdit;

// What the tests of a run share. Panel and questionnaire are entered by SQL, without a refresh of the window.

/// A persona with the uuid "uuid-NAME".
bool addPersona(Stage &stage, const QString &name, const QString &attributes = {}, const QString &systemPrompt = {});
/// A question whose place in the questionnaire is its id.
bool addQuestion(Stage &stage, int id, const QString &prompt, const QString &type = QStringLiteral("text"));
/// An answer with the text "old"; created_at is a time of day of some day in the past.
bool addResponse(Stage &stage, const QString &name, int questionId, const QString &time = QStringLiteral("00:00:00"));
/// Two personas "A" and "B", two text questions 1 and 2 with the prompts "Q1" and "Q2", and no boilerplate.
bool addTwoByTwo(Stage &stage);
bool setBoilerplate(Stage &stage, const QVariant &preamble, const QVariant &postamble);
void setKey();

/// The pairs of names and question ids that have rows, in the order of the rows: "A1", "A2" ...
QStringList storedPairs(Stage &stage);

/// The log window of the program, null where there is none.
ChatLogWindow *logWindow(Stage &stage);
/// What the log window holds, an entry a line.
QStringList logEntries(Stage &stage);
/// Empties the log window.
void clearLog(Stage &stage);

/// A "-> " entry of the log: the roles in turn with their contents.
QString sent(const QList<std::pair<QString, QString>> &messages);

/// What a run does, in the order in which it shows: entries of the log window ("log ..."), refreshes of the grid
/// ("grid"), the program's warnings ("warning ...") and the switching of the run's menu entry ("run off", "run on").
class RunTrace : public QObject
{
    Q_OBJECT

public:
    /// To be made before there is a pair to ask: a run makes the log window where there is none yet.
    explicit RunTrace(Stage &stage);
    ~RunTrace() override;
    Q_DISABLE_COPY_MOVE(RunTrace)

    QStringList events;
    /// Called after each event.
    std::function<void(const QString &event)> react;

private:
    static void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message);
    void logChanged();
    void add(const QString &event);

    const QPlainTextEdit *log;
    int blocks;
    QtMessageHandler before;
};

/// The project as it stands, in a database of its own.
class ProjectCopy
{
public:
    explicit ProjectCopy(Stage &stage);
    ~ProjectCopy();
    Q_DISABLE_COPY_MOVE(ProjectCopy)

    static QSqlDatabase database();

private:
    QString file;
};

#pragma once

#include "tests/support/stage.h"

#include <functional>

class QJsonArray;
class QPlainTextEdit;

/// The "-> " entry of the log that tells the messages of a request.
QString sentEntry(const QJsonArray &messages);

/// What runs do, in the order in which it shows: entries of the log window ("log ..."), refreshes of the grid ("grid"),
/// the program's warnings ("warning ...") and the switching of the run's menu entry ("run off", "run on"). Refreshes
/// before the first run are left out. A warning fails the test unless it looks at the events.
class RunTrace
{
public:
    /// To be made before there is a pair to ask: a run makes the log window where there is none yet.
    explicit RunTrace(Stage &stage);
    ~RunTrace();
    Q_DISABLE_COPY_MOVE(RunTrace)

    const QStringList &events() const;
    /// What was asked: the "-> " entries.
    QStringList requests() const;
    void clear();

    /// Called after each event.
    std::function<void(const QString &event)> react;

private:
    static void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message);
    void logChanged();
    void add(const QString &event);

    const QPlainTextEdit *log;
    int blocks;
    bool begun = false;
    QStringList noted;
    mutable qsizetype read = 0;
    QtMessageHandler before;
    QObject context;
};

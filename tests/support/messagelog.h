#pragma once

#include <QStringList>

/// Collects what the program writes to Qt's logging while it lives, instead of its being printed. A warning that nobody
/// has asked for by the end fails the test, as it would without the log.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    Q_DISABLE_COPY_MOVE(MessageLog)

    /// The warnings so far, oldest first, without those of the platform plugin.
    const QStringList &warnings() const;
    /// What came through qInfo.
    const QStringList &infos() const { return infoTexts; }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);

    QStringList warningTexts;
    mutable qsizetype warningsRead = 0;
    QStringList infoTexts;
    QtMessageHandler before;
};

/// True for what the platform plugin without a display says of what it lacks.
bool isPlatformRemark(const QString &message);

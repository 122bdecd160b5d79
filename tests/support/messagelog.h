#pragma once

#include <QStringList>

/// Collects what the program writes to Qt's logging while it lives, instead of its being printed.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    Q_DISABLE_COPY_MOVE(MessageLog)

    /// The warnings so far, oldest first, without those of the platform plugin.
    QStringList warnings() const { return warningTexts; }
    /// What came through qInfo.
    QStringList infos() const { return infoTexts; }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);

    QStringList warningTexts;
    QStringList infoTexts;
    QtMessageHandler before;
};

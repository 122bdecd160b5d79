#include "tests/support/messagelog.h"

using namespace Qt::StringLiterals;

static MessageLog *current = nullptr;

MessageLog::MessageLog()
    : before(qInstallMessageHandler(handle))
{
    Q_ASSERT(current == nullptr);
    current = this;
}

MessageLog::~MessageLog()
{
    current = nullptr;
    qInstallMessageHandler(before);
}

void MessageLog::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && !message.startsWith("This plugin does not support"_L1))
        current->warningTexts.append(message);
    else if (type == QtInfoMsg)
        current->infoTexts.append(message);
    else if (type == QtCriticalMsg || type == QtFatalMsg)
        current->before(type, context, message);
}

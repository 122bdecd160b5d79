#include "tests/support/messagelog.h"

#include <QTest>

using namespace Qt::StringLiterals;

static MessageLog *current = nullptr;

bool isPlatformRemark(const QString &message)
{
    return message.startsWith("This plugin does not support"_L1);
}

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
    if (warningsRead < warningTexts.size()) {
        const QString unread = warningTexts.sliced(warningsRead).join(u'\n');
        QTest::qFail(qUtf8Printable("warnings that nobody expected: "_L1 + unread), __FILE__, __LINE__);
    }
}

const QStringList &MessageLog::warnings() const
{
    warningsRead = warningTexts.size();
    return warningTexts;
}

void MessageLog::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && !isPlatformRemark(message))
        current->warningTexts.append(message);
    else if (type == QtInfoMsg)
        current->infoTexts.append(message);
    else if (type == QtCriticalMsg || type == QtFatalMsg)
        current->before(type, context, message);
}

#include "tests/survey/runtrace.h"

#include "inspect/chatlogwindow.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"

#include <QAction>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTableWidget>
#include <QTextBlock>

using namespace Qt::StringLiterals;

QString sentEntry(const QJsonArray &messages)
{
    return "-> "_L1 + QString::fromUtf8(QJsonDocument(messages).toJson(QJsonDocument::Compact));
}

static RunTrace *currentTrace = nullptr;

RunTrace::RunTrace(Stage &stage)
{
    if (logWindow(stage) == nullptr) {
        stage.call("runSurvey");
        // The runner is only gone with its deferred deletion.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    keepGridRebuilt(stage);
    log = logWindow(stage)->findChild<QPlainTextEdit *>();
    blocks = log->document()->isEmpty() ? 0 : log->blockCount();
    QObject::connect(log, &QPlainTextEdit::textChanged, &context, [this] { logChanged(); });
    QObject::connect(resultsTable(stage)->model(), &QAbstractItemModel::modelReset, &context, [this] {
        if (begun)
            add(u"grid"_s);
    });
    QObject::connect(stage.action(u"Run"_s), &QAction::enabledChanged, &context, [this](bool enabled) {
        begun = true;
        add(enabled ? u"run on"_s : u"run off"_s);
    });
    currentTrace = this;
    before = qInstallMessageHandler(handleMessage);
}

RunTrace::~RunTrace()
{
    qInstallMessageHandler(before);
    currentTrace = nullptr;
    const QStringList unread = noted.sliced(read).filter(QRegularExpression(u"^warning "_s));
    if (!unread.isEmpty())
        QTest::qFail(qUtf8Printable(unread.join(u'\n')), __FILE__, __LINE__);
}

const QStringList &RunTrace::events() const
{
    read = noted.size();
    return noted;
}

QStringList RunTrace::requests() const
{
    QStringList entries;
    for (const QString &event : noted) {
        if (event.startsWith("log -> "_L1))
            entries.append(event.sliced(4));
    }
    return entries;
}

void RunTrace::clear()
{
    noted.clear();
    read = 0;
}

void RunTrace::handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Qt has a category for each of its own warnings, the program none.
    if (type != QtWarningMsg)
        currentTrace->before(type, context, message);
    else if (qstrcmp(context.category, "default") == 0 && !isPlatformRemark(message))
        currentTrace->add("warning "_L1 + message);
}

void RunTrace::logChanged()
{
    for (; blocks < log->blockCount(); ++blocks)
        add("log "_L1 + log->document()->findBlockByNumber(blocks).text());
}

void RunTrace::add(const QString &event)
{
    noted.append(event);
    // A copy, since the function may replace itself.
    const auto reaction = react;
    if (reaction)
        reaction(event);
}

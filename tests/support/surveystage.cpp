#include "tests/support/surveystage.h"

#include "inspect/chatlogwindow.h"
#include "tests/support/patience.h"

#include <QAction>
#include <QEventLoop>
#include <QJsonArray>
#include <QPlainTextEdit>
#include <QTimer>

using namespace Qt::StringLiterals;

QJsonObject turn(const QString &role, const QString &content)
{
    return {{u"role"_s, role}, {u"content"_s, content}};
}

SurveyStage::SurveyStage()
{
    setSetting(u"openai/api_key"_s, u"test-key"_s);
}

SurveyStage::~SurveyStage()
{
    closeWindow();
}

QString SurveyStage::addPersona(const QString &name, const QString &description)
{
    call("insertPersona", name, description);
    return value(u"SELECT uuid FROM personas ORDER BY rowid DESC"_s).toString();
}

int SurveyStage::addQuestion(const QString &prompt, const QString &type, bool reasoning, const QString &labels)
{
    call("insertQuestion", prompt, type, reasoning, labels);
    return value(u"SELECT MAX(question_id) FROM questions"_s).toInt();
}

QVariant SurveyStage::uuidOf(const QString &name)
{
    return value(u"SELECT uuid FROM personas WHERE name=?"_s, {name});
}

void SurveyStage::fillTwoByTwo()
{
    addPersona(u"P2"_s, u"P2"_s);
    addPersona(u"P1"_s, u"P1"_s);
    addQuestion(u"Q1"_s);
    addQuestion(u"Q2"_s);
}

/// False where nothing happens for so long that nothing more is to be expected.
bool SurveyStage::waitUntil(const std::function<bool()> &reached)
{
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &loop, [&loop] { loop.exit(1); });
    const auto look = [&] {
        deadline.start(patience);
        if (reached())
            loop.exit(0);
    };
    QObject::connect(&endpoint, &standin::ChatEndpoint::requestArrived, &loop, look, Qt::QueuedConnection);
    QObject::connect(&endpoint, &standin::ChatEndpoint::replied, &loop, look, Qt::QueuedConnection);
    QObject::connect(&endpoint, &standin::ChatEndpoint::connectionClosed, &loop, look, Qt::QueuedConnection);
    QObject::connect(runEntry(), &QAction::enabledChanged, &loop, look, Qt::QueuedConnection);
    if (reached())
        return true;
    deadline.start(patience);
    return loop.exec() == 0;
}

bool SurveyStage::runEnded()
{
    return waitUntil([this] { return runEntry()->isEnabled(); });
}

bool SurveyStage::run()
{
    startRun();
    return runEnded();
}

bool SurveyStage::arrived(int count)
{
    return waitUntil([this, count] { return endpoint.requests().size() >= count; });
}

QStringList SurveyStage::asked() const
{
    QStringList all;
    for (const standin::Request &request : endpoint.requests()) {
        const QJsonArray messages = request.json().value(u"messages").toArray();
        all << messages.first()[u"content"].toString().section(u'\n', -1) + u' ' +
                   messages.last()[u"content"].toString();
    }
    return all;
}

QStringList SurveyStage::answered()
{
    return column(u"SELECT p.name || ' ' || q.prompt FROM responses r JOIN personas p ON p.uuid=r.persona_uuid "
                  "JOIN questions q USING (question_id) ORDER BY r.id"_s);
}

ChatLogWindow *logWindow(Stage &stage)
{
    return stage.window()->findChild<ChatLogWindow *>();
}

QString logText(Stage &stage)
{
    const ChatLogWindow *log = logWindow(stage);
    return log != nullptr ? log->findChild<QPlainTextEdit *>()->toPlainText() : QString();
}

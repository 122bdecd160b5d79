#include "tests/survey/walkkit.h"

#include "inspect/chatlogwindow.h"

#include <QAction>
#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QSqlQuery>
#include <QTextBlock>

using namespace Qt::StringLiterals;

bool addPersona(Stage &stage, const QString &name, const QString &attributes, const QString &systemPrompt)
{
    return stage.exec(u"INSERT INTO personas (uuid, name, attributes, system_prompt) VALUES (?,?,?,?)"_s,
                      {QString("uuid-"_L1 + name), name, attributes, systemPrompt});
}

bool addQuestion(Stage &stage, int id, const QString &prompt, const QString &type)
{
    return stage.exec(u"INSERT INTO questions (question_id, order_num, prompt, answer_type) VALUES (?,?,?,?)"_s,
                      {id, id, prompt, type});
}

bool addResponse(Stage &stage, const QString &name, int questionId, const QString &time)
{
    return stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, created_at) "
                      "VALUES (?,?,'old',?)"_s,
                      {QString("uuid-"_L1 + name), questionId, QString("2001-02-03 "_L1 + time)});
}

bool addTwoByTwo(Stage &stage)
{
    // Not in the order of the run, so that the run has to bring them into it.
    return setBoilerplate(stage, QVariant(), QVariant()) && addPersona(stage, u"B"_s) && addPersona(stage, u"A"_s) &&
           addQuestion(stage, 2, u"Q2"_s) && addQuestion(stage, 1, u"Q1"_s);
}

bool setBoilerplate(Stage &stage, const QVariant &preamble, const QVariant &postamble)
{
    return stage.exec(u"DELETE FROM boilerplate"_s) &&
           stage.exec(u"INSERT INTO boilerplate (preamble, postamble) VALUES (?,?)"_s, {preamble, postamble});
}

void setKey()
{
    Stage::setSetting(u"openai/api_key"_s, u"none"_s);
}

QStringList storedPairs(Stage &stage)
{
    QStringList pairs;
    const auto rows = stage.rows(u"SELECT substr(persona_uuid, 6) || question_id FROM responses ORDER BY id"_s);
    for (const QVariantList &row : rows)
        pairs.append(row.first().toString());
    return pairs;
}

ChatLogWindow *logWindow(Stage &stage)
{
    return stage.window()->findChild<ChatLogWindow *>();
}

static QPlainTextEdit *logView(Stage &stage)
{
    return logWindow(stage)->findChild<QPlainTextEdit *>();
}

QStringList logEntries(Stage &stage)
{
    return logView(stage)->toPlainText().split(u'\n', Qt::SkipEmptyParts);
}

void clearLog(Stage &stage)
{
    logView(stage)->clear();
}

QString sent(const QList<std::pair<QString, QString>> &messages)
{
    QJsonArray array;
    for (const auto &[role, content] : messages)
        array.append(QJsonObject{{u"role"_s, role}, {u"content"_s, content}});
    return "-> "_L1 + QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

static RunTrace *current = nullptr;

RunTrace::RunTrace(Stage &stage)
{
    if (logWindow(stage) == nullptr) {
        stage.call("runSurvey");
        // The runner is only gone with its deferred deletion.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    log = logView(stage);
    blocks = log->document()->isEmpty() ? 0 : log->blockCount();
    connect(log, &QPlainTextEdit::textChanged, this, &RunTrace::logChanged);
    connect(stage.find<QTableWidget>(u"resultsTable"_s)->model(), &QAbstractItemModel::modelReset, this,
            [this] { add(u"grid"_s); });
    connect(stage.action(u"Run"_s), &QAction::enabledChanged, this,
            [this](bool enabled) { add(enabled ? u"run on"_s : u"run off"_s); });
    current = this;
    before = qInstallMessageHandler(handleMessage);
}

RunTrace::~RunTrace()
{
    qInstallMessageHandler(before);
    current = nullptr;
}

void RunTrace::handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Qt has a category for each of its own warnings, the program none.
    if (type != QtWarningMsg)
        current->before(type, context, message);
    else if (qstrcmp(context.category, "default") == 0 && !message.startsWith("This plugin does not support"_L1))
        current->add("warning "_L1 + message);
}

void RunTrace::logChanged()
{
    for (; blocks < log->blockCount(); ++blocks)
        add("log "_L1 + log->document()->findBlockByNumber(blocks).text());
}

void RunTrace::add(const QString &event)
{
    events.append(event);
    // A copy, since the function may replace itself.
    const auto reaction = react;
    if (reaction)
        reaction(event);
}

ProjectCopy::ProjectCopy(Stage &stage)
    : file(stage.path(u"copy.db"_s))
{
    QFile::remove(file);
    if (!stage.exec(u"VACUUM INTO ?"_s, {file}))
        qFatal("no copy of the project");
    QSqlDatabase copy = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"copy"_s);
    copy.setDatabaseName(file);
    if (!copy.open())
        qFatal("the copy does not open");
    QSqlQuery(copy).exec(u"PRAGMA synchronous=OFF"_s);
}

ProjectCopy::~ProjectCopy()
{
    QSqlDatabase::removeDatabase(u"copy"_s);
}

QSqlDatabase ProjectCopy::database()
{
    return QSqlDatabase::database(u"copy"_s);
}

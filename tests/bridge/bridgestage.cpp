#include "tests/bridge/bridgestage.h"

#include "tests/support/entries.h"

#include <QDir>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>
#include <QSettings>

using namespace Qt::StringLiterals;

BridgeStage::BridgeStage()
{
    endpoint.takePlainRequests();
    setVariable(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    for (const QString &name : {u"http_proxy"_s, u"https_proxy"_s, u"no_proxy"_s, u"all_proxy"_s}) {
        unsetVariable(name);
        unsetVariable(name.toUpper());
    }
    setVariable(u"HOME"_s, folder.path());
    setVariable(u"XDG_CONFIG_HOME"_s, path(u".config"_s));
}

BridgeStage::~BridgeStage()
{
    for (const auto &process : processes) {
        process->kill();
        process->waitForFinished();
    }
}

QStringList BridgeStage::toEndpoint() const
{
    return {u"--to"_s, u"http://127.0.0.1:%1/v1"_s.arg(endpoint.port())};
}

QStringList BridgeStage::throughProxy()
{
    setVariable(u"https_proxy"_s, u"http://127.0.0.1:%1"_s.arg(endpoint.port()));
    const auto shown = standin::certificateFor(standin::Identity::Good);
    return {u"--ca"_s, writeBytes(path(u"root.pem"_s), shown.certificate.toPem())};
}

void BridgeStage::setKey(const QString &key)
{
    QSettings settings(path(u".config/Orrinet/Orrinet.conf"_s), QSettings::IniFormat);
    settings.setValue(u"openai/api_key"_s, key);
}

QProcess *BridgeStage::start(const QStringList &arguments)
{
    QProcess *process = processes.emplace_back(std::make_unique<QProcess>()).get();
    process->setProcessEnvironment(variables);
    process->setWorkingDirectory(folder.path());
    if (childModifier)
        process->setChildProcessModifier(childModifier);
    process->start(QStringLiteral(ORRINET_BRIDGE), arguments);
    return process;
}

BridgeStage::Ended BridgeStage::waitForEnd(QProcess *process)
{
    if (process->state() != QProcess::NotRunning) {
        QEventLoop loop;
        QObject::connect(process, &QProcess::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    Ended ended;
    ended.output = QString::fromUtf8(process->readAllStandardOutput());
    ended.errors = QString::fromUtf8(process->readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
    if (process->exitStatus() == QProcess::NormalExit && process->error() == QProcess::UnknownError)
        ended.status = process->exitCode();
    return ended;
}

bool BridgeStage::waitUntil(QProcess *process, const std::function<bool()> &reached)
{
    QEventLoop loop;
    const auto look = [&] {
        if (reached() || process->state() == QProcess::NotRunning)
            loop.quit();
    };
    QObject::connect(&endpoint, &standin::ChatEndpoint::requestArrived, &loop, look, Qt::QueuedConnection);
    QObject::connect(&endpoint, &standin::ChatEndpoint::replied, &loop, look, Qt::QueuedConnection);
    QObject::connect(&endpoint, &standin::ChatEndpoint::connectionClosed, &loop, look, Qt::QueuedConnection);
    QObject::connect(process, &QProcess::readyReadStandardError, &loop, look, Qt::QueuedConnection);
    QObject::connect(process, &QProcess::finished, &loop, look, Qt::QueuedConnection);
    if (!reached() && process->state() != QProcess::NotRunning)
        loop.exec();
    return reached();
}

bool BridgeStage::arrived(QProcess *process, qsizetype requests)
{
    return waitUntil(process, [this, requests] { return endpoint.requests().size() >= requests; });
}

bool BridgeStage::said(QProcess *process, const QByteArray &text)
{
    process->setReadChannel(QProcess::StandardError);
    return waitUntil(process, [process, text] { return process->peek(process->bytesAvailable()).contains(text); });
}

QProcess *BridgeStage::startProject(const QString &project, const QString &copy, const QStringList &others)
{
    return start(toEndpoint() + QStringList{u"--run"_s, project, u"--save"_s, copy} + others);
}

BridgeStage::Ended BridgeStage::runProject(const QString &project, const QString &copy, const QStringList &others)
{
    return waitForEnd(startProject(project, copy, others));
}

BridgeStage::Ended BridgeStage::goOn(const QString &project, const QStringList &others)
{
    return run(toEndpoint() + QStringList{u"--run"_s, project, u"--in-place"_s} + others);
}

QString writeSurvey(const QString &path, int personas, int questions)
{
    writeProject(path);
    SideDatabase project(path);
    project.exec(u"BEGIN"_s);
    for (int number = 1; number <= personas; ++number) {
        const QString name = QString(u'P' + QString::number(number).rightJustified(4, u'0'));
        enter(project,
              PersonaEntered{.uuid = u"uuid-%1"_s.arg(name), .name = name, .attributes = u"You are %1"_s.arg(name)});
    }
    for (int number = 1; number <= questions; ++number)
        enter(project, QuestionEntered{.prompt = u"Q%1"_s.arg(number)});
    project.exec(u"COMMIT"_s);
    return path;
}

QStringList answeredPairs(const QString &project)
{
    SideDatabase file(project);
    return file.column(u"SELECT p.name || ' ' || q.prompt FROM responses r JOIN personas p ON p.uuid = r.persona_uuid "
                       "JOIN questions q USING (question_id) ORDER BY 1"_s);
}

QString pairOf(const standin::Request &request)
{
    const QJsonArray messages = request.json()["messages"_L1].toArray();
    return messages.first()["content"_L1].toString().section(u' ', -1) + u' ' +
           messages.last()["content"_L1].toString();
}

QStringList askedPairs(const BridgeStage &stage)
{
    QStringList pairs;
    for (const standin::Request &request : stage.endpoint.requests())
        pairs << pairOf(request);
    return pairs;
}

QStringList storedAnswers(const QString &project)
{
    SideDatabase file(project);
    return literals(file.database(),
                    u"SELECT r.persona_uuid, r.question_id, r.text_answer, r.numeric_answer, r.json_answer, "
                    "r.question_serial, r.model, r.temperature, r.token_usage FROM responses r ORDER BY 1, 2, 3"_s);
}

QString integrityOf(const QString &project)
{
    SideDatabase file(project);
    return file.column(u"PRAGMA integrity_check"_s).join(u"; "_s);
}

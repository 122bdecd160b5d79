#pragma once

#include "standin/chatendpoint.h"
#include "tests/support/sidedatabase.h"

#include <QProcess>
#include <QTemporaryDir>

#include <functional>

/// The real program orrinet-bridge in a process of its own, with a home of its own, and an endpoint in this one that
/// takes plain requests, as a model on this machine does.
class BridgeStage
{
public:
    BridgeStage();
    ~BridgeStage();
    Q_DISABLE_COPY_MOVE(BridgeStage)

    standin::ChatEndpoint endpoint;

    QString path(const QString &name) const { return folder.filePath(name); }
    /// The option that leads to the endpoint.
    QStringList toEndpoint() const;
    /// Stores a key in the preferences of that home.
    void setKey(const QString &key);
    /// A variable of the program's environment.
    void setVariable(const QString &name, const QString &value) { variables.insert(name, value); }
    void unsetVariable(const QString &name) { variables.remove(name); }
    /// What the processes started from here on do in the child, before the program; only what a signal handler may do.
    void setChildModifier(const std::function<void()> &modifier) { childModifier = modifier; }
    /// The options that lead to the endpoint by TLS, through a proxy as the system may name one, for any https address.
    QStringList throughProxy();

    struct Ended
    {
        int status = -1; ///< -1 where it did not end by itself
        QString output;
        QStringList errors; ///< the lines of its error output
    };

    /// Starts the program; it is ended with this object at the latest.
    QProcess *start(const QStringList &arguments);
    /// Waits in the event loop, so that the endpoint can answer.
    Ended waitForEnd(QProcess *process);
    /// Waits in the same way until something is so, which is looked at whenever the endpoint or the process does
    /// something; false where the process ends before.
    bool waitUntil(QProcess *process, const std::function<bool()> &reached);
    /// The same for something on its error output.
    bool said(QProcess *process, const QByteArray &text);
    /// The same for this many requests altogether.
    bool arrived(QProcess *process, qsizetype requests);
    Ended run(const QStringList &arguments) { return waitForEnd(start(arguments)); }
    /// Runs a project to its end, with a copy of this name, at the endpoint.
    Ended runProject(const QString &project, const QString &copy, const QStringList &others = {});
    QProcess *startProject(const QString &project, const QString &copy, const QStringList &others = {});
    /// Goes on in a project to its end.
    Ended goOn(const QString &project, const QStringList &others = {});

private:
    QTemporaryDir folder;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    std::function<void()> childModifier;
    std::vector<std::unique_ptr<QProcess>> processes;
};

/// Makes a project of this many personas, "P1", "P2" ..., and text questions, "Q1", "Q2" ..., and gives its path.
QString writeSurvey(const QString &path, int personas, int questions);

/// The pairs that have an answer in a project, as "persona question", sorted.
QStringList answeredPairs(const QString &project);
/// The pair that a request of such a survey is about, in the same form.
QString pairOf(const standin::Request &request);
/// The pairs of all requests so far, in their order.
QStringList askedPairs(const BridgeStage &stage);
/// All answers of a project, in the order of their pairs, without their numbers and times.
QStringList storedAnswers(const QString &project);
/// What SQLite finds wrong with a file, "ok" where it is whole.
QString integrityOf(const QString &project);

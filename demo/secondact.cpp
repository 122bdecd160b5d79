#include "demo/secondact.h"

#include "demo/secondlook.h"
#include "standin/chatendpoint.h"
#include "standin/respondent.h"
#include "standin/strictness.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

namespace {

/// What a project file holds, read by a connection of its own.
class ProjectFile
{
public:
    explicit ProjectFile(const QString &path)
        : database(QSqlDatabase::addDatabase(u"QSQLITE"_s, u"second act"_s))
    {
        database.setDatabaseName(path);
        database.open();
    }
    ~ProjectFile()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(u"second act"_s);
    }
    Q_DISABLE_COPY_MOVE(ProjectFile)

    bool forgetAnswers() { return QSqlQuery(database).exec(u"DELETE FROM responses"_s); }

    /// Every answer with its three columns, in an order that does not depend on when it came.
    QStringList answers() const
    {
        QSqlQuery query(u"SELECT persona_uuid, question_id, text_answer, numeric_answer, json_answer FROM responses "
                        "ORDER BY persona_uuid, question_id"_s,
                        database);
        QStringList rows;
        while (query.next()) {
            QStringList values;
            for (int column = 0; column < 5; ++column)
                values << query.value(column).toString();
            rows << values.join(u'\t');
        }
        return rows;
    }

private:
    QSqlDatabase database;
};

} // namespace

SecondAct::SecondAct(const QString &bridge, const QDir &folder, QTextStream &out)
    : program(bridge)
    , files(folder)
    , output(out)
{
}

QString SecondAct::path(const QString &name) const
{
    return files.filePath(name);
}

/// In the event loop, so that the endpoint of this process can answer.
bool SecondAct::run(const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    QEventLoop loop;
    QObject::connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    process.start(program, arguments);
    loop.exec();
    return process.exitStatus() == QProcess::NormalExit && process.error() == QProcess::UnknownError &&
           process.exitCode() == 0;
}

bool SecondAct::runAtEndpoint()
{
    standin::ChatEndpoint endpoint;
    endpoint.takePlainRequests();
    endpoint.answerWith(standin::strict(&standin::respond));
    output
        << "the endpoint is as strict as the hosted service is reported to be; four personas are asked at a time\n"_L1;
    output.flush();
    const bool done = run({u"--to"_s, u"http://127.0.0.1:%1/v1"_s.arg(endpoint.port()), u"--run"_s,
                           path(u"unanswered.ormt"_s), u"--save"_s, path(u"bridged.ormt"_s), u"--record"_s,
                           path(u"record.jsonl"_s), u"--jobs"_s, u"4"_s, u"--quiet"_s});
    output << "asked: "_L1 << endpoint.requests().size()
           << " requests; bridged.ormt has the answers, record.jsonl what "
           << "went over the wire\n"_L1;
    output.flush();
    return done;
}

bool SecondAct::runFromRecord()
{
    output << "the same once more from the record: there is no endpoint now\n"_L1;
    output.flush();
    return run({u"--to"_s, u"http://127.0.0.1:9/v1"_s, u"--run"_s, path(u"unanswered.ormt"_s), u"--save"_s,
                path(u"replayed.ormt"_s), u"--replay"_s, path(u"record.jsonl"_s), u"--quiet"_s});
}

QStringList SecondAct::play()
{
    output << "\nsecond act: the survey without a window, through orrinet-bridge\n"_L1;
    for (const auto &name : {u"unanswered.ormt"_s, u"bridged.ormt"_s, u"replayed.ormt"_s, u"record.jsonl"_s})
        QFile::remove(path(name));
    if (!QFile::copy(DemoFile::project(files), path(u"unanswered.ormt"_s)) ||
        !ProjectFile(path(u"unanswered.ormt"_s)).forgetAnswers())
        return {path(u"unanswered.ormt"_s) + u": the survey cannot be written"_s};
    if (!runAtEndpoint())
        return {u"the bridge did not get an answer for each pair"_s};
    if (!runFromRecord())
        return {u"the record did not give an answer for each pair"_s};
    const QStringList asked = ProjectFile(path(u"bridged.ormt"_s)).answers();
    const QStringList replayed = ProjectFile(path(u"replayed.ormt"_s)).answers();
    output << "replayed.ormt: "_L1 << replayed.size() << " answers, "_L1
           << (asked == replayed ? "all of them the same"_L1 : "not the same"_L1) << '\n';
    output.flush();
    return asked == replayed ? QStringList() : QStringList{u"the replay gave other answers"_s};
}

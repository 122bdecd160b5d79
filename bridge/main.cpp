#include "app/mainwindow.h"
#include "bridge/answerfile.h"
#include "bridge/bridge.h"
#include "bridge/endpoint.h"
#include "bridge/interrupt.h"
#include "bridge/options.h"
#include "bridge/projectrun.h"
#include "bridge/reporter.h"
#include "bridge/settingscopy.h"
#include "loopback/detour.h"
#include "preferences/settings.h"

#include <QApplication>
#include <QSslCertificate>

#include <cstdio>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace bridge;

static int failed(Exit status, const QString &reason)
{
    std::fprintf(stderr, "orrinet-bridge: %s\n", qUtf8Printable(reason));
    return int(status);
}

static QUrl completionsOf(QUrl base)
{
    QString path = base.path();
    while (path.endsWith(u'/'))
        path.chop(1);
    base.setPath(path + "/chat/completions"_L1);
    return base;
}

/// All that both forms of the program need: the way out, the bridge, and the detour that leads there.
struct Road
{
    std::unique_ptr<Endpoint> endpoint;
    std::unique_ptr<Bridge> bridge;
    std::optional<loopback::Detour> detour;
};

static QString openRoad(Road &road, const Options &options, bool forwardsKey)
{
    Route route;
    route.url = completionsOf(options.to);
    route.timeout = options.timeout;
    route.retry.retries = options.retries;
    route.jobs = options.jobs;
    if (!options.roots.isEmpty()) {
        route.extraRoots = QSslCertificate::fromPath(options.roots);
        if (route.extraRoots.isEmpty())
            return u"%1 holds no certificate"_s.arg(options.roots);
    }
    const QByteArray key = options.keyEnv.isEmpty() ? QByteArray() : qgetenv(options.keyEnv.toLocal8Bit().constData());
    road.endpoint = std::make_unique<Endpoint>(route);
    road.bridge = std::make_unique<Bridge>(BridgeOptions{.format = options.format,
                                                         .models = options.models,
                                                         .budget = options.budget,
                                                         .key = key,
                                                         .forwardsKey = forwardsKey,
                                                         .replays = !options.replay.isEmpty(),
                                                         .holdsRefused = !options.run.isEmpty()},
                                           road.endpoint.get());
    Bridge &bridge = *road.bridge;
    if (!options.record.isEmpty() && !bridge.record().open(options.record))
        return u"%1 can't be written: %2"_s.arg(options.record, bridge.record().errorText());
    if (!options.replay.isEmpty() && !bridge.replay().open(options.replay))
        return u"%1 can't be read: %2"_s.arg(options.replay, bridge.replay().errorText());
    if (const int damaged = bridge.replay().damagedLines(); damaged > 0)
        std::fprintf(stderr, "orrinet-bridge: %d damaged line%s in %s passed over\n", damaged, damaged == 1 ? "" : "s",
                     qUtf8Printable(options.replay));
    if (!bridge.listen())
        return u"no port of this machine can be had"_s;
    road.detour.emplace(bridge.port(), bridge.certificate(), bridge.user(), bridge.password());
    return {};
}

static int showWindow(int argc, char *argv[], const Options &options)
{
    const QApplication application(argc, argv);
    Road road;
    if (const QString reason = openRoad(road, options, true); !reason.isEmpty())
        return failed(Exit::File, reason);
    const std::unique_ptr<Reporter> reporter(options.quiet ? nullptr : new Reporter(road.bridge.get(), -1));
    MainWindow window(nullptr);
    window.show();
    const int status = QApplication::exec();
    if (reporter)
        reporter->summarise(-1);
    return status;
}

/// The bridge tells of each failure itself.
static void dropSurveyErrors()
{
    static QtMessageHandler former = nullptr;
    former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!message.startsWith("survey error:"_L1))
            former(type, context, message);
    });
}

static int outcome(const AnswerFile &file, const Road &road, qsizetype unstored, bool replays)
{
    if (unstored > 0)
        return failed(Exit::File, u"%1 answers could not be stored: %2"_s.arg(unstored).arg(file.errorText()));
    if (const qint64 unrecorded = road.bridge->tally().unrecorded; unrecorded > 0)
        return failed(
            Exit::File,
            u"%1 exchanges could not be recorded: %2"_s.arg(unrecorded).arg(road.bridge->record().errorText()));
    if (file.openPairs() == 0)
        return int(Exit::AllAnswered);
    return int(!replays && road.bridge->tally().sent > 0 && !road.endpoint->hasAnswered() ? Exit::NoEndpoint
                                                                                          : Exit::SomeOpen);
}

static int runProject(int argc, char *argv[], const Options &options)
{
    // In test mode the program would make the answers up itself.
    qunsetenv("ORRINET_TEST_MODE");
    dropSurveyErrors();
    const QCoreApplication application(argc, argv);
    if (!options.inPlace) {
        if (const QString reason = AnswerFile::copy(options.run, options.save); !reason.isEmpty())
            return failed(Exit::File, reason);
    }
    AnswerFile file;
    if (const QString reason = file.open(options.inPlace ? options.run : options.save); !reason.isEmpty())
        return failed(Exit::File, reason);

    const bool hasKey = !Settings::apiKey().isEmpty();
    const std::optional<SettingsCopy> settings = hasKey ? std::nullopt : std::make_optional<SettingsCopy>();
    Road road;
    if (const QString reason = openRoad(road, options, hasKey); !reason.isEmpty())
        return failed(Exit::File, reason);
    const std::unique_ptr<Reporter> reporter(options.quiet ? nullptr
                                                           : new Reporter(road.bridge.get(), file.openPairs()));
    ProjectRun run(&file, road.bridge.get(), options.jobs);
    const Interrupt interrupt;
    QObject::connect(&interrupt, &Interrupt::requested, road.bridge.get(),
                     [&road] { road.bridge->stop(u"interrupted"_s); });
    // An endpoint that was never there will not answer the other pairs either.
    QObject::connect(road.bridge.get(), &Bridge::exchangeEnded, road.bridge.get(),
                     [&road, &options](const Exchange &exchange) {
                         if (options.replay.isEmpty() && !road.endpoint->hasAnswered() && exchange.attempts > 0)
                             road.bridge->stop(u"no endpoint at %1: %2"_s.arg(options.to.toString(), exchange.failure));
                     });
    bool over = false;
    QObject::connect(&run, &ProjectRun::ended, &application, [&over] {
        over = true;
        QCoreApplication::exit();
    });
    run.start();
    if (!over)
        QCoreApplication::exec();
    if (reporter)
        reporter->summarise(file.openPairs());
    return outcome(file, road, run.unstored(), !options.replay.isEmpty());
}

int main(int argc, char *argv[])
{
    // The settings are the program's.
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);
    const auto options = readOptions(argc, argv);
    if (const int *status = std::get_if<int>(&options))
        return *status;
    const Options &wanted = std::get<Options>(options);
    if (!wanted.keyEnv.isEmpty() && qEnvironmentVariableIsEmpty(wanted.keyEnv.toLocal8Bit().constData()))
        return failed(Exit::Usage, u"the environment has no variable %1"_s.arg(wanted.keyEnv));
    return wanted.run.isEmpty() ? showWindow(argc, argv, wanted) : runProject(argc, argv, wanted);
}

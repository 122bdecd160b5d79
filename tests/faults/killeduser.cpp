// The user of tst_killed, in a process of their own: starts the program, opens the project that was saved earlier,
// tells what is in it, and does one thing, in which the process comes to its end.

#include "tests/faults/killeduser.h"

#include "standin/privatehome.h"
#include "tests/faults/systemcalls.h"
#include "tests/preferences/preferencesbox.h"
#include "tests/support/modal.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QCryptographicHash>
#include <QSettings>

#include <cstdio>
#include <memory>

#include <unistd.h>

using namespace Qt::StringLiterals;
using Operation = KilledUser::Operation;

namespace {

constexpr const char *variable = "ORRINET_KILLED_USER";

void tell(const QString &line)
{
    std::puts(qPrintable(line));
    std::fflush(stdout);
}

KilledUser fromEnvironment()
{
    const QStringList parts = qEnvironmentVariable(variable).split(u'|');
    return {.operation = Operation(parts.at(0).toInt()),
            .folder = parts.at(1),
            .target = parts.at(2),
            .moment = parts.at(3).toDouble(),
            .hundredths = parts.at(4).toInt(),
            .waits = parts.at(5).toInt() != 0};
}

class Playing
{
public:
    explicit Playing(const KilledUser &asUser)
        : user(asUser)
    {
        // Only a run needs the network, and TLS takes its time to start.
        if (runs())
            network = std::make_unique<SurveyStage>();
        else
            alone = std::make_unique<Stage>();
        leaveUsersHome(user.folder + "/home"_L1);
        stage().window()->show();
    }

    /// False where the earlier project can't be opened.
    bool start()
    {
        const bool opened = stage().result("openProjectFromFile", inFolder(u"earlier.ormt"_s));
        tell(u"opened %1 %2"_s.arg(digest(stage()), storedKey()));
        return opened;
    }

    void act()
    {
        const int calls = callsOfOperation();
        tell(u"begins"_s);
        if (!user.waits)
            SystemCalls::killAt(1 + int(user.moment * calls), user.hundredths);
        perform(inFolder(user.target));
        tell(u"ends %1 %2"_s.arg(calls).arg(SystemCalls::counted()));
        if (!user.waits)
            SystemCalls::killNow();
        while (true)
            pause();
    }

private:
    QString inFolder(const QString &name) const { return user.folder + u'/' + name; }
    static QString storedKey() { return QSettings().value(u"openai/api_key"_s).toString(); }

    /// How many calls the operation takes: counted in a trial where one leaves no trace, otherwise about.
    int callsOfOperation()
    {
        if (user.operation == Operation::Import)
            return 25;
        if (runs())
            return 700;
        // The first time some things are read that are known later on.
        perform(stage().path(u"first"_s));
        SystemCalls::count();
        perform(stage().path(u"second"_s));
        return SystemCalls::counted();
    }

    void perform(const QString &target)
    {
        switch (user.operation) {
        case Operation::Save:
            stage().result("saveProjectToFile", target);
            break;
        case Operation::SaveOver:
            qInstallMessageHandler([](auto, const auto &, const auto &) {});
            stage().result("saveProjectToFile", inFolder(u"earlier.ormt"_s));
            break;
        case Operation::Export:
        case Operation::ExportOver:
            stage().result("exportPackToFile", target);
            break;
        case Operation::Import:
            import();
            break;
        case Operation::Open:
            stage().result("openProjectFromFile", inFolder(u"earlier.ormt"_s));
            break;
        case Operation::Run:
        case Operation::RunAndSave:
            run(target);
            break;
        case Operation::Preferences:
            storePreferences(stage(), {otherKey(storedKey()), u"a"_s, u"b"_s});
            break;
        }
    }

    void import()
    {
        const QString mode = user.hundredths < 50 ? u"Append"_s : u"Replace"_s;
        const Modal question([&mode](QWidget *box) { pressButton(box, mode); });
        stage().call("importPack", inFolder(u"coast.ornk"_s));
    }

    /// Each pair is told as it is asked, and the save when it is done.
    void run(const QString &target)
    {
        const int saveAt = user.operation == Operation::RunAndSave ? 2 : -1;
        QObject::connect(&network->endpoint, &standin::ChatEndpoint::requestArrived, stage().window(), [&](int index) {
            tell(u"asked"_s);
            if (index == saveAt && stage().result("saveProjectToFile", target))
                tell(u"saved %1"_s.arg(stage().count(u"responses"_s)));
        });
        network->run();
    }

    bool runs() const { return user.operation == Operation::Run || user.operation == Operation::RunAndSave; }
    Stage &stage() { return network ? *network : *alone; }

    KilledUser user;
    std::unique_ptr<SurveyStage> network;
    std::unique_ptr<Stage> alone;
};

} // namespace

QString digest(Stage &stage)
{
    QStringList all = everyRow(stage.database());
    const auto grid = cells(resultsTable(stage));
    for (const QStringList &row : grid)
        all << row.join(u'|');
    return QString::fromLatin1(QCryptographicHash::hash(all.join(u'\n').toUtf8(), QCryptographicHash::Sha256).toHex());
}

QString KilledUser::program()
{
    return QCoreApplication::applicationFilePath();
}

QStringList KilledUser::environment() const
{
    return {QString::fromLatin1(variable) + u'=' +
            QStringList{QString::number(int(operation)), folder, target, QString::number(moment),
                        QString::number(hundredths), QString::number(int(waits))}
                .join(u'|')};
}

/// No test, but known to the program in the way of one.
[[maybe_unused]] static const bool registeredKilledUser = registerTest(__FILE__, [] {
    Playing playing(fromEnvironment());
    if (playing.start())
        playing.act();
    return std::make_unique<QObject>();
});

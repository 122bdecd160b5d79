#include "app/mainwindow.h"
#include "demo/demo.h"
#include "demo/secondact.h"
#include "demo/secondlook.h"
#include "demo/thirdact.h"
#include "preferences/settings.h"
#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "standin/privatehome.h"
#include "standin/respondent.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>

using namespace Qt::StringLiterals;

/// Keeps the offscreen platform's remarks on what it lacks out of the demo's output.
static void dropPlatformRemarks()
{
    static QtMessageHandler former = nullptr;
    former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!message.startsWith("This plugin does not support"_L1))
            former(type, context, message);
    });
}

struct Arguments
{
    QDir examples;
    QDir output;
    QString bridge;
    QString study;
    bool keep = false;
    bool secondLook = false;
};

static Arguments readArguments()
{
    const QCommandLineOption examples(u"examples"_s, u"Folder of panel.json and questionnaire.json."_s, u"folder"_s);
    const QCommandLineOption output(u"output"_s, u"Folder for the pictures and the log."_s, u"folder"_s);
    const QCommandLineOption secondLook(u"second-look"_s, u"Take up the files that an earlier demo left."_s);
    const QCommandLineOption bridge(u"bridge"_s, u"The program orrinet-bridge, for the second act."_s, u"program"_s);
    const QCommandLineOption study(u"study"_s, u"The program orrinet-study, for the third act."_s, u"program"_s);
    const QCommandLineOption keep(u"keep"_s, u"Leave the window open until it is closed."_s);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Runs the example survey in the real window against a local endpoint."_s);
    parser.addHelpOption();
    parser.addOptions({examples, output, bridge, study, keep, secondLook});
    parser.process(*QCoreApplication::instance());
    if (!parser.isSet(examples) || !parser.isSet(output))
        parser.showHelp(1);
    return {.examples = QDir(parser.value(examples)),
            .output = QDir(parser.value(output)),
            .bridge = parser.value(bridge),
            .study = parser.value(study),
            .keep = parser.isSet(keep),
            .secondLook = parser.isSet(secondLook)};
}

static int failed(const QStringList &reasons)
{
    for (const QString &reason : reasons)
        std::fprintf(stderr, "orrinet-demo: %s\n", qUtf8Printable(reason));
    return 1;
}

/// Another process with a window of its own takes up what this one has saved; its output comes out here.
static QStringList startSecondLook(const Arguments &arguments)
{
    const int status = QProcess::execute(
        QCoreApplication::applicationFilePath(),
        {u"--examples"_s, arguments.examples.path(), u"--output"_s, arguments.output.path(), u"--second-look"_s});
    return status == 0 ? QStringList() : QStringList{u"the second process ended with status %1"_s.arg(status)};
}

static int secondLook(const Examples &examples, const Arguments &arguments)
{
    MainWindow window(nullptr);
    window.show();
    QTextStream out(stdout);
    const QStringList flaws = takeSecondLook(&window, arguments.output, examples, out);
    return flaws.isEmpty() ? 0 : failed(flaws);
}

static int run(const Examples &examples, const Arguments &arguments)
{
    standin::ChatEndpoint endpoint;
    endpoint.answerWith(&standin::respond);
    const standin::Detour detour(endpoint);
    Settings::store(u"no-real-key"_s, {}, {});

    MainWindow window(nullptr);
    window.resize(1600, 560);
    window.show();
    Demo demo(&window, examples);
    // Not quit(), which would close the window and so ask what to do with its changes.
    QObject::connect(&demo, &Demo::surveyEnded, &window, [] { QCoreApplication::exit(); }, Qt::SingleShotConnection);
    demo.start();
    QApplication::exec();

    QStringList flaws = demo.checkAnswers();
    flaws += demo.writeFiles(arguments.output);
    flaws += saveFiles(&window, arguments.output);
    flaws += startSecondLook(arguments);
    if (!arguments.bridge.isEmpty()) {
        QTextStream out(stdout);
        flaws += SecondAct(arguments.bridge, arguments.output, out).play();
    }
    if (!arguments.study.isEmpty()) {
        QTextStream out(stdout);
        flaws += ThirdAct(arguments.study, arguments.output, out).play();
    }
    const int status = flaws.isEmpty() ? 0 : failed(flaws);
    // Where there is no display nobody could close it.
    if (arguments.keep && window.isVisible() && QGuiApplication::platformName() != "offscreen"_L1)
        QApplication::exec();
    return status;
}

int main(int argc, char *argv[])
{
    // Static, so that it is removed too where the reading of the arguments ends the process.
    static const QTemporaryDir home(QDir::temp().filePath(u"orrinet-demo-XXXXXX"_s));
    if (!home.isValid())
        return failed({home.errorString()});
    // Neither settings nor what file dialogs remember are the user's from here on.
    leaveUsersHome(home.path());
    dropPlatformRemarks();
    const QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);

    const Arguments arguments = readArguments();
    QString failure;
    const auto examples = readExamples(arguments.examples, failure);
    if (!examples)
        return failed({failure});
    return arguments.secondLook ? secondLook(*examples, arguments) : run(*examples, arguments);
}

#include "demo/examples.h"
#include "shots/look.h"
#include "shots/picture.h"
#include "shots/shots.h"
#include "shots/studio.h"
#include "standin/privatehome.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;

struct Arguments
{
    QDir examples;
    QDir output;
    QString survey;
    QString project;
    QStringList names;
};

static Arguments readArguments()
{
    const QCommandLineOption examples(u"examples"_s, u"Folder of panel.json and questionnaire.json."_s, u"folder"_s);
    const QCommandLineOption output(u"output"_s, u"Folder for the pictures."_s, u"folder"_s);
    const QCommandLineOption survey(u"survey"_s, u"File to save the survey to, without answers."_s, u"file"_s);
    const QCommandLineOption project(u"project"_s, u"File to save the answered survey to."_s, u"file"_s);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Takes the pictures of the guide from the example survey."_s);
    parser.addHelpOption();
    parser.addOptions({examples, output, survey, project});
    parser.addPositionalArgument(u"names"_s, u"Pictures to take; all where none is named."_s, u"[name ...]"_s);
    parser.process(*QCoreApplication::instance());
    if (!parser.isSet(examples) || !parser.isSet(output))
        parser.showHelp(1);
    return {.examples = QDir(parser.value(examples)),
            .output = QDir(parser.value(output)),
            .survey = parser.value(survey),
            .project = parser.value(project),
            .names = parser.positionalArguments()};
}

static int failed(const QString &reason)
{
    std::fprintf(stderr, "orrinet-shots: %s\n", qUtf8Printable(reason));
    return 1;
}

/// The pictures that are named; nothing where there is no picture of one of the names.
static QList<Shot> chosen(const QStringList &names)
{
    QList<Shot> shots;
    for (const Shot &shot : allShots()) {
        if (names.isEmpty() || names.contains(shot.name))
            shots << shot;
    }
    return names.isEmpty() || shots.size() == names.size() ? shots : QList<Shot>();
}

static int takePictures(const Arguments &arguments)
{
    QString failure;
    const auto examples = readExamples(arguments.examples, failure);
    if (!examples)
        return failed(failure);
    const QList<Shot> shots = chosen(arguments.names);
    if (shots.isEmpty())
        return failed(u"there is no picture of one of these names: "_s + arguments.names.join(u' '));
    if (!arguments.output.mkpath(u"."_s))
        return failed(arguments.output.path() + u": the folder cannot be made"_s);

    Studio studio(*examples);
    if (!arguments.survey.isEmpty() && !studio.saveProject(arguments.survey))
        return failed(arguments.survey + u": the project cannot be saved"_s);
    for (const Shot &shot : shots) {
        const QString path = arguments.output.filePath(shot.name + ".png"_L1);
        if (!savePicture(shot.take(studio), path))
            return failed(path + u": the picture cannot be written"_s);
    }
    if (arguments.project.isEmpty())
        return 0;
    studio.runSurvey();
    return studio.saveProject(arguments.project) ? 0 : failed(arguments.project + u": the project cannot be saved"_s);
}

/// Keeps the offscreen platform's remarks on what it lacks out of the output.
static void dropPlatformRemarks()
{
    static QtMessageHandler former = nullptr;
    former = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &message) {
        if (!message.startsWith("This plugin does not support"_L1))
            former(type, context, message);
    });
}

int main(int argc, char *argv[])
{
    // Static, so that it is removed too where the reading of the arguments ends the process.
    static const QTemporaryDir home(QDir::temp().filePath(u"orrinet-shots-XXXXXX"_s));
    if (!home.isValid())
        return failed(home.errorString());
    leaveUsersHome(home.path());
    leaveUsersLook();
    dropPlatformRemarks();
    const QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);
    if (const QString missing = takeLook(); !missing.isEmpty())
        return failed(missing);
    return takePictures(readArguments());
}

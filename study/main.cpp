#include "study/command.h"

#include <QFile>
#include <QGuiApplication>

#include <CLI/CLI.hpp>

#include <memory>

using namespace Qt::StringLiterals;
using namespace study;

static std::string versionText()
{
    QFile file(u":/VERSION.txt"_s);
    const bool opened = file.open(QIODevice::ReadOnly);
    return "orrinet-study " + (opened ? file.readAll().trimmed() : QByteArray()).toStdString();
}

/// Only drawing needs fonts, and then no display.
static std::unique_ptr<QCoreApplication> application(int &argc, char *argv[], bool draws)
{
    if (!draws)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

int main(int argc, char *argv[])
{
    CLI::App app("Checks the project of a survey before money is spent, exports its answers, and reports on them.\n"
                 "Project files are read and never written.",
                 "orrinet-study");
    app.footer("Exit status: 0 done, 1 findings that block, 2 usage, 3 file can't be read or written.");
    app.set_version_flag("--version", versionText());
    app.require_subcommand(1);
    Command chosen;
    addCheck(app, chosen);
    addExport(app, chosen);
    addReport(app, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &end) {
        return app.exit(end) == 0 ? 0 : int(Exit::Usage);
    }
    const auto program = application(argc, argv, chosen.draws);
    return int(chosen.run());
}

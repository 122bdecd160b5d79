#pragma once

#include "bridge/bridge.h"

#include <QUrl>

#include <chrono>
#include <variant>

namespace bridge {

/// The exit statuses of the program.
enum class Exit { AllAnswered = 0, SomeOpen = 1, Usage = 2, File = 3, NoEndpoint = 4 };

/// What the command line says.
struct Options
{
    QUrl to{QStringLiteral("https://api.openai.com/v1")};
    QString roots;  ///< PEM file
    QString keyEnv; ///< name of a variable
    ModelChoice models;
    Format format = Format::JsonSchema;
    std::chrono::seconds timeout{120};
    int retries = 4;
    QString record;
    QString replay;
    Budget budget;
    QString run; ///< the project to take, empty for the window
    QString save;
    bool inPlace = false;
    int jobs = 1;
    bool quiet = false;
};

/// The options, or the status to end with after --help, --version or an error; the text for it has been printed.
std::variant<Options, int> readOptions(int argc, char *argv[]);

} // namespace bridge

#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace study {

/// The exit statuses of the program.
enum class Exit { Done = 0, Findings = 1, Usage = 2, File = 3 };

/// What the command line asks for.
struct Command
{
    std::function<Exit()> run;
    bool draws = false; ///< it needs fonts and pictures
};

// Each adds its subcommand, which sets the command where it is the one that is asked for.
void addCheck(CLI::App &app, Command &chosen);
void addExport(CLI::App &app, Command &chosen);
void addReport(CLI::App &app, Command &chosen);

} // namespace study

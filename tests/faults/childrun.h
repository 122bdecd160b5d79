#pragma once

#include <QProcess>

#include <functional>
#include <map>
#include <source_location>

/// True in the process that passesInChild() has started.
bool inChild();

/// What is done to that process before its program starts. It runs between fork and exec, so it makes system calls and
/// nothing else; where it can't do its work it says so by QProcess::failChildProcessModifier.
using Handicap = std::function<void(QProcess &)>;

/// What a child finds in its environment besides what this process has.
using Variables = std::map<QString, QString>;

/// Runs the test function that calls this once more, with its row of data, in a process of its own; true where it
/// passes there, else the test has failed with what it printed. Events are handled meanwhile.
bool passesInChild(const Variables &variables = {}, const Handicap &handicap = {},
                   const std::source_location &where = std::source_location::current());

/// Does the same where the child may end in any way, by a crash too.
void endInChild(const Variables &variables = {}, const std::source_location &where = std::source_location::current());

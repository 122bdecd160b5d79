#pragma once

/// The program's window, or an empty one, from the start of the process until it stands and the event loop is idle.
/// Says so with one line on standard output and ends.
int showWindow(int argc, char *argv[], bool empty);

inline constexpr auto showEmptyArgument = "--show-empty";
inline constexpr auto showProgramArgument = "--show-program";

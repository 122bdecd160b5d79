#pragma once

#include <string_view>

/// The window that the argument names, from the start of the process until it is shown and the event loop is idle.
/// Says so with one line on standard output and ends.
int showWindow(int argc, char *argv[], std::string_view mode);

inline constexpr auto showEmptyArgument = "--show-empty";
inline constexpr auto showFloorArgument = "--show-floor";
inline constexpr auto showProgramArgument = "--show-program";

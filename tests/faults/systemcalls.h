#pragma once

/// The system calls by which this process reads and writes files and sockets, as moments at which it may be killed.
namespace SystemCalls {

/// From here on calls are counted, from 1.
void count();
/// How many there were since.
int counted();

/// Counts anew and ends the process by SIGKILL in place of the call with this number. Where that one writes, so many
/// hundredths of its bytes are written first.
void killAt(int number, int hundredths);
/// Ends the process by SIGKILL.
[[noreturn]] void killNow();

} // namespace SystemCalls

#include "tests/faults/systemcalls.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::atomic<bool> counting = false;
std::atomic<int> calls = 0;
std::atomic<int> lastCall = 0; // 0 for none
int partOfLast = 100;

/// Notes a call; true where it is the one that never returns.
bool isLastCall()
{
    return counting && ++calls == lastCall;
}

void noteCall()
{
    if (isLastCall())
        SystemCalls::killNow();
}

size_t partOf(size_t size)
{
    return size * size_t(partOfLast) / 100;
}

/// The system's function whose place one of this file takes.
template<typename Function>
Function *systemsOwn(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

void SystemCalls::count()
{
    calls = 0;
    counting = true;
}

int SystemCalls::counted()
{
    return calls;
}

void SystemCalls::killAt(int number, int hundredths)
{
    partOfLast = hundredths;
    lastCall = number;
    count();
}

void SystemCalls::killNow()
{
    while (true)
        kill(getpid(), SIGKILL);
}

extern "C" {

ssize_t write(int file, const void *bytes, size_t size)
{
    static auto *const own = systemsOwn<decltype(write)>("write");
    if (isLastCall()) {
        own(file, bytes, partOf(size));
        SystemCalls::killNow();
    }
    return own(file, bytes, size);
}

ssize_t pwrite64(int file, const void *bytes, size_t size, off64_t offset)
{
    static auto *const own = systemsOwn<decltype(pwrite64)>("pwrite64");
    if (isLastCall()) {
        own(file, bytes, partOf(size), offset);
        SystemCalls::killNow();
    }
    return own(file, bytes, size, offset);
}

ssize_t send(int socket, const void *bytes, size_t size, int flags)
{
    static auto *const own = systemsOwn<decltype(send)>("send");
    if (isLastCall()) {
        own(socket, bytes, partOf(size), flags);
        SystemCalls::killNow();
    }
    return own(socket, bytes, size, flags);
}

ssize_t read(int file, void *bytes, size_t size)
{
    static auto *const own = systemsOwn<decltype(read)>("read");
    noteCall();
    return own(file, bytes, size);
}

ssize_t pread64(int file, void *bytes, size_t size, off64_t offset)
{
    static auto *const own = systemsOwn<decltype(pread64)>("pread64");
    noteCall();
    return own(file, bytes, size, offset);
}

ssize_t recv(int socket, void *bytes, size_t size, int flags)
{
    static auto *const own = systemsOwn<decltype(recv)>("recv");
    noteCall();
    return own(socket, bytes, size, flags);
}

int open64(const char *path, int flags, ...)
{
    static auto *const own = systemsOwn<decltype(open64)>("open64");
    noteCall();
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return own(path, flags, mode);
}

int ftruncate64(int file, off64_t size) noexcept
{
    static auto *const own = systemsOwn<int(int, off64_t)>("ftruncate64");
    noteCall();
    return own(file, size);
}

int unlink(const char *path) noexcept
{
    static auto *const own = systemsOwn<int(const char *)>("unlink");
    noteCall();
    return own(path);
}

int rename(const char *from, const char *to) noexcept
{
    static auto *const own = systemsOwn<int(const char *, const char *)>("rename");
    noteCall();
    return own(from, to);
}

int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned int flags) noexcept
{
    static auto *const own = systemsOwn<int(int, const char *, int, const char *, unsigned int)>("renameat2");
    noteCall();
    return own(fromFolder, from, toFolder, to, flags);
}

int linkat(int fromFolder, const char *from, int toFolder, const char *to, int flags) noexcept
{
    static auto *const own = systemsOwn<int(int, const char *, int, const char *, int)>("linkat");
    noteCall();
    return own(fromFolder, from, toFolder, to, flags);
}

} // extern "C"

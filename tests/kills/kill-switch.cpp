// SPDX-License-Identifier: MIT
// Preloaded into the program that is to be killed: ends it by SIGKILL before a certain change of its files, or before a
// certain message to another process. The tester says which one, at any moment, through a file that both map (Switch).
#include <atomic>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {
/// What the tester maps as well, in the byte order of the machine.
struct Switch
{
    std::atomic<int64_t> changesLeft; ///< killed before the last of so many changes; 0: it goes on
    std::atomic<int64_t> messagesLeft; ///< the same for messages
    std::atomic<int64_t> torn; ///< not 0: of a change that writes several pages, half of them are written
    std::atomic<int64_t> changes; ///< counted since the start
    std::atomic<int64_t> messages;
};
constexpr size_t pageSize = 4096;

Switch *mapSwitch()
{
    const char *path = std::getenv("KELVO_KILL_SWITCH");
    const int fd = path ? static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC)) : -1;
    if (fd < 0)
        return nullptr;
    void *place = ::mmap(nullptr, sizeof(Switch), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    ::close(fd);
    return place == MAP_FAILED ? nullptr : static_cast<Switch *>(place);
}

Switch *theSwitch()
{
    static Switch *const mapped = mapSwitch();
    return mapped;
}

[[noreturn]] void die()
{
    for (;;)
        ::kill(::getpid(), SIGKILL);
}

bool isLast(std::atomic<int64_t> &left)
{
    return left > 0 && --left == 0;
}

/// Before each change.
void change()
{
    Switch *const mine = theSwitch();
    if (!mine)
        return;
    ++mine->changes;
    if (isLast(mine->changesLeft))
        die();
}

void message()
{
    Switch *const mine = theSwitch();
    if (!mine)
        return;
    ++mine->messages;
    if (isLast(mine->messagesLeft))
        die();
}

bool isFile(int fd)
{
    struct stat status = {};
    return ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

template <typename Function> Function next(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

/// How much of a write of so many bytes the kernel has done when a kill interrupts it: whole pages.
size_t half(size_t size)
{
    return size / pageSize / 2 * pageSize;
}

/// Before a write of several pages, which may be torn; `writeSome` writes as many bytes.
template <typename WriteSome> void write(int fd, size_t size, WriteSome writeSome)
{
    Switch *const mine = theSwitch();
    if (!mine || !isFile(fd))
        return;
    ++mine->changes;
    if (!isLast(mine->changesLeft))
        return;
    if (mine->torn && half(size) > 0)
        writeSome(half(size));
    die();
}

mode_t modeOf(int flags, va_list arguments)
{
    return flags & (O_CREAT | O_TMPFILE) ? mode_t(va_arg(arguments, unsigned)) : 0;
}
} // namespace

// The functions of the C library under both of their names.
#define KILL_OPEN(name)                                                                                      \
    extern "C" int name(const char *path, int flags, ...)                                                    \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        static const auto real = next<int (*)(const char *, int, ...)>(#name);                               \
        if (flags & (O_CREAT | O_TRUNC))                                                                     \
            change();                                                                                        \
        return real(path, flags, mode);                                                                      \
    }
#define KILL_OPENAT(name)                                                                                    \
    extern "C" int name(int folder, const char *path, int flags, ...)                                        \
    {                                                                                                        \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        static const auto real = next<int (*)(int, const char *, int, ...)>(#name);                          \
        if (flags & (O_CREAT | O_TRUNC))                                                                     \
            change();                                                                                        \
        return real(folder, path, flags, mode);                                                              \
    }
#define KILL_PWRITE(name)                                                                                    \
    extern "C" ssize_t name(int fd, const void *bytes, size_t size, off_t place)                             \
    {                                                                                                        \
        static const auto real = next<ssize_t (*)(int, const void *, size_t, off_t)>(#name);                 \
        write(fd, size, [=](size_t some) { real(fd, bytes, some, place); });                                 \
        return real(fd, bytes, size, place);                                                                 \
    }
#define KILL_FTRUNCATE(name)                                                                                 \
    extern "C" int name(int fd, off_t size)                                                                  \
    {                                                                                                        \
        static const auto real = next<int (*)(int, off_t)>(#name);                                           \
        change();                                                                                            \
        return real(fd, size);                                                                               \
    }
KILL_OPEN(open)
KILL_OPEN(open64)
KILL_OPENAT(openat)
KILL_OPENAT(openat64)
KILL_PWRITE(pwrite)
KILL_PWRITE(pwrite64)
KILL_FTRUNCATE(ftruncate)
KILL_FTRUNCATE(ftruncate64)

extern "C" ssize_t write(int fd, const void *bytes, size_t size)
{
    static const auto real = next<ssize_t (*)(int, const void *, size_t)>("write");
    write(fd, size, [=](size_t some) { real(fd, bytes, some); });
    return real(fd, bytes, size);
}

extern "C" int unlink(const char *path)
{
    static const auto real = next<int (*)(const char *)>("unlink");
    change();
    return real(path);
}

extern "C" int rename(const char *from, const char *to)
{
    static const auto real = next<int (*)(const char *, const char *)>("rename");
    change();
    return real(from, to);
}

extern "C" int mkdir(const char *path, mode_t mode)
{
    static const auto real = next<int (*)(const char *, mode_t)>("mkdir");
    change();
    return real(path, mode);
}

extern "C" ssize_t sendmsg(int fd, const msghdr *text, int flags)
{
    static const auto real = next<ssize_t (*)(int, const msghdr *, int)>("sendmsg");
    message();
    return real(fd, text, flags);
}

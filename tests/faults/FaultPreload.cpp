// SPDX-License-Identifier: MIT
// Preloaded into the real program: what it asks of the system fails, and its clock jumps, as a page of memory that it
// shares with the test says (faults.py); the page also tells for how long the GUI thread kept its event loop waiting.
#include "FaultPage.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace {
using Operation = FaultPage::Operation;

/// Null in processes that the test does not watch, such as those that the program starts.
FaultPage *page = nullptr;

/// Looked for by several threads at once, if need be: one that waited for another here, while that waits for the lock of
/// the linker, which a thread that loads a library has when it comes here, would wait for ever.
template <class Function> Function next(std::atomic<void *> &known, const char *name, Function)
{
    void *function = known;
    if (!function)
        known = function = ::dlsym(RTLD_NEXT, name);
    return reinterpret_cast<Function>(function);
}
// The function of this name that the program would have called.
#define NEXT(name)                                                                                           \
    static std::atomic<void *> known = nullptr;                                                              \
    const auto real = next(known, #name, &::name);

void openPage()
{
    const char *path = std::getenv("KELVO_FAULT_PAGE");
    const int file = path ? int(::syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC)) : -1;
    if (file < 0)
        return;
    void *memory = ::mmap(nullptr, sizeof(FaultPage), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::syscall(SYS_close, file);
    if (memory == MAP_FAILED)
        return;
    auto *mapped = static_cast<FaultPage *>(memory);
    // What the program starts is left alone.
    uint32_t nobody = 0;
    if (mapped->process.compare_exchange_strong(nobody, uint32_t(::getpid()))
        || nobody == uint32_t(::getpid()))
        page = mapped;
}
__attribute__((constructor(101))) void begin()
{
    openPage();
}

// Files

bool hasFault(Operation operation)
{
    return page && page->error != 0 && (page->operations & operation) != 0;
}

bool isMeant(const char *path)
{
    return std::strncmp(path, page->path, std::strlen(page->path)) == 0;
}

/// True when the call is to fail; errno is set then.
bool fails(Operation operation, const char *path)
{
    if (!hasFault(operation) || !path || !isMeant(path))
        return false;
    ++page->failures;
    errno = page->error;
    return true;
}

bool fails(Operation operation, int file)
{
    if (!hasFault(operation))
        return false;
    const int before = errno;
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    char path[4096];
    const ssize_t size = ::readlink(link, path, sizeof path - 1);
    errno = before;
    if (size <= 0)
        return false;
    path[size] = '\0';
    return fails(operation, path);
}

bool exists(const char *path)
{
    return ::syscall(SYS_faccessat, AT_FDCWD, path, F_OK) == 0;
}

/// What is there already is told first.
bool failsToCreate(const char *path)
{
    return hasFault(Operation::Create) && !exists(path) && fails(Operation::Create, path);
}

/// pipe() is left alone: the sanitizers look at objects by one, and take them for none without it.
bool failsToGetDescriptor()
{
    if (!hasFault(Operation::Descriptor))
        return false;
    ++page->failures;
    errno = page->error;
    return true;
}

bool failsToOpen(const char *path, int flags)
{
    const bool writes = (flags & O_ACCMODE) != O_RDONLY;
    const bool creates = (flags & O_CREAT) && !exists(path);
    return failsToGetDescriptor() || fails(Operation::Open, path)
        || (writes && fails(Operation::OpenToWrite, path)) || (creates && fails(Operation::Create, path));
}

mode_t modeOf(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, mode_t) : 0;
}

// The event loop of the GUI thread

struct Code
{
    uintptr_t begin = 0;
    uintptr_t end = 0;
};

Code glibCode()
{
    Code code;
    ::dl_iterate_phdr(
        [](dl_phdr_info *library, size_t, void *found) {
            if (!std::strstr(library->dlpi_name, "/libglib-2.0."))
                return 0;
            for (int i = 0; i < library->dlpi_phnum; ++i) {
                const auto &part = library->dlpi_phdr[i];
                if (part.p_type == PT_LOAD && (part.p_flags & PF_X))
                    *static_cast<Code *>(found) = {
                        library->dlpi_addr + part.p_vaddr, library->dlpi_addr + part.p_vaddr + part.p_memsz};
            }
            return 1;
        },
        &code);
    return code;
}

/// Other waits, such as those for an answer of the X server, keep the event loop from going on.
bool isEventLoop(const void *caller)
{
    if (::syscall(SYS_gettid) != ::getpid())
        return false;
    static const Code glib = glibCode();
    const auto place = reinterpret_cast<uintptr_t>(caller);
    return place >= glib.begin && place < glib.end;
}

uint64_t now()
{
    timespec time = {};
    ::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return uint64_t(time.tv_sec) * 1'000'000'000 + uint64_t(time.tv_nsec);
}

/// In nanoseconds, of the thread since its beginning.
struct Times
{
    unsigned long long ran = 0;
    unsigned long long delayed = 0; ///< it could have run, but other programs did
};

Times times()
{
    static const int file
        = int(::syscall(SYS_openat, AT_FDCWD, "/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC));
    char text[128] = {};
    Times times;
    if (file < 0 || ::syscall(SYS_pread64, file, text, sizeof text - 1, 0) <= 0
        || std::sscanf(text, "%llu %llu", &times.ran, &times.delayed) != 2)
        times = {};
    return times;
}

Times atBegin;

void endTurn()
{
    const uint64_t begin = page->busySince.exchange(0);
    if (begin == 0)
        return;
    const Times atEnd = times();
    const uint64_t delay = atEnd.delayed - atBegin.delayed;
    const uint64_t lasted = now() - begin;
    const uint64_t own = lasted > delay ? lasted - delay : 0;
    if (own > page->longestTurn) {
        page->longestTurn = own;
        page->ranInLongest = atEnd.ran - atBegin.ran;
    }
    ++page->turns;
}

void beginTurn()
{
    atBegin = times();
    page->busySince = now();
}

template <class Wait> int waitInLoop(const void *caller, Wait wait)
{
    if (!page || !isEventLoop(caller))
        return wait();
    endTurn();
    const int result = wait();
    const int problem = errno;
    beginTurn();
    errno = problem;
    return result;
}
} // namespace

#define CALLER __builtin_extract_return_addr(__builtin_return_address(0))
#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT int poll(pollfd *files, nfds_t count, int timeout)
{
    NEXT(poll)
    return waitInLoop(CALLER, [&] { return real(files, count, timeout); });
}

EXPORT int ppoll(pollfd *files, nfds_t count, const timespec *timeout, const sigset_t *mask)
{
    NEXT(ppoll)
    return waitInLoop(CALLER, [&] { return real(files, count, timeout, mask); });
}

// Opening

#define OPEN(name)                                                                                           \
    EXPORT int name(const char *path, int flags, ...)                                                        \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        return failsToOpen(path, flags) ? -1 : real(path, flags, mode);                                      \
    }
OPEN(open)
OPEN(open64)

#define OPENAT(name)                                                                                         \
    EXPORT int name(int folder, const char *path, int flags, ...)                                            \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        va_list arguments;                                                                                   \
        va_start(arguments, flags);                                                                          \
        const mode_t mode = modeOf(flags, arguments);                                                        \
        va_end(arguments);                                                                                   \
        return failsToOpen(path, flags) ? -1 : real(folder, path, flags, mode);                              \
    }
OPENAT(openat)
OPENAT(openat64)

#define FOPEN(name)                                                                                          \
    EXPORT FILE *name(const char *path, const char *mode)                                                    \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        const int flags = std::strpbrk(mode, "wa") ? O_WRONLY | O_CREAT : O_RDONLY;                          \
        return failsToOpen(path, flags) ? nullptr : real(path, mode);                                        \
    }
FOPEN(fopen)
FOPEN(fopen64)

// With a file that is open

#define ON_FILE(operation, type, name, parameters, arguments)                                                \
    EXPORT type name parameters                                                                              \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        return fails(Operation::operation, file) ? type(-1) : real arguments;                                \
    }
ON_FILE(Read, ssize_t, read, (int file, void *to, size_t size), (file, to, size))
ON_FILE(Read, ssize_t, pread, (int file, void *to, size_t size, off_t at), (file, to, size, at))
ON_FILE(Read, ssize_t, pread64, (int file, void *to, size_t size, off64_t at), (file, to, size, at))
ON_FILE(Write, ssize_t, write, (int file, const void *from, size_t size), (file, from, size))
ON_FILE(Write, ssize_t, pwrite, (int file, const void *from, size_t size, off_t at), (file, from, size, at))
ON_FILE(
    Write, ssize_t, pwrite64, (int file, const void *from, size_t size, off64_t at), (file, from, size, at))
ON_FILE(Write, ssize_t, writev, (int file, const iovec *from, int count), (file, from, count))
ON_FILE(Write, int, ftruncate, (int file, off_t size), (file, size))
ON_FILE(Write, int, ftruncate64, (int file, off64_t size), (file, size))
ON_FILE(Write, int, fallocate, (int file, int mode, off_t at, off_t size), (file, mode, at, size))
ON_FILE(Write, int, fallocate64, (int file, int mode, off64_t at, off64_t size), (file, mode, at, size))
ON_FILE(Sync, int, fsync, (int file), (file))
ON_FILE(Sync, int, fdatasync, (int file), (file))

// These return the error.
EXPORT int posix_fallocate(int file, off_t at, off_t size)
{
    NEXT(posix_fallocate)
    return fails(Operation::Write, file) ? errno : real(file, at, size);
}

EXPORT int posix_fallocate64(int file, off64_t at, off64_t size)
{
    NEXT(posix_fallocate64)
    return fails(Operation::Write, file) ? errno : real(file, at, size);
}

// With names

#define ON_PATH(operation, name, parameters, arguments)                                                      \
    EXPORT int name parameters                                                                               \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        return fails(Operation::operation, path) ? -1 : real arguments;                                      \
    }
ON_PATH(Rename, rename, (const char *from, const char *path), (from, path))
ON_PATH(Rename, renameat, (int in, const char *from, int folder, const char *path), (in, from, folder, path))
ON_PATH(Rename, renameat2, (int in, const char *from, int folder, const char *path, unsigned flags),
    (in, from, folder, path, flags))
ON_PATH(Remove, unlink, (const char *path), (path))
ON_PATH(Remove, unlinkat, (int folder, const char *path, int flags), (folder, path, flags))
ON_PATH(Remove, rmdir, (const char *path), (path))

#define NEW_PATH(name, parameters, arguments)                                                                \
    EXPORT int name parameters                                                                               \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        return failsToCreate(path) ? -1 : real arguments;                                                    \
    }
NEW_PATH(mkdir, (const char *path, mode_t mode), (path, mode))
NEW_PATH(symlink, (const char *to, const char *path), (to, path))
NEW_PATH(link, (const char *from, const char *path), (from, path))
NEW_PATH(linkat, (int in, const char *from, int folder, const char *path, int flags),
    (in, from, folder, path, flags))

EXPORT DIR *opendir(const char *path)
{
    NEXT(opendir)
    return failsToGetDescriptor() || fails(Operation::Open, path) ? nullptr : real(path);
}

// What else has a descriptor

#define DESCRIPTOR(name, parameters, arguments)                                                              \
    EXPORT int name parameters                                                                               \
    {                                                                                                        \
        NEXT(name)                                                                                           \
        return failsToGetDescriptor() ? -1 : real arguments;                                                 \
    }
DESCRIPTOR(socket, (int domain, int type, int protocol), (domain, type, protocol))
DESCRIPTOR(socketpair, (int domain, int type, int protocol, int files[2]), (domain, type, protocol, files))
DESCRIPTOR(pipe2, (int files[2], int flags), (files, flags))
DESCRIPTOR(eventfd, (unsigned count, int flags), (count, flags))
DESCRIPTOR(dup, (int file), (file))
DESCRIPTOR(inotify_init1, (int flags), (flags))
DESCRIPTOR(epoll_create1, (int flags), (flags))
DESCRIPTOR(memfd_create, (const char *text, unsigned flags), (text, flags))

EXPORT int access(const char *path, int mode)
{
    NEXT(access)
    return (mode & W_OK) && fails(Operation::OpenToWrite, path) ? -1 : real(path, mode);
}

// Threads of the C++ library; GLib and the toolkit end the program, or go on without, on their own terms.

/// std::thread::_M_start_thread, as std::thread calls it.
EXPORT void startThread(void *thread, void *state, void (*depend)()) __asm__(
    "_ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE");

EXPORT void startThread(void *thread, void *state, void (*depend)())
{
    static std::atomic<void *> known = nullptr;
    const auto real
        = next(known, "_ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE",
            &startThread);
    if (hasFault(Operation::Thread)) {
        ++page->failures;
        throw std::system_error(page->error, std::generic_category());
    }
    real(thread, state, depend);
}

// The clock of the day; those that only go forward stay as they are.

EXPORT int clock_gettime(clockid_t clock, timespec *time)
{
    NEXT(clock_gettime)
    const int result = real(clock, time);
    if (page && result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        time->tv_sec += page->clockOffset;
    return result;
}

EXPORT int gettimeofday(timeval *time, void *zone)
{
    static std::atomic<void *> known = nullptr;
    const auto real = next(known, "gettimeofday", static_cast<int (*)(timeval *, void *)>(nullptr));
    const int result = real(time, zone);
    if (page && result == 0)
        time->tv_sec += page->clockOffset;
    return result;
}

EXPORT time_t time(time_t *to)
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    if (to)
        *to = now.tv_sec;
    return now.tv_sec;
}

// SPDX-License-Identifier: MIT
#include "CrashHandler.h"

#include "EventRing.h"
#include "SafeWrite.h"

#include <array>
#include <atomic>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {
struct Crash
{
    int signal;
    std::string_view name;
};
// By SIGTRAP ends GLib, where it gets no memory or no file descriptor.
constexpr std::array<Crash, 6> crashes{{{SIGSEGV, "SIGSEGV"}, {SIGBUS, "SIGBUS"}, {SIGFPE, "SIGFPE"},
    {SIGILL, "SIGILL"}, {SIGABRT, "SIGABRT"}, {SIGTRAP, "SIGTRAP"}}};

std::string_view nameOf(int signal) noexcept
{
    for (const Crash &crash : crashes) {
        if (crash.signal == signal)
            return crash.name;
    }
    return "a signal";
}

/// A line put together in memory of its own.
class FixedText
{
public:
    void append(std::string_view text) noexcept
    {
        for (size_t i = 0; i < text.size() && m_size < m_characters.size(); ++i)
            m_characters[m_size++] = text[i];
    }
    void append(quint64 number, int digits) noexcept
    {
        std::array<char, 20> text;
        size_t begin = text.size();
        for (; begin > 0 && (number > 0 || digits > 0); number /= 10, --digits)
            text[--begin] = char('0' + number % 10);
        append(std::string_view(text.data() + begin, text.size() - begin));
    }
    std::string_view text() const noexcept { return {m_characters.data(), m_size}; }

private:
    std::array<char, 1024> m_characters;
    size_t m_size = 0;
};

FixedText crashLine(std::string_view signal, std::chrono::steady_clock::time_point begin) noexcept
{
    const auto time = std::chrono::steady_clock::now() - begin;
    const quint64 microseconds = quint64(std::chrono::duration_cast<std::chrono::microseconds>(time).count());
    FixedText line;
    line.append(R"({"time":)");
    line.append(microseconds / 1'000'000, 1);
    line.append(".");
    line.append(microseconds % 1'000'000, 6);
    line.append(R"(,"uuid":"","kind":"note","name":"crashed","arguments":[")");
    line.append(signal);
    line.append("\"]}\n");
    return line;
}

/// A file made for this; closed when it goes.
class NewFile
{
public:
    explicit NewFile(const std::string &path) noexcept
        : m_descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, 0600))
    {
    }
    ~NewFile() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(NewFile)

    void write(std::string_view text) const noexcept { SafeWrite::all(m_descriptor, text); }
    void write(const EventRing &ring) const noexcept { ring.writeAfterCrash(m_descriptor, 0); }

private:
    const int m_descriptor;
};

/// Unless nobody reads: a crash must not hang.
void sayOnStandardError(std::string_view text) noexcept
{
    pollfd entry{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&entry, 1, 0) > 0)
        SafeWrite::all(STDERR_FILENO, text);
}
} // namespace

struct CrashHandler::Installed
{
    void install();
    void uninstall() const;
    void useStackOfItsOwn();
    static void handle(int signal, siginfo_t *details, void *context) noexcept;
    void save(std::string_view signal) const noexcept;
    void endFile(std::string_view crash) const noexcept;
    void saveBundle(std::string_view crash) const noexcept;

    const Plan plan;
    RecordingFile::Progress *const file;
    std::array<struct sigaction, crashes.size()> before{};
    std::unique_ptr<char[]> stack;

    static std::atomic<const Installed *> s_current;
};

std::atomic<const CrashHandler::Installed *> CrashHandler::Installed::s_current = nullptr;

void CrashHandler::Installed::install()
{
    useStackOfItsOwn();
    s_current = this;
    struct sigaction action = {};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigfillset(&action.sa_mask);
    for (size_t i = 0; i < crashes.size(); ++i)
        ::sigaction(crashes[i].signal, &action, &before[i]);
}

void CrashHandler::Installed::uninstall() const
{
    for (size_t i = 0; i < crashes.size(); ++i)
        ::sigaction(crashes[i].signal, &before[i], nullptr);
    s_current = nullptr;
    if (stack) {
        stack_t none = {};
        none.ss_flags = SS_DISABLE;
        ::sigaltstack(&none, nullptr);
    }
}

/// For an endless recursion of this thread, which leaves no stack. Somebody else's is as good.
void CrashHandler::Installed::useStackOfItsOwn()
{
    constexpr size_t size = size_t(64) * 1024;
    stack_t present = {};
    if (::sigaltstack(nullptr, &present) != 0 || !(present.ss_flags & SS_DISABLE))
        return;
    stack = std::make_unique<char[]>(size);
    stack_t own = {};
    own.ss_sp = stack.get();
    own.ss_size = size;
    ::sigaltstack(&own, nullptr);
}

void CrashHandler::Installed::handle(int signal, siginfo_t *details, void *) noexcept
{
    static std::atomic<bool> isSaving = false;
    // Another thread is at it, which ends the process.
    while (isSaving.exchange(true))
        ::poll(nullptr, 0, -1);
    if (const Installed *installed = s_current) {
        installed->save(nameOf(signal));
        for (size_t i = 0; i < crashes.size(); ++i)
            ::sigaction(crashes[i].signal, &installed->before[i], nullptr);
    } else {
        std::signal(signal, SIG_DFL);
    }
    // A fault happens again when the instruction is tried again; what was sent has to be sent again.
    if (details->si_code <= 0)
        ::raise(signal);
}

void CrashHandler::Installed::save(std::string_view signal) const noexcept
{
    const FixedText crash = crashLine(signal, plan.begin);
    if (file)
        endFile(crash.text());
    saveBundle(crash.text());
    FixedText farewell;
    farewell.append(signal);
    farewell.append(plan.farewell);
    sayOnStandardError(farewell.text());
}

void CrashHandler::Installed::endFile(std::string_view crash) const noexcept
{
    file->isStopped = true;
    // What is being written is written to its end, unless the disk hangs or the writer itself has crashed.
    constexpr int patience = 500;
    for (int waited = 0; file->isWriting && waited < patience; ++waited)
        ::poll(nullptr, 0, 1);
    const int descriptor = file->descriptor;
    if (descriptor < 0)
        return;
    plan.events->writeAfterCrash(descriptor, file->written);
    SafeWrite::all(descriptor, crash);
}

void CrashHandler::Installed::saveBundle(std::string_view crash) const noexcept
{
    for (const std::string &folder : plan.folders)
        ::mkdir(folder.c_str(), 0700);
    {
        const NewFile recording(plan.recordingPath);
        recording.write(plan.recordingHeader);
        recording.write(*plan.events);
        recording.write(crash);
    }
    NewFile(plan.logPath).write(*plan.log);
    for (const Text &text : plan.texts)
        NewFile(text.path).write(text.contents);
}

CrashHandler::CrashHandler(Plan plan, RecordingFile::Progress *file)
    : m_installed(new Installed{std::move(plan), file, {}, {}})
{
    m_installed->install();
}

CrashHandler::~CrashHandler()
{
    m_installed->uninstall();
}

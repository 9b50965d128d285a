// SPDX-License-Identifier: MIT
#include "Interruption.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {
constexpr std::array interruptions{SIGINT, SIGTERM, SIGHUP};

// A handler may do next to nothing; writing into a pipe is among it.
int writeEnd = -1;

int makePipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    writeEnd = ends[1];
    return ends[0];
}

void wake(int)
{
    const int error = errno;
    const char byte = 0;
    // A full pipe is as good: it will be read.
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &byte, 1);
    errno = error;
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

void handleAll(void (*handler)(int))
{
    for (const int signal : interruptions)
        handle(signal, handler);
}
} // namespace

Interruption::Interruption(QObject *parent)
    : QObject(parent)
    , m_notifier(makePipe(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &Interruption::read);
    if (m_notifier.isValid())
        handleAll(wake);
}

Interruption::~Interruption()
{
    handleAll(SIG_DFL);
    m_notifier.setEnabled(false);
    ::close(int(m_notifier.socket()));
    ::close(std::exchange(writeEnd, -1));
}

void Interruption::read()
{
    char bytes[64];
    while (::read(int(m_notifier.socket()), bytes, sizeof bytes) > 0) { }
    handleAll(SIG_DFL);
    m_isRequested = true;
    Q_EMIT requested();
}

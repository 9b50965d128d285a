// SPDX-License-Identifier: MIT
#include "TerminationSignals.h"

#include <QApplication>
#include <QDialog>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {
constexpr int terminationSignals[] = {SIGTERM, SIGINT, SIGHUP};

// A handler may do next to nothing; writing into a pipe is among it.
struct Pipe
{
    int readEnd = -1;
    int writeEnd = -1;
};
Pipe wakeUp;

Pipe makePipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return {};
    return {ends[0], ends[1]};
}

void wake(int)
{
    const int error = errno;
    const char byte = 0;
    // A full pipe is as good: it will be read.
    [[maybe_unused]] const ssize_t written = ::write(wakeUp.writeEnd, &byte, 1);
    errno = error;
}

void catchUnlessIgnored(int signal)
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = wake;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

void closeModal(QWidget *modal)
{
    // A message box that cannot be escaped refuses to be closed.
    if (modal->close())
        return;
    if (auto *dialog = qobject_cast<QDialog *>(modal))
        dialog->reject();
}
} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
    , m_notifier((wakeUp = makePipe()).readEnd, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::read);
    if (wakeUp.writeEnd < 0)
        return;
    for (const int signal : terminationSignals)
        catchUnlessIgnored(signal);
}

TerminationSignals::~TerminationSignals()
{
    // The handlers stay: what arrives while the program ends anyway is written into the pipe and read by nobody.
    m_notifier.setEnabled(false);
}

void TerminationSignals::read()
{
    char bytes[64];
    while (::read(wakeUp.readEnd, bytes, sizeof bytes) > 0) { }
    Q_EMIT closeRequested();
}

void TerminationSignals::closeWindows()
{
    if (QWidget *popup = QApplication::activePopupWidget())
        popup->close();
    if (QWidget *modal = QApplication::activeModalWidget())
        closeModal(modal);
    // Whoever has opened a dialog still waits for it in an event loop of its own, in the middle of the window's code.
    if (QThread::currentThread()->loopLevel() > 1) {
        constexpr int soon = 10;
        QTimer::singleShot(soon, qApp, &TerminationSignals::closeWindows);
        return;
    }
    QApplication::closeAllWindows();
}

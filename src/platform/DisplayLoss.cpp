// SPDX-License-Identifier: MIT
#include "DisplayLoss.h"

#include "Recorder.h"
#include "StandardErrorLog.h"

#include <QGuiApplication>
#include <QLibrary>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {
using IoErrorHandler = int (*)(void *display);

std::atomic<bool> prepared = false;
std::thread::id guiThread;

/// Xlib's: a connection has broken. Ends the process; a return would end it too, after lines of Xlib's own.
int displayIsGone(void *)
{
    // The video's thread has a connection of its own. The GUI thread, whose connection broke at the same time, is left
    // to say so, lest there be two lines.
    if (std::this_thread::get_id() != guiThread)
        std::this_thread::sleep_for(2s);
    qWarning("The X11 connection broke");
    std::exit(EXIT_FAILURE);
}

void handleXlibErrors()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    QLibrary xlib(QStringLiteral("X11"), 6);
    const auto setHandler
        = reinterpret_cast<IoErrorHandler (*)(IoErrorHandler)>(xlib.resolve("XSetIOErrorHandler"));
    if (setHandler)
        setHandler(displayIsGone);
}
} // namespace

void DisplayLoss::prepare()
{
    guiThread = std::this_thread::get_id();
    handleXlibErrors();
    prepared = true;
}

/// Called by libraries in place of the C library's.
extern "C" __attribute__((visibility("default"))) void exit(int status) noexcept
{
    if (prepared) {
        Recorder::flush();
        StandardErrorLog::flush();
        ::_exit(status);
    }
    reinterpret_cast<void (*)(int)>(::dlsym(RTLD_NEXT, "exit"))(status);
    ::_exit(status);
}

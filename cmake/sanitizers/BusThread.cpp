// SPDX-License-Identifier: MIT
// Part of each program that is watched for leaks.
//
// Qt's connections to D-Bus share one thread, which it ends with the program. In about one of 400 ends Qt loses what it
// keeps of that thread (152 bytes, and the events and loops in them), when no thread is left that could know of it. The
// stack of that allocation goes through libraries without frame pointers, so that no suppression can name it reliably.
// Therefore the thread is made here, as soon as there is an application, with leaks left out for that long.
#include <QCoreApplication>
#include <QDBusConnection>

#include <sanitizer/lsan_interface.h>

namespace {
void makeBusThread()
{
    const __lsan::ScopedDisabler disabler;
    // Asking for a connection that there is not is enough.
    const QDBusConnection none(QStringLiteral("kelvo-none"));
}
} // namespace

Q_COREAPP_STARTUP_FUNCTION(makeBusThread)

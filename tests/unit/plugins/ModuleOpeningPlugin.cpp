// SPDX-License-Identifier: MIT
// A plug-in whose constructors open a module, as those of libsoup do, at the very moment at which another thread opens one,
// as GStreamer's does for each element that it has not loaded yet.
#include "KelvoPlugin.h"

#include <QByteArray>
#include <QFile>
#include <QObject>

#include <gmodule.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {
void openModule()
{
    g_module_close(g_module_open(nullptr, GModuleFlags(0)));
}

/// Whether a thread of this process waits for a lock.
bool waitsForLock(const QByteArray &thread)
{
    QFile call(QStringLiteral("/proc/self/task/%1/syscall").arg(QString::fromLatin1(thread)));
    return call.open(QIODevice::ReadOnly) && call.readAll().startsWith(QByteArray::number(SYS_futex) + ' ');
}

const bool hasOpenedModule = [] {
    const int start = qEnvironmentVariableIntValue("KELVO_TEST_OTHER_START");
    if (write(start, "s", 1) != 1)
        return false;
    // The dynamic linker's lock is held here, which the other thread comes to want.
    while (!waitsForLock(qgetenv("KELVO_TEST_OTHER_THREAD")))
        std::this_thread::yield();
    openModule();
    return true;
}();
} // namespace

class ModuleOpeningPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "metadata.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *, QString *) override { return hasOpenedModule; }
    void stop() override { }
};

#include "ModuleOpeningPlugin.moc"

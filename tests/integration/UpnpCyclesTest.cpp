// SPDX-License-Identifier: MIT
// What is left of the plug-in's memory when it is loaded and unloaded again and again. A look for leaks does not see all of it:
// GLib knows every object by which a handler is connected. GLib takes its memory from malloc here (G_SLICE), else what it
// keeps for later would count.
#include "TestGroup.h"
#include "UpnpCase.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <dlfcn.h>
#include <malloc.h>

namespace {
constexpr int mostRounds = 10;
constexpr int loadings = 5; // in each
// An object that keeps an address of the network, at most.
constexpr qint64 addressSize = 2 * 80;
constexpr qint64 tolerance = 40;

/// Bytes of the whole program. A sanitizer has an allocator of its own.
qint64 allocated()
{
    using Count = size_t (*)();
    static const auto count
        = reinterpret_cast<Count>(dlsym(RTLD_DEFAULT, "__sanitizer_get_current_allocated_bytes"));
    return qint64(count ? count() : mallinfo2().uordblks);
}

/// The plug-in's thread ends by itself, after the plug-in.
bool upnpRuns()
{
    const QDir threads(QStringLiteral("/proc/self/task"));
    const QStringList ids = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(ids.cbegin(), ids.cend(), [&threads](const QString &id) {
        QFile name(threads.filePath(id + QStringLiteral("/comm")));
        return name.open(QIODevice::ReadOnly) && name.readAll().trimmed() == "kelvo-upnp";
    });
}

class UpnpCyclesTest : public UpnpCase
{
    Q_OBJECT
private Q_SLOTS:
    void leavesNoMemoryBehind_data();
    void leavesNoMemoryBehind();

private:
    void loadAndUnload(int times, bool hasRenderer);
};

void UpnpCyclesTest::loadAndUnload(int times, bool hasRenderer)
{
    for (int i = 0; i < times; ++i) {
        QSignalSpy loaded(m_registry->pluginLoader(), &KelvoPluginLoader::pluginLoaded);
        m_registry->loadPlugin(QStringLiteral("upnp.so"));
        QVERIFY(loaded.wait());
        QTRY_VERIFY_WITH_TIMEOUT(upnpRuns(), 15'000); // its thread has no name before
        FakeUpnpDevice device;
        device.subscriptionDelay = 20; // so that its events have to wait
        QVERIFY(!hasRenderer || listen(device));
        m_heard.reset();
        m_registry->unloadPlugin(QStringLiteral("upnp.so"));
        m_comings.clear();
        QTRY_VERIFY_WITH_TIMEOUT(!upnpRuns(), 15'000);
        QCoreApplication::processEvents(); // it has said so, and is deleted now
    }
}

void UpnpCyclesTest::leavesNoMemoryBehind_data()
{
    QTest::addColumn<bool>("hasRenderer");
    QTest::addColumn<int>("addresses"); // that libraries are known to keep of each loading
    // GSSDP 1.6.2: that of the socket which it searches by.
    QTest::newRow("alone") << false << 1;
    // libsoup 3.2.3: that of the server, of which GUPnP asks once for the subscriptions.
    QTest::newRow("with a renderer") << true << 2;
}

void UpnpCyclesTest::leavesNoMemoryBehind()
{
    QFETCH(bool, hasRenderer);
    QFETCH(int, addresses);
    m_registry->unloadPlugin(QStringLiteral("upnp.so"));
    loadAndUnload(loadings, hasRenderer); // makes what is made once
    const qint64 limit = addresses * addressSize + tolerance;
    qint64 kept = -1; // bytes of each loading
    const auto isAllKnown = [&kept, limit] {
        return kept >= 0 && kept <= limit;
    };
    // A table grows or shrinks in one of the rounds; what each loading leaves behind is in all of them.
    for (int round = 0; round < mostRounds && !isAllKnown() && !QTest::currentTestFailed(); ++round) {
        const qint64 before = allocated();
        loadAndUnload(loadings, hasRenderer);
        kept = (allocated() - before) / loadings;
        qInfo("%lld bytes of each loading are left", kept);
    }
    QVERIFY(isAllKnown());
}
} // namespace

KELVO_TEST(UpnpCyclesTest)
#include "UpnpCyclesTest.moc"

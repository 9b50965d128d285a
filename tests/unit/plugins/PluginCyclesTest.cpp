// SPDX-License-Identifier: MIT
// Loading and unloading a thousand times leaves nothing behind.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "PluginFolder.h"

#include <QSignalSpy>
#include <QTest>

namespace {
constexpr int cycles = 1000;
// After these everything that is made once has been made.
constexpr int firstCycles = 200;
constexpr qint64 allowedGrowth = 4096; // KiB

struct Usage
{
    qint64 files = 0;
    qint64 threads = 0;
    qint64 memory = 0; // KiB
    qint64 mappings = 0;
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qint64 fieldOf(const QByteArray &status, const QByteArray &name)
{
    for (const QByteArray &line : status.split('\n')) {
        if (line.startsWith(name))
            return line.mid(name.size()).replace("kB", "").trimmed().toLongLong();
    }
    return -1;
}

Usage usage()
{
    const QByteArray status = contentOf(QStringLiteral("/proc/self/status"));
    return {QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::AllEntries).size(),
        fieldOf(status, "Threads:"), fieldOf(status, "VmRSS:"),
        contentOf(QStringLiteral("/proc/self/maps")).count(".so")};
}

class PluginCyclesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void leavesNothingBehind_data();
    void leavesNothingBehind();
};

void PluginCyclesTest::leavesNothingBehind_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<int>("renderers");
    QTest::newRow("good") << qEnvironmentVariable("KELVO_TEST_PLUGIN_DIR") << "good.so" << 1;
    QTest::newRow("simulator") << qEnvironmentVariable("KELVO_BUILT_PLUGIN_DIR") << "simulator.so" << 3;
}

void PluginCyclesTest::leavesNothingBehind()
{
    QFETCH(QString, folder);
    QFETCH(QString, plugin);
    QFETCH(int, renderers);
    qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(folder));
    KelvoRegistry registry;
    QSignalSpy added(&registry, &KelvoRegistry::rendererAdded);
    QSignalSpy loaded(registry.pluginLoader(), &KelvoPluginLoader::pluginLoaded);
    QSignalSpy removed(&registry, &KelvoRegistry::rendererRemoved);
    const qint64 threads = usage().threads;
    Usage before;
    for (int i = 0; i < cycles; ++i) {
        if (i == firstCycles) {
            // The loader's own goes as soon as it has nothing to do.
            QTRY_COMPARE(usage().threads, threads);
            before = usage();
        }
        registry.loadPlugin(plugin);
        QVERIFY(loaded.wait(20'000));
        QCOMPARE(registry.renderers().size(), renderers);
        registry.unloadPlugin(plugin);
        QCOMPARE(registry.renderers().size(), 0);
        QCOMPARE(registry.sources().size(), 0);
    }
    QTRY_COMPARE(usage().threads, threads);
    const Usage after = usage();
    QCOMPARE(added.size(), cycles * renderers);
    QCOMPARE(removed.size(), cycles * renderers);
    QCOMPARE(after.files, before.files);
    QCOMPARE(after.mappings, before.mappings);
    qInfo("memory from %lld to %lld KiB", before.memory, after.memory);
    QVERIFY2(after.memory - before.memory < allowedGrowth,
        qPrintable(QStringLiteral("grew by %1 KiB").arg(after.memory - before.memory)));
}
} // namespace

QTEST_GUILESS_MAIN(PluginCyclesTest)
#include "PluginCyclesTest.moc"

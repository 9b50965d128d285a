// SPDX-License-Identifier: MIT
// Back ends that begin with what takes long before they are loaded.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PluginFolder.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <sys/stat.h>

namespace {
class PluginAheadTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void onlyWhoAsksForIt_data();
    void onlyWhoAsksForIt();
    void onlyWhoIsGoingToStart_data();
    void onlyWhoIsGoingToStart();
    void notFromAnOpenFolder();
    void startsAsAlways_data();
    void startsAsAlways();

private:
    /// Waits until whatever there is to prepare has been prepared, and returns how; empty: nothing.
    QByteArray prepare();

    std::unique_ptr<PluginFolder> m_folder;
    std::unique_ptr<KelvoRegistry> m_registry;
};

void PluginAheadTest::init()
{
    KelvoTestCase::init();
    qunsetenv("KELVO_PLUGINS");
    qunsetenv("KELVO_TEST_PREPARED");
    m_folder = std::make_unique<PluginFolder>();
    m_registry = std::make_unique<KelvoRegistry>();
    QVERIFY(m_folder->add("good.so"));
}

void PluginAheadTest::cleanup()
{
    m_registry.reset();
    m_folder.reset();
}

QByteArray PluginAheadTest::prepare()
{
    KelvoPluginLoader *loader = m_registry->pluginLoader();
    QSignalSpy loaded(loader, &KelvoPluginLoader::pluginLoaded);
    QSignalSpy failed(loader, &KelvoPluginLoader::pluginFailed);
    loader->prepareAhead();
    // They have one thread: this comes after it.
    loader->load(QStringLiteral("good.so"));
    if (loaded.isEmpty() && failed.isEmpty() && !loaded.wait(20'000) && failed.isEmpty())
        return "good.so is not loaded";
    return qgetenv("KELVO_TEST_PREPARED");
}

void PluginAheadTest::onlyWhoAsksForIt_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<QByteArray>("prepared");
    QTest::newRow("asks") << "prepares-ahead.so" << QByteArray("on another thread");
    QTest::newRow("does not ask") << "prepares-unasked.so" << QByteArray();
    QTest::newRow("asks and has nothing") << "prepares-nothing.so" << QByteArray();
}

void PluginAheadTest::onlyWhoAsksForIt()
{
    QFETCH(QString, plugin);
    QVERIFY(m_folder->add(plugin));
    const LogRecorder log;
    QTEST(prepare(), "prepared");
    QCOMPARE(m_registry->loadedPlugins(), QStringList("good.so"));
    QCOMPARE(m_registry->pluginLoader()->status(plugin).state, KelvoPluginStatus::Available);
    QCOMPARE(log.warnings(), QStringList());
}

void PluginAheadTest::onlyWhoIsGoingToStart_data()
{
    QTest::addColumn<QByteArray>("named");
    QTest::addColumn<QByteArray>("prepared");
    QTest::newRow("named") << QByteArray("good,prepares-ahead") << QByteArray("on another thread");
    QTest::newRow("others are named") << QByteArray("good, nobody,") << QByteArray();
    QTest::newRow("nobody is named") << QByteArray("") << QByteArray();
}

void PluginAheadTest::onlyWhoIsGoingToStart()
{
    QFETCH(QByteArray, named);
    QVERIFY(m_folder->add("prepares-ahead.so"));
    qputenv("KELVO_PLUGINS", named);
    QTEST(prepare(), "prepared");
}

void PluginAheadTest::notFromAnOpenFolder()
{
    QVERIFY(m_folder->add("prepares-ahead.so"));
    const QByteArray file = QFile::encodeName(m_folder->filePath("prepares-ahead.so"));
    QCOMPARE(::chmod(file.constData(), 0777), 0);
    QCOMPARE(prepare(), QByteArray());
}

void PluginAheadTest::startsAsAlways_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("prepares") << "prepares-ahead.so";
    QTest::newRow("has nothing to prepare") << "prepares-nothing.so";
}

void PluginAheadTest::startsAsAlways()
{
    QFETCH(QString, plugin);
    QVERIFY(m_folder->add(plugin));
    qputenv("KELVO_PLUGINS", plugin.toUtf8());
    QSignalSpy loaded(m_registry->pluginLoader(), &KelvoPluginLoader::pluginLoaded);
    m_registry->pluginLoader()->prepareAhead();
    m_registry->pluginLoader()->loadDefaults();
    QVERIFY(loaded.wait(20'000));
    QCOMPARE(m_registry->loadedPlugins(), QStringList(plugin));
    QCOMPARE(m_registry->renderers().size(), 1);
}
} // namespace

QTEST_GUILESS_MAIN(PluginAheadTest)
#include "PluginAheadTest.moc"

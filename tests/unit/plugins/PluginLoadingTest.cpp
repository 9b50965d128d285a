// SPDX-License-Identifier: MIT
// Plug-ins that cannot be used, and everything else that can go wrong on the way to a running one.
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PluginFolder.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {
using State = KelvoPluginStatus::State;

class PluginLoadingTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void loadsAGoodOne();
    void failsWithTheReason_data();
    void failsWithTheReason();
    void failsForEachCut_data();
    void failsForEachCut();
    void startThatFailsLeavesTheRegistryAsItWas_data();
    void startThatFailsLeavesTheRegistryAsItWas();
    void stopThatThrowsEndsThePluginAllTheSame();
    void failedOneCanBeMended();
    void namesOneWithoutANameByItsFile();
    void toleratesOddMetadata();
    void listsWhatIsInTheFolders();
    void firstOfTwoFoldersCounts();
    void oneFileUnderTwoNamesRunsOnce();
    void oneFileInTwoRegistriesRunsOnce();
    void fileNamesHaveNoFolder();
    void vanishedFile();
    void loadsOnceWhenAskedTwice();
    void unloadWhileLoading();
    void unloadAndLoadAgainWhileLoading();
    void unloadWithinItsOwnStart();
    void loadsAnotherWithinItsStart();
    void unloadOfWhatDoesNotRun();
    void registryGoesWhileLoading();
    void startsInTheOrderAskedFor();
    void startsWhatTheEnvironmentNames_data();
    void startsWhatTheEnvironmentNames();
    void startsThoseThatStartByDefault();

private:
    bool fails(const QString &file);
    bool runs(const QString &file);
    KelvoPluginStatus status(const QString &file) const { return m_registry->pluginLoader()->status(file); }

    std::unique_ptr<PluginFolder> m_folder;
    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<QSignalSpy> m_loaded;
    std::unique_ptr<QSignalSpy> m_unloaded;
    std::unique_ptr<QSignalSpy> m_failed;
};

void PluginLoadingTest::init()
{
    KelvoTestCase::init();
    qunsetenv("KELVO_TEST_PLUGIN");
    qunsetenv("KELVO_PLUGINS");
    m_folder = std::make_unique<PluginFolder>();
    m_registry = std::make_unique<KelvoRegistry>();
    KelvoPluginLoader *loader = m_registry->pluginLoader();
    m_loaded = std::make_unique<QSignalSpy>(loader, &KelvoPluginLoader::pluginLoaded);
    m_unloaded = std::make_unique<QSignalSpy>(loader, &KelvoPluginLoader::pluginUnloaded);
    m_failed = std::make_unique<QSignalSpy>(loader, &KelvoPluginLoader::pluginFailed);
    QVERIFY(m_folder->add("good.so"));
}

void PluginLoadingTest::cleanup()
{
    m_loaded.reset();
    m_unloaded.reset();
    m_failed.reset();
    m_registry.reset();
    m_folder.reset();
}

/// Loads it and looks at everything that a failure leads to.
bool PluginLoadingTest::fails(const QString &file)
{
    const QStringList runningBefore = m_registry->loadedPlugins();
    const QList<KelvoRenderer *> renderersBefore = m_registry->renderers();
    m_failed->clear();
    LogRecorder log;
    m_registry->loadPlugin(file);
    if (m_failed->isEmpty() && !m_failed->wait(20'000))
        return false;
    const QString reason = m_failed->constFirst().at(1).toString();
    const KelvoPluginStatus now = status(file);
    const QStringList warnings = log.warnings();
    return m_failed->size() == 1 && m_failed->constFirst().at(0) == file && !reason.isEmpty()
        && now.state == State::Failed && now.error == reason && now.fileName == file && warnings.size() == 1
        && warnings.constFirst().contains(file) && warnings.constFirst().contains(reason)
        && m_registry->loadedPlugins() == runningBefore && m_registry->renderers() == renderersBefore
        && m_registry->sources().isEmpty() && m_registry->allPlaylists().isEmpty();
}

bool PluginLoadingTest::runs(const QString &file)
{
    m_registry->loadPlugin(file);
    while (!m_registry->loadedPlugins().contains(file)) {
        if (status(file).state != State::Loading || !m_loaded->wait(20'000))
            return false;
    }
    return status(file).state == State::Running && status(file).error.isEmpty();
}

void PluginLoadingTest::loadsAGoodOne()
{
    QCOMPARE(status("good.so").state, State::Available);
    LogRecorder log;
    m_registry->loadPlugin("good.so");
    // Not within the call, so that whoever starts up can connect to the registry first.
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(status("good.so").state, State::Loading);
    QVERIFY(runs("good.so"));
    QCOMPARE(m_registry->renderers().size(), 1);
    const KelvoPluginStatus now = status("good.so");
    QCOMPARE(now.name, QString("Good"));
    QCOMPARE(now.description, QString("Does nothing wrong"));
    QCOMPARE(now.version, QString("2.1"));
    QCOMPARE(now.brings, QStringList{"renderers"});
    QCOMPARE(now.startsByDefault, false);
    QCOMPARE(now.path, m_folder->filePath("good.so"));
    m_registry->unloadPlugin("good.so");
    QCOMPARE(m_registry->renderers().size(), 0);
    QCOMPARE(m_registry->loadedPlugins(), QStringList());
    QCOMPARE(status("good.so").state, State::Available);
    QCOMPARE(m_unloaded->size(), 1);
    QCOMPARE(log.warnings(), QStringList());
}

void PluginLoadingTest::failsWithTheReason_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");
    QTest::newRow("text file") << "text.so"
                               << "not a library";
    QTest::newRow("empty file") << "empty.so"
                                << "not a library";
    QTest::newRow("script") << "script.so"
                            << "not a library";
    QTest::newRow("header and nothing") << "header.so"
                                        << "truncated";
    QTest::newRow("header and zeros") << "zeros.so"
                                      << "";
    QTest::newRow("other machine") << "machine.so"
                                   << "";
    QTest::newRow("a library without the interface") << "no-interface.so"
                                                     << "not a plug-in";
    QTest::newRow("another interface version") << "old-interface.so"
                                               << "org.kelvo.Plugin/0.9";
    QTest::newRow("older version of the API")
        << "old-interface.so"
        << "made for version 0.9 of the plug-in API (org.kelvo.Plugin/0.9), this program has 1.0: it has to "
           "be built anew";
    QTest::newRow("newer version of the API") << "newer-interface.so"
                                              << "this program has 1.0: it needs a newer program";
    QTest::newRow("somebody else's plug-in") << "foreign-interface.so"
                                             << "org.example.Codec/1.0";
    QTest::newRow("another root object") << "other-root.so"
                                         << "KelvoPlugin";
    QTest::newRow("missing library") << "missing-library.so"
                                     << "libtest-plugin-helper.so";
    QTest::newRow("missing function") << "missing-function.so"
                                      << "kelvoTestHelper";
    QTest::newRow("no file") << "nowhere.so"
                             << "no such file";
    QTest::newRow("folder") << "folder.so"
                            << "no such file";
    QTest::newRow("no name") << ""
                             << "no such file";
    QTest::newRow("dangling link") << "dangling.so"
                                   << "no such file";
}

void PluginLoadingTest::failsWithTheReason()
{
    QFETCH(QString, file);
    QFETCH(QString, reason);
    const QByteArray good = m_folder->read("good.so");
    QByteArray otherMachine = good;
    otherMachine[18] = char(0xf7); // e_machine
    QVERIFY(m_folder->write("text.so", "This is not a library.\n"));
    QVERIFY(m_folder->write("script.so", "#!/bin/sh\nexit 1\n"));
    QVERIFY(m_folder->write("empty.so", {}));
    QVERIFY(m_folder->write("header.so", good.left(64)));
    QVERIFY(m_folder->write("zeros.so", good.left(20) + QByteArray(good.size() - 20, '\0')));
    QVERIFY(m_folder->write("machine.so", otherMachine));
    QVERIFY(QDir(m_folder->path()).mkdir("folder.so"));
    QVERIFY(QFile::link(m_folder->filePath("gone"), m_folder->filePath("dangling.so")));
    for (const char *made : {"no-interface.so", "old-interface.so", "newer-interface.so",
             "foreign-interface.so", "other-root.so", "missing-library.so", "missing-function.so"})
        QVERIFY(m_folder->add(made));
    QVERIFY(fails(file));
    QVERIFY2(status(file).error.contains(reason), qPrintable(status(file).error));
    // The same again, and beside one that runs.
    QVERIFY(runs("good.so"));
    QVERIFY(fails(file));
    QCOMPARE(m_registry->renderers().size(), 1);
}

void PluginLoadingTest::failsForEachCut_data()
{
    QTest::addColumn<double>("part");
    for (int sixteenth = 0; sixteenth < 16; ++sixteenth)
        QTest::addRow("%d/16", sixteenth) << sixteenth / 16.0;
    QTest::newRow("all but 64 bytes") << -64.0;
    QTest::newRow("all but one byte") << -1.0;
}

void PluginLoadingTest::failsForEachCut()
{
    QFETCH(double, part);
    const QByteArray good = m_folder->read("good.so");
    const double length = part < 0 ? double(good.size()) + part : double(good.size()) * part;
    QVERIFY(m_folder->write("cut.so", good.left(qsizetype(length))));
    QVERIFY(fails("cut.so"));
    QVERIFY(runs("good.so"));
}

void PluginLoadingTest::startThatFailsLeavesTheRegistryAsItWas_data()
{
    QTest::addColumn<QByteArray>("behaviour");
    QTest::addColumn<QString>("reason");
    QTest::newRow("refuses") << QByteArray("refuses") << "no such device";
    QTest::newRow("refuses silently") << QByteArray("refuses silently") << "refused";
    QTest::newRow("refuses too late") << QByteArray("refuses too late") << "changed its mind";
    QTest::newRow("throws") << QByteArray("throws") << "out of paper";
    QTest::newRow("throws and forgets") << QByteArray("throws and forgets") << "out of paper";
    QTest::newRow("throws a number") << QByteArray("throws a number") << "threw";
    QTest::newRow("throws when made") << QByteArray("throws when made") << "made to fail";
}

void PluginLoadingTest::startThatFailsLeavesTheRegistryAsItWas()
{
    QFETCH(QByteArray, behaviour);
    QFETCH(QString, reason);
    QVERIFY(m_folder->add("good.so", "other.so"));
    QVERIFY(runs("other.so"));
    qputenv("KELVO_TEST_PLUGIN", behaviour);
    QVERIFY(fails("good.so"));
    QVERIFY2(status("good.so").error.contains(reason), qPrintable(status("good.so").error));
    QCOMPARE(status("good.so").name, QString("Good"));
    // It may do better the next time.
    qunsetenv("KELVO_TEST_PLUGIN");
    QVERIFY(runs("good.so"));
    QCOMPARE(m_registry->renderers().size(), 2);
}

void PluginLoadingTest::stopThatThrowsEndsThePluginAllTheSame()
{
    QVERIFY(runs("good.so"));
    qputenv("KELVO_TEST_PLUGIN", "throws in stop");
    LogRecorder log;
    m_registry->unloadPlugin("good.so");
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(log.warnings().constFirst().contains("cannot let go"));
    QCOMPARE(m_registry->loadedPlugins(), QStringList());
    QCOMPARE(m_registry->renderers().size(), 0);
    qunsetenv("KELVO_TEST_PLUGIN");
    QVERIFY(runs("good.so"));
}

void PluginLoadingTest::failedOneCanBeMended()
{
    const QByteArray good = m_folder->read("good.so");
    QVERIFY(m_folder->write("mended.so", good.left(good.size() / 2)));
    QVERIFY(fails("mended.so"));
    QVERIFY(m_folder->write("mended.so", good));
    QVERIFY(runs("mended.so"));
}

void PluginLoadingTest::namesOneWithoutANameByItsFile()
{
    QVERIFY(m_folder->add("nameless.so"));
    QCOMPARE(status("nameless.so").name, QString("nameless"));
    QVERIFY(runs("nameless.so"));
    QCOMPARE(status("nameless.so").name, QString("nameless"));
}

void PluginLoadingTest::toleratesOddMetadata()
{
    QVERIFY(m_folder->add("odd-metadata.so"));
    QVERIFY(runs("odd-metadata.so"));
    QCOMPARE(status("odd-metadata.so").name, QString("odd-metadata"));
    QCOMPARE(status("odd-metadata.so").startsByDefault, false);
}

void PluginLoadingTest::listsWhatIsInTheFolders()
{
    const PluginFolder second;
    QVERIFY(m_folder->write("zz.so", "text"));
    QVERIFY(m_folder->write("notes.txt", "text"));
    QVERIFY(second.add("good.so"));
    QVERIFY(second.add("good.so", "another.so"));
    qputenv("KELVO_PLUGIN_PATH",
        QFile::encodeName(m_folder->path() + "::/no/such/folder:" + second.path() + ':'));
    const QStringList folders = KelvoPluginLoader::folders();
    QCOMPARE(folders.mid(0, 3), (QStringList{m_folder->path(), "/no/such/folder", second.path()}));
    QCOMPARE(folders.size(), 4); // and that of the build
    const QStringList available = m_registry->availablePlugins();
    QVERIFY(std::is_sorted(available.cbegin(), available.cend()));
    QCOMPARE(available.count("good.so"), 1);
    QVERIFY(available.contains("another.so"));
    QVERIFY(available.contains("zz.so"));
    QVERIFY(!available.contains("notes.txt"));
    // One that runs is still listed.
    QVERIFY(runs("good.so"));
    QCOMPARE(m_registry->availablePlugins(), available);
    qunsetenv("KELVO_PLUGIN_PATH");
    QCOMPARE(KelvoPluginLoader::folders().size(), 1);
}

void PluginLoadingTest::firstOfTwoFoldersCounts()
{
    const PluginFolder second;
    QVERIFY(second.add("nameless.so", "good.so"));
    for (const auto &[first, last, name] : {std::tuple(m_folder->path(), second.path(), QString("Good")),
             std::tuple(second.path(), m_folder->path(), QString("good"))}) {
        qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(first + ':' + last));
        QCOMPARE(m_registry->availablePlugins().count("good.so"), 1);
        QVERIFY(runs("good.so"));
        QCOMPARE(status("good.so").path, first + "/good.so");
        QCOMPARE(status("good.so").name, name);
        // What runs stays what it is while the folders change.
        qputenv("KELVO_PLUGIN_PATH", QFile::encodeName(last + ':' + first));
        QCOMPARE(status("good.so").path, first + "/good.so");
        m_registry->unloadPlugin("good.so");
        QCOMPARE(m_registry->renderers().size(), 0);
    }
}

void PluginLoadingTest::oneFileUnderTwoNamesRunsOnce()
{
    QVERIFY(QFile::link(m_folder->filePath("good.so"), m_folder->filePath("alias.so")));
    QVERIFY(runs("good.so"));
    QVERIFY(fails("alias.so"));
    QVERIFY2(status("alias.so").error.contains("good.so"), qPrintable(status("alias.so").error));
    QCOMPARE(m_registry->renderers().size(), 1);
    m_registry->unloadPlugin("alias.so");
    QCOMPARE(m_registry->renderers().size(), 1);
    m_registry->unloadPlugin("good.so");
    QCOMPARE(m_registry->renderers().size(), 0);
    QVERIFY(runs("alias.so"));
}

void PluginLoadingTest::oneFileInTwoRegistriesRunsOnce()
{
    QVERIFY(runs("good.so"));
    {
        KelvoRegistry second;
        QSignalSpy failed(second.pluginLoader(), &KelvoPluginLoader::pluginFailed);
        second.loadPlugin("good.so");
        QVERIFY(failed.wait());
        QCOMPARE(second.renderers().size(), 0);
    }
    QCOMPARE(m_registry->renderers().size(), 1);
    m_registry->unloadPlugin("good.so");
    KelvoRegistry third;
    QSignalSpy loaded(third.pluginLoader(), &KelvoPluginLoader::pluginLoaded);
    third.loadPlugin("good.so");
    QVERIFY(loaded.wait());
    QCOMPARE(third.renderers().size(), 1);
}

void PluginLoadingTest::fileNamesHaveNoFolder()
{
    const QString absolute = m_folder->filePath("good.so");
    const QString roundabout = "../" + QDir(m_folder->path()).dirName() + "/good.so";
    QVERIFY(fails(absolute));
    QVERIFY(fails(roundabout));
    QVERIFY(fails("./good.so"));
    QVERIFY(fails("good"));
}

void PluginLoadingTest::vanishedFile()
{
    QVERIFY(runs("good.so"));
    QVERIFY(QFile::remove(m_folder->filePath("good.so")));
    QCOMPARE(status("good.so").state, State::Running);
    QVERIFY(m_registry->loadedPlugins().contains("good.so"));
    m_registry->unloadPlugin("good.so");
    QCOMPARE(m_registry->renderers().size(), 0);
    QVERIFY(fails("good.so"));
}

void PluginLoadingTest::loadsOnceWhenAskedTwice()
{
    m_registry->loadPlugin("good.so");
    m_registry->loadPlugin("good.so");
    QVERIFY(runs("good.so"));
    m_registry->loadPlugin("good.so");
    QVERIFY(m_folder->add("good.so", "last.so"));
    QVERIFY(runs("last.so"));
    QCOMPARE(m_loaded->size(), 2);
    QCOMPARE(m_registry->renderers().size(), 2);
    QCOMPARE(m_registry->loadedPlugins(), (QStringList{"good.so", "last.so"}));
}

void PluginLoadingTest::unloadWhileLoading()
{
    QSignalSpy added(m_registry.get(), &KelvoRegistry::rendererAdded);
    m_registry->loadPlugin("good.so");
    m_registry->unloadPlugin("good.so");
    QCOMPARE(status("good.so").state, State::Available);
    QVERIFY(m_folder->add("good.so", "last.so"));
    QVERIFY(runs("last.so"));
    QCOMPARE(m_registry->loadedPlugins(), QStringList{"last.so"});
    QCOMPARE(added.size(), 1);
    QCOMPARE(m_unloaded->size(), 0);
    QCOMPARE(m_failed->size(), 0);
    QVERIFY(runs("good.so"));
}

void PluginLoadingTest::unloadAndLoadAgainWhileLoading()
{
    for (int i = 0; i < 5; ++i) {
        m_registry->loadPlugin("good.so");
        m_registry->unloadPlugin("good.so");
    }
    QVERIFY(runs("good.so"));
    QVERIFY(m_folder->add("good.so", "last.so"));
    QVERIFY(runs("last.so"));
    QCOMPARE(m_loaded->size(), 2);
    QCOMPARE(m_registry->renderers().size(), 2);
}

void PluginLoadingTest::unloadWithinItsOwnStart()
{
    qputenv("KELVO_TEST_PLUGIN", "unloads good.so");
    m_registry->loadPlugin("good.so");
    QTRY_COMPARE(status("good.so").state, State::Available);
    qunsetenv("KELVO_TEST_PLUGIN");
    QVERIFY(m_folder->add("good.so", "last.so"));
    QVERIFY(runs("last.so"));
    QCOMPARE(m_registry->loadedPlugins(), QStringList{"last.so"});
    QCOMPARE(m_registry->renderers().size(), 1);
    QVERIFY(runs("good.so"));
}

void PluginLoadingTest::loadsAnotherWithinItsStart()
{
    for (int i = 0; i < 10; ++i)
        QVERIFY(m_folder->add("good.so", QString("copy%1.so").arg(i)));
    qputenv("KELVO_TEST_PLUGIN", "loads copy9.so");
    for (int i = 0; i < 9; ++i)
        m_registry->loadPlugin(QString("copy%1.so").arg(i));
    QTRY_COMPARE(m_registry->loadedPlugins().size(), 10);
    QCOMPARE(m_registry->renderers().size(), 10);
    QCOMPARE(m_loaded->size(), 10);
    // The other way round: a start that unloads one that runs.
    qputenv("KELVO_TEST_PLUGIN", "unloads copy0.so");
    QVERIFY(runs("good.so"));
    QVERIFY(!m_registry->loadedPlugins().contains("copy0.so"));
    QCOMPARE(m_registry->renderers().size(), 10);
}

void PluginLoadingTest::unloadOfWhatDoesNotRun()
{
    LogRecorder log;
    m_registry->unloadPlugin("good.so");
    m_registry->unloadPlugin("nowhere.so");
    m_registry->unloadPlugin(QString());
    QCOMPARE(m_unloaded->size(), 0);
    QCOMPARE(status("good.so").state, State::Available);
    QCOMPARE(status("nowhere.so").state, State::Unknown);
}

void PluginLoadingTest::registryGoesWhileLoading()
{
    for (int i = 0; i < 10; ++i) {
        KelvoRegistry passing;
        passing.loadPlugin("good.so");
        if (i % 2)
            QCoreApplication::processEvents();
    }
    QVERIFY(runs("good.so"));
    QCOMPARE(m_registry->renderers().size(), 1);
}

void PluginLoadingTest::startsInTheOrderAskedFor()
{
    const QStringList order{"e.so", "b.so", "d.so", "a.so", "c.so"};
    for (const QString &file : order) {
        QVERIFY(m_folder->add("good.so", file));
        m_registry->loadPlugin(file);
    }
    QTRY_COMPARE(m_registry->loadedPlugins().size(), order.size());
    QCOMPARE(m_registry->loadedPlugins(), order);
    m_registry->pluginLoader()->unloadAll();
    QStringList ended;
    for (const auto &unloaded : std::as_const(*m_unloaded))
        ended.prepend(unloaded.at(0).toString());
    QCOMPARE(ended, order);
    QCOMPARE(m_registry->renderers().size(), 0);
}

void PluginLoadingTest::startsWhatTheEnvironmentNames_data()
{
    QTest::addColumn<QByteArray>("plugins");
    QTest::addColumn<QStringList>("running");
    QTest::addColumn<QStringList>("failed");
    const QStringList none;
    QTest::newRow("empty: none") << QByteArray("") << none << none;
    QTest::newRow("commas only: none") << QByteArray(",,") << none << none;
    QTest::newRow("blanks only: none") << QByteArray(" , ") << none << none;
    QTest::newRow("without suffix") << QByteArray("good") << QStringList{"good.so"} << none;
    QTest::newRow("with suffix") << QByteArray("good.so") << QStringList{"good.so"} << none;
    QTest::newRow("order") << QByteArray("other,good.so") << QStringList{"other.so", "good.so"} << none;
    QTest::newRow("blanks") << QByteArray(" good , other.so ,") << QStringList{"good.so", "other.so"} << none;
    QTest::newRow("twice") << QByteArray("good,good.so") << QStringList{"good.so"} << none;
    QTest::newRow("unknown") << QByteArray("nowhere,good") << QStringList{"good.so"}
                             << QStringList{"nowhere.so"};
    QTest::newRow("broken") << QByteArray("text,good") << QStringList{"good.so"} << QStringList{"text.so"};
}

void PluginLoadingTest::startsWhatTheEnvironmentNames()
{
    QFETCH(QByteArray, plugins);
    QFETCH(QStringList, running);
    QFETCH(QStringList, failed);
    QVERIFY(m_folder->add("good.so", "other.so"));
    QVERIFY(m_folder->add("by-default.so"));
    QVERIFY(m_folder->write("text.so", "text"));
    qputenv("KELVO_PLUGINS", plugins);
    m_registry->pluginLoader()->loadDefaults();
    QCOMPARE(m_registry->loadedPlugins(), QStringList());
    QTRY_COMPARE(m_loaded->size() + m_failed->size(), running.size() + failed.size());
    // One more, asked for after them, is the last to start.
    QVERIFY(m_folder->add("good.so", "last.so"));
    QVERIFY(runs("last.so"));
    QCOMPARE(m_registry->loadedPlugins(), running + QStringList{"last.so"});
    QCOMPARE(m_failed->size(), failed.size());
    if (!failed.isEmpty())
        QCOMPARE(m_failed->constFirst().at(0).toString(), failed.constFirst());
}

void PluginLoadingTest::startsThoseThatStartByDefault()
{
    QVERIFY(m_folder->add("by-default.so", "b.so"));
    QVERIFY(m_folder->add("by-default.so", "a.so"));
    QVERIFY(m_folder->add("nameless.so"));
    QVERIFY(m_folder->write("text.so", "text"));
    m_registry->pluginLoader()->loadDefaults();
    QTRY_VERIFY(m_registry->loadedPlugins().contains("a.so") && m_registry->loadedPlugins().contains("b.so"));
    const QStringList running = m_registry->loadedPlugins();
    QVERIFY(running.indexOf("a.so") < running.indexOf("b.so"));
    QVERIFY(!running.contains("good.so"));
    QVERIFY(!running.contains("nameless.so"));
    // The tester's renderers wait until they are asked for.
    QVERIFY(!running.contains("simulator.so"));
    // The log says why one that is there did not start.
    QTRY_COMPARE(status("text.so").state, State::Failed);
}
} // namespace

QTEST_GUILESS_MAIN(PluginLoadingTest)
#include "PluginLoadingTest.moc"

// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "TestGroup.h"
#include "TrackerTestCase.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace {
const QString pluginFile("tracker-source.so");

class Asker : public QObject
{
    Q_OBJECT
public:
    QMap<QString, QVariant> answers;
public Q_SLOTS:
    void sourcePropertyCallback(QString &key, QVariant &value) { answers.insert(key, value); }
};

qsizetype openFiles()
{
    return QDir("/proc/self/fd").entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size();
}

/// The store's library closes its files on a thread of its own, a moment after the store is closed.
bool storeIsHeld()
{
    const QFileInfoList files
        = QDir("/proc/self/fd").entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    const QString data = qEnvironmentVariable("XDG_DATA_HOME");
    return std::any_of(files.cbegin(), files.cend(),
        [&data](const QFileInfo &file) { return file.symLinkTarget().startsWith(data); });
}

bool workersRun()
{
    const QDir threads("/proc/self/task");
    const QStringList ids = threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(ids.cbegin(), ids.cend(), [&threads](const QString &id) {
        QFile name(threads.filePath(id + "/comm"));
        return name.open(QIODevice::ReadOnly) && name.readAll().startsWith("kelvo-");
    });
}
} // namespace

class TrackerSourceTest : public TrackerTestCase
{
    Q_OBJECT

    static bool load(KelvoRegistry &registry)
    {
        registry.loadPlugin(pluginFile);
        return QTest::qWaitFor([&] { return !registry.sources().isEmpty(); }, 20000);
    }

    bool waitUntilClosed() const
    {
        QSignalSpy closed(&store(), &KelvoTrackerStore::closed);
        return closed.wait(20000);
    }

    /// Loads and unloads the plug-in, until nothing of it runs any more. The store opens when all that was asked of it
    /// before is done, and one of its threads that is on its way out may still hold a file.
    bool comesAndGoes(KelvoRegistry &registry)
    {
        const auto isOpen = [this] {
            return store().state() == KelvoTrackerStore::Open;
        };
        if (!load(registry) || !QTest::qWaitFor(isOpen, 20000))
            return false;
        registry.unloadPlugin(pluginFile);
        if (!waitUntilClosed() || !QTest::qWaitFor([] { return !workersRun() && !storeIsHeld(); }, 20000))
            return false;
        // What they have queued last still holds the indexer, and that what it reads with.
        QCoreApplication::sendPostedEvents();
        return true;
    }

private Q_SLOTS:
    void startsByDefault()
    {
        KelvoRegistry registry;
        const KelvoPluginStatus status = registry.pluginLoader()->status(pluginFile);
        QCOMPARE(status.startsByDefault, true);
        QCOMPARE(status.brings, QStringList("sources"));
        QVERIFY(!status.name.isEmpty() && !status.description.isEmpty() && !status.version.isEmpty());
    }

    void isASource()
    {
        KelvoRegistry registry;
        QVERIFY(load(registry));
        KelvoSource *source = registry.findSourceByUuid("KelvoTrackerSource");
        QVERIFY(source);
        QCOMPARE(source->name(), "KelvoTrackerSource");
        Asker asker;
        QStringList accepted;
        for (const char *key : {"signIn", "signedIn", "deviceType", "manufacturer", "manufacturerURL",
                 "modelDescription", "modelName", "modelNumber", "modelURL", "serialNumber",
                 "presentationURL", "universalProductCode", "iconURL", "supportQuery"}) {
            if (source->kelvoProperty(key, &asker, "sourcePropertyCallback(QString&,QVariant&)"))
                accepted.append(key);
        }
        QCOMPARE(accepted,
            QStringList({"deviceType", "manufacturer", "modelDescription", "modelName", "modelNumber",
                "supportQuery"}));
        QCOMPARE(asker.answers.size(), 0);
        QTRY_COMPARE(asker.answers.size(), accepted.size());
        QCOMPARE(asker.answers.value("supportQuery"), QVariant(true));
        for (const QString &key : accepted)
            QVERIFY2(!asker.answers.value(key).toString().isEmpty(), qPrintable(key));
        LogRecorder log;
        source->setKelvoProperty("signIn", true);
        QCOMPARE(log.warnings().size(), 1);
        registry.unloadPlugin(pluginFile);
        QVERIFY(registry.sources().isEmpty());
        QVERIFY(waitUntilClosed());
    }

    void indexesWhileItIsLoaded()
    {
        addSong("a.mp3", {"A"});
        KelvoRegistry registry;
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        QVERIFY(load(registry));
        QVERIFY(indexed.wait(20000));
        QCOMPARE(titles(Type::AllSongs), QStringList("A"));
        addSong("b.mp3", {"B"});
        QVERIFY(waitForFiles(2));
        QCOMPARE(titles(Type::AllSongs), QStringList({"A", "B"}));
        registry.unloadPlugin(pluginFile);
        QVERIFY(waitUntilClosed());
        // Nor does whoever opens the store next index.
        addSong("c.mp3", {"C"});
        indexed.clear();
        QVERIFY(openStore());
        QVERIFY(!indexed.wait(1000) && indexed.isEmpty());
        QCOMPARE(titles(Type::AllSongs), QStringList({"A", "B"}));
    }

    void countsWhatRenderersPlay()
    {
        const QString path = addSong("a.mp3", {"A"});
        KelvoRegistry registry;
        MinimalRenderer early("early", "Early");
        registry.addRenderer(&early);
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        QVERIFY(load(registry));
        QVERIFY(indexed.wait(20000));
        auto late = std::make_unique<MinimalRenderer>("late", "Late");
        registry.addRenderer(late.get());
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        for (MinimalRenderer *renderer : {&early, late.get()}) {
            Q_EMIT renderer->mediaChanged(0, {"x", QUrl::fromLocalFile(path), {}});
            Q_EMIT renderer->metadataChanged("duration", {1});
            Q_EMIT renderer->stateChanged(KelvoRenderer::Playing);
        }
        QTRY_COMPARE(counted.count(), 2);
        late.reset();
        QCOMPARE(titles(Type::MostPlayedSongs), QStringList("A"));
        registry.unloadPlugin(pluginFile);
        QVERIFY(waitUntilClosed());
    }

    void correctsTheLengthOfWhatIsPlayed()
    {
        const QString path = addSong("a.mp3", {"A"});
        KelvoRegistry registry;
        MinimalRenderer renderer("r", "R");
        registry.addRenderer(&renderer);
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        QVERIFY(load(registry));
        QVERIFY(indexed.wait(20000));
        QCOMPARE(value(*result(Type::AllSongs), 0, "songLength").toInt(), 1);
        QSignalSpy corrected(&store(), &KelvoTrackerStore::lengthCorrected);
        const auto play = [&](const QUrl &url, int seconds) {
            Q_EMIT renderer.mediaChanged(0, {"x", url, {}});
            Q_EMIT renderer.metadataChanged("duration", {seconds});
        };
        play(QUrl("file:///nowhere.mp3"), 9); // none of the store
        play(QUrl::fromLocalFile(path), 0); // not known
        play(QUrl::fromLocalFile(path), -1);
        play(QUrl::fromLocalFile(path), 1); // nothing new
        play(QUrl::fromLocalFile(path), 7);
        QTRY_COMPARE(corrected.count(), 1);
        QCOMPARE(corrected.first(), QVariantList({QUrl::fromLocalFile(path), 7}));
        const auto songs = result(Type::AllSongs);
        QCOMPARE(texts(*songs, "songLength"), QStringList("7"));
        QCOMPARE(texts(*songs, "songTitle"), QStringList("A")); // and nothing else
        registry.unloadPlugin(pluginFile);
        QVERIFY(waitUntilClosed());
    }

    void comesAndGoesCleanly()
    {
        addSong("a.mp3", {"A"});
        KelvoRegistry registry;
        QVERIFY(comesAndGoes(registry));
        const qsizetype files = openFiles();
        QSignalSpy removed(&registry, &KelvoRegistry::sourceRemoved);
        for (int round = 0; round < 100; ++round) {
            QVERIFY(load(registry));
            if (round % 10 == 0)
                QTRY_COMPARE(store().state(), KelvoTrackerStore::Open);
            registry.unloadPlugin(pluginFile);
            QVERIFY(registry.sources().isEmpty());
        }
        QCOMPARE(removed.count(), 100);
        QVERIFY(comesAndGoes(registry));
        // Fewer are as good: on a busy machine the first count finds some that are about to be closed.
        QTRY_VERIFY2(openFiles() <= files, qPrintable(QString::number(openFiles())));
        QVERIFY(openStore()); // the lock is free
        QVERIFY(!store().isReadOnly());
    }

    void refusesToBeThereTwice()
    {
        KelvoRegistry registry;
        MinimalSource other("KelvoTrackerSource", "Other");
        registry.addSource(&other);
        QSignalSpy failed(registry.pluginLoader(), &KelvoPluginLoader::pluginFailed);
        registry.loadPlugin(pluginFile);
        QVERIFY(failed.wait(20000));
        QCOMPARE(registry.sources().size(), 1);
        QCOMPARE(store().state(), KelvoTrackerStore::Closed);
    }
};

KELVO_TEST(TrackerSourceTest)
#include "TrackerSourceTest.moc"

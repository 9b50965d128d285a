// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlayCounter.h"
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "TestGroup.h"
#include "TrackerTestCase.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

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
        QVERIFY(store().isIndexing());
        registry.unloadPlugin(pluginFile);
        QVERIFY(!store().isIndexing());
        QVERIFY(waitUntilClosed());
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

    void countsAfterHalfTheSongOrFourMinutes()
    {
        QCOMPARE(KelvoPlayCounter::neededTime(1), 500);
        QCOMPARE(KelvoPlayCounter::neededTime(200), 100'000);
        QCOMPARE(KelvoPlayCounter::neededTime(480), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(481), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(INT_MAX), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(0), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(-1), 240'000);
    }

    void countsOnceForEachPlaying()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("r", "R");
        registry.addRenderer(&renderer);
        KelvoPlayCounter counter(&registry);
        QSignalSpy played(&counter, &KelvoPlayCounter::played);
        const auto tell = [&] {
            Q_EMIT renderer.mediaChanged(0, {"x", QUrl("file:///a"), {}});
        };
        const auto duration = [&](int seconds) {
            Q_EMIT renderer.metadataChanged("duration", {seconds});
        };
        const auto state = [&](KelvoRenderer::State s) {
            Q_EMIT renderer.stateChanged(s);
        };
        // From item to item, as renderers do.
        const auto begin = [&] {
            state(KelvoRenderer::Transitioning);
            tell();
            state(KelvoRenderer::Playing);
        };
        state(KelvoRenderer::Playing);
        QVERIFY(!played.wait(100)); // nothing is known of an item
        begin();
        state(KelvoRenderer::Paused);
        duration(1);
        QVERIFY(!played.wait(700)); // paused
        state(KelvoRenderer::Playing);
        QVERIFY(played.wait(1000));
        QVERIFY(!played.wait(700)); // once
        tell(); // to somebody who has chosen the renderer
        state(KelvoRenderer::Playing);
        QVERIFY(!played.wait(700)); // it plays on
        begin(); // again, in repeat "one"
        QVERIFY(played.wait(1000));
        begin();
        QVERIFY(!played.wait(200)); // left before its half
        begin();
        duration(3600);
        QVERIFY(!played.wait(700)); // four minutes are far away
        QCOMPARE(played.count(), 2);
        QCOMPARE(played.last().first().toUrl(), QUrl("file:///a"));
    }

    void comesAndGoesCleanly()
    {
        addSong("a.mp3", {"A"});
        KelvoRegistry registry;
        QVERIFY(load(registry));
        registry.unloadPlugin(pluginFile);
        QVERIFY(waitUntilClosed());
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
        QTRY_COMPARE_WITH_TIMEOUT(store().state(), KelvoTrackerStore::Closed, 20000);
        QTRY_COMPARE_WITH_TIMEOUT(openFiles(), files, 40000); // threads that wait for work go after a while
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

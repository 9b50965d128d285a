// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "TestGroup.h"
#include "TrackerTestCase.h"

#include <QSignalSpy>
#include <QTest>

/// What a renderer plays, seen by the store: both as they are loaded from their plug-ins.
class TrackerPlayingTest : public TrackerTestCase
{
    Q_OBJECT
private Q_SLOTS:
    // The whole way: a result becomes a playlist, the renderer plays it, the store has counted it.
    void countsWhatTheMediaEnginePlays()
    {
        addSong("a.mp3", {"A"});
        KelvoRegistry registry;
        QSignalSpy indexed(&store(), &KelvoTrackerStore::indexed);
        registry.loadPlugin("tracker-source.so");
        QVERIFY(indexed.wait(20000));
        registry.loadPlugin("gst-renderer.so");
        QTRY_COMPARE_WITH_TIMEOUT(registry.renderers().size(), 1, 20000);
        const auto songs = result(Type::AllSongs);
        KelvoGeneralSourcePlaylist playlist(KelvoPlaylist::getNewPlaylistId(), "Songs", "KelvoTrackerSource");
        playlist.setUnderlyingModel(songs.get());
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        QSignalSpy corrected(&store(), &KelvoTrackerStore::lengthCorrected);
        store().correctLength(
            QUrl(songs->index(0, 2).data().toString()), 99); // as if it had been read wrongly
        QTRY_COMPARE(corrected.count(), 1);
        KelvoRenderer *renderer = registry.renderers().constFirst();
        QSignalSpy completed(renderer, &KelvoRenderer::playbackCompleted);
        renderer->assignPlaylist(&playlist);
        renderer->play();
        QVERIFY(completed.wait(20000));
        QTRY_COMPARE(counted.count(), 1);
        QTRY_COMPARE(corrected.count(), 2);
        const auto played = result(Type::MostPlayedSongs);
        QCOMPARE(value(*played, 0, "songLength").toInt(), 1);
        QCOMPARE(texts(*played, "songTitle"), QStringList("A"));
        QCOMPARE(value(*played, 0, "usageCounter").toInt(), 1);
        QCOMPARE(titles(Type::RecentlyPlayedSongs), QStringList("A"));
        QCOMPARE(titles(Type::NeverPlayedSongs), QStringList());
        registry.unloadPlugin("tracker-source.so");
        registry.unloadPlugin("gst-renderer.so");
        QSignalSpy closed(&store(), &KelvoTrackerStore::closed);
        QVERIFY(closed.wait(20000));
    }
};

KELVO_TEST(TrackerPlayingTest)
#include "TrackerPlayingTest.moc"

// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>

// The process has one service that is started once, so the functions below build on each other in this order.
class SharedTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        QCOMPARE(KelvoShared::instance(), KelvoShared::instance());
    }

    void publishesNothingBeforeTracking()
    {
        MinimalPlaylist playlist("p1", "One");
        QVERIFY(!KelvoShared::instance()->publishPlaylist(&playlist));
        QVERIFY(KelvoRegistry::instance()->allPlaylists().isEmpty());
    }

    void saysThatThereIsNoBus()
    {
        LogRecorder log;
        QVERIFY(!KelvoShared::instance()->initTracking(nullptr));
        QVERIFY(!KelvoShared::instance()->initTracking(KelvoRegistry::instance()));
        QVERIFY(!KelvoShared::instance()->initTracking(KelvoRegistry::instance()));
        QCOMPARE(log.warnings(), QStringList("There is no session bus: playlists stay within this process"));
    }

    void publishesAndWithdraws()
    {
        KelvoRegistry *registry = KelvoRegistry::instance();
        KelvoShared *shared = KelvoShared::instance();
        QSignalSpy added(registry, &KelvoRegistry::playlistAdded);
        QSignalSpy removed(registry, &KelvoRegistry::playlistRemoved);
        QPointer<KelvoPlaylist> playlist = new MinimalPlaylist("p1", "One");
        QVERIFY(shared->publishPlaylist(playlist));
        QCOMPARE(added.size(), 1);
        QCOMPARE(registry->findPlaylistByUuid("p1"), playlist.data());
        shared->unPublishPlaylist("p1");
        QCOMPARE(removed.size(), 1);
        QVERIFY(playlist); // whoever heard of the removal may still look at it
        QTRY_VERIFY(!playlist);
    }

    void leavesARefusedPlaylistToTheCaller()
    {
        KelvoShared *shared = KelvoShared::instance();
        shared->publishPlaylist(new MinimalPlaylist("p2", "Two"));
        MinimalPlaylist twin("p2", "Twin");
        QVERIFY(!shared->publishPlaylist(&twin));
        QVERIFY(!shared->publishPlaylist(nullptr));
        QCOMPARE(KelvoRegistry::instance()->allPlaylists().size(), 1);
        shared->unPublishPlaylist("p2");
        QVERIFY(KelvoRegistry::instance()->allPlaylists().isEmpty());
    }

    void withdrawsOnlyItsOwn()
    {
        LogRecorder log;
        KelvoShared::instance()->unPublishPlaylist("stranger");
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("stranger"));
    }

    void ownsWhatIsStillPublishedAtTheEnd()
    {
        QVERIFY(KelvoShared::instance()->publishPlaylist(new MinimalPlaylist("p3", "Three")));
    }
};

KELVO_TEST(SharedTest)
#include "SharedTest.moc"

// SPDX-License-Identifier: MIT
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PeerProcess.h"
#include "PrivateBus.h"
#include "SharedLists.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <csignal>

// The session bus falls silent and dies while playlists are shared. One story, in this order.
class SharedBusDeathTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        m_bus = std::make_unique<PrivateBus>();
        m_peer = std::make_unique<PeerProcess>();
        QVERIFY(KelvoShared::instance()->initTracking(registry()));
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("mine", "Mine", 5)));
        m_peer->tell("publish theirs 3000 Theirs");
        m_peer->tell("publish unread 3000 Unread");
        QTRY_VERIFY(find("theirs") && find("unread"));
        find("theirs")->itemModel();
        QTRY_COMPARE_WITH_TIMEOUT(find("theirs")->count(), 3000, 30'000);
        QTRY_COMPARE(m_peer->tell("names").split(u'|').size(), 3);
    }

    void worksOnWhileTheBusIsSilent()
    {
        ::kill(pid_t(m_bus->pid()), SIGSTOP);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("more", "More", 5)));
        KelvoShared::instance()->unPublishPlaylist("more");
        find("mine")->removeItem(0);
        QCOMPARE(find("unread")->count(), 0);
        QVERIFY(timer.elapsed() < 1000); // the bus would have had five seconds for each answer
        ::kill(pid_t(m_bus->pid()), SIGCONT);
        QTRY_COMPARE_WITH_TIMEOUT(find("unread")->count(), 3000, 30'000);
    }

    void dropsThePlaylistsOfOthersWhenTheBusDies()
    {
        QPointer<KelvoPlaylist> theirs = find("theirs");
        QSignalSpy removed(registry(), &KelvoRegistry::playlistRemoved);
        LogRecorder log;
        m_bus->kill();
        QTRY_COMPARE(removed.size(), 2);
        QTRY_VERIFY(!theirs);
        QCOMPARE(registry()->allPlaylists(), QList<KelvoPlaylist *>{find("mine")});
        QCOMPARE(find("mine")->count(), 4);
        QCOMPARE(log.warnings(), QStringList("The session bus is gone: playlists stay within this process"));
        // The other process has seen the same.
        QTRY_COMPARE(m_peer->tell("names"), "Theirs|Unread");
    }

    void worksOnWithoutTheBus()
    {
        LogRecorder log;
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("later", "Later", 2)));
        find("later")->removeItem(0);
        QCOMPARE(find("later")->count(), 1);
        KelvoShared::instance()->unPublishPlaylist("later");
        KelvoShared::instance()->unPublishPlaylist("mine");
        QVERIFY(registry()->allPlaylists().isEmpty());
        m_peer->quit();
        QCOMPARE(log.warnings(), QStringList());
    }

    void cleanupTestCase()
    {
        m_peer.reset();
        m_bus.reset();
    }

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<PeerProcess> m_peer;
};

KELVO_TEST(SharedBusDeathTest)
#include "SharedBusDeathTest.moc"

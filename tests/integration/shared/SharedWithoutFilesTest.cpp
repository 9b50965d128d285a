// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PeerProcess.h"
#include "PrivateBus.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QAbstractItemModelTester>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
/// A bus on a network socket, which passes no files.
const QByteArray configuration
    = "<busconfig><type>session</type>"
      "<listen>tcp:host=127.0.0.1,bind=127.0.0.1,port=0,family=ipv4</listen>"
      "<auth>ANONYMOUS</auth><allow_anonymous/>"
      "<policy context='default'><allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/>"
      "<allow own='*'/></policy></busconfig>";
} // namespace

// Playlists are shared page by page where the bus passes no files.
class SharedWithoutFilesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        QFile file(m_folder.filePath("bus.conf"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(configuration);
        file.close();
        m_bus = std::make_unique<PrivateBus>(QStringList("--config-file=" + file.fileName()));
        QVERIFY(KelvoShared::instance()->initTracking(registry()));
        m_peer = std::make_unique<PeerProcess>();
    }

    void cleanupTestCase() { m_peer.reset(); }

    void readsPages()
    {
        LogRecorder log;
        m_peer->tell("publish long 2500 Long");
        QTRY_VERIFY(find("long"));
        KelvoPlaylist *playlist = find("long");
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 2500, 30'000);
        QVERIFY(changes.size() >= 6);
        for (uint row = 0; row < 2500; ++row)
            QCOMPARE(playlist->mediaInfoAt(row).title(), "Song " + QString::number(row));
        m_peer->tell("remove long 0 9");
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 2490, 30'000);
        QCOMPARE(playlist->mediaInfoAt(0).title(), "Song 10");
        QCOMPARE(log.warnings(), QStringList());
    }

    void refusesFiles()
    {
        QDBusConnection asking = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "asking");
        QVERIFY(asking.isConnected());
        QVERIFY(!asking.connectionCapabilities().testFlag(QDBusConnection::UnixFileDescriptorPassing));
        const QString service = QStringLiteral("org.kelvo.Playlists.pid%1").arg(m_peer->pid());
        const QDBusPendingReply<> reply = asking.asyncCall(QDBusMessage::createMethodCall(
            service, "/org/kelvo/Playlists/p0", "org.kelvo.Playlist1", "OpenItems"));
        QTRY_VERIFY(reply.isFinished());
        QCOMPARE(reply.error().type(), QDBusError::NotSupported);
        QDBusConnection::disconnectFromBus("asking");
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<PeerProcess> m_peer;
};

KELVO_TEST(SharedWithoutFilesTest)
#include "SharedWithoutFilesTest.moc"

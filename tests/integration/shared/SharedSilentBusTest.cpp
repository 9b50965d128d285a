// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "SharedLists.h"
#include "TestGroup.h"

#include <QDir>
#include <QTest>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// Something listens at the address of the session bus and never says a word. The service waits for it half a
// second, by the environment, and not on the time of this thread.
class SharedSilentBusTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/silent bus";
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        QVERIFY(size_t(path.size()) < sizeof address.sun_path);
        std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
        m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        QCOMPARE(::bind(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        QCOMPARE(::listen(m_socket, 5), 0);
        qputenv(
            "DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QByteArray(path).replace(" ", "%20") + ",guid=0123");
    }

    void doesNotWait()
    {
        LogRecorder log;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(KelvoShared::instance()->initTracking(KelvoRegistry::instance()));
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("mine", "Mine", 3)));
        QVERIFY(timer.elapsed() < 400);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(timer.elapsed() >= 500);
        QCOMPARE(log.warnings().first(),
            "There is no use of the session bus, it does not answer: playlists stay within this process");
    }

    void worksWithoutIt()
    {
        QCOMPARE(KelvoRegistry::instance()->findPlaylistByUuid("mine")->count(), 3);
        KelvoShared::instance()->unPublishPlaylist("mine");
        QVERIFY(KelvoRegistry::instance()->allPlaylists().isEmpty());
    }

    void cleanupTestCase() { ::close(m_socket); }

private:
    int m_socket = -1;
};

KELVO_TEST(SharedSilentBusTest)
#include "SharedSilentBusTest.moc"

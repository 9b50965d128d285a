// SPDX-License-Identifier: MIT
// The server of the running back end: who is let in, and that a crowd at its door does not hold up the window.
#include "TestGroup.h"
#include "UpnpCase.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTcpSocket>

#include <sys/resource.h>
#include <time.h>

#include <vector>

namespace {
/// Milliseconds of work of this thread, whatever else the machine does.
qint64 workOfThread()
{
    struct timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

class UpnpExposureTest : public UpnpCase
{
    Q_OBJECT
private Q_SLOTS:
    void strangersNetworksAreRefused();
    void crowdDoesNotHoldUpEvents();

private:
    /// The first line of the answer to a request from that address of this computer.
    QByteArray ask(const QUrl &server, const QString &from);
};

QByteArray UpnpExposureTest::ask(const QUrl &server, const QString &from)
{
    QTcpSocket socket;
    if (!socket.bind(QHostAddress(from)))
        return "no such address here";
    socket.connectToHost(server.host(), quint16(server.port()));
    socket.write("GET / HTTP/1.1\r\nHost: " + server.authority().toLatin1() + "\r\n\r\n");
    const bool isEnded = QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::UnconnectedState; });
    return isEnded ? socket.readLine().trimmed() : "no end of the answer";
}

// As a host of another network would come, which the system lets reach every address of this computer.
void UpnpExposureTest::strangersNetworksAreRefused()
{
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    const QUrl server = device.eventAddress();
    QCOMPARE(server.host(), "127.0.0.1");
    QVERIFY2(ask(server, "127.0.0.1").contains(" 404 "), "who belongs to the network is let in");
    QVERIFY2(ask(server, "127.3.2.1").contains(" 404 "), "who belongs to the network is let in");
    const QString stranger = QStringLiteral("198.51.100.7");
    if (qEnvironmentVariableIsEmpty("KELVO_TEST_NAMESPACE"))
        QSKIP("Only root has a network of its own, for an address of another one");
    QCOMPARE(QProcess::execute("ip", {"address", "add", stranger + "/32", "dev", "lo"}), 0);
    const QByteArray answer = ask(server, stranger);
    QCOMPARE(QProcess::execute("ip", {"address", "delete", stranger + "/32", "dev", "lo"}), 0);
    QVERIFY2(answer.contains(" 403 "), answer.constData());
}

void UpnpExposureTest::crowdDoesNotHoldUpEvents()
{
    struct rlimit limit = {};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const struct rlimit usual = limit;
    limit.rlim_cur = limit.rlim_max;
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    FakeUpnpDevice device;
    QVERIFY(listen(device));
    const QUrl server = device.eventAddress();
    std::vector<std::unique_ptr<QTcpSocket>> crowd;
    qint64 longest = 0;
    qint64 slowest = 0;
    for (int i = 0; i < 10; ++i) {
        for (int k = 0; k < 100; ++k) {
            auto socket = std::make_unique<QTcpSocket>();
            socket->connectToHost(server.host(), quint16(server.port()));
            socket->write("NOTIFY / HTTP/1.1\r\n");
            crowd.push_back(std::move(socket));
        }
        QTRY_VERIFY(std::all_of(crowd.cbegin(), crowd.cend(), [](const auto &socket) {
            return socket->state() != QAbstractSocket::HostLookupState
                && socket->state() != QAbstractSocket::ConnectingState;
        }));
        m_heard->clear();
        QElapsedTimer time;
        time.start();
        const QByteArray state = i % 2 ? "STOPPED" : "PLAYING";
        device.results["CurrentURI"] = "http://elsewhere/song";
        device.sendState(state);
        const auto expected = i % 2 ? KelvoRenderer::Stopped : KelvoRenderer::Playing;
        while (m_heard->state() != expected && time.elapsed() < 5000) {
            const qint64 before = workOfThread();
            QTest::qWait(1);
            longest = qMax(longest, workOfThread() - before);
        }
        QCOMPARE(m_heard->state(), expected);
        slowest = qMax(slowest, time.elapsed());
    }
    crowd.clear();
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    qInfo("reliability: exposure-crowd: 1000 connections, an event within %lld ms, %lld ms of the window's "
          "thread at most",
        slowest, longest);
}
} // namespace

KELVO_TEST(UpnpExposureTest)
#include "UpnpExposureTest.moc"

// SPDX-License-Identifier: MIT
#include "MediaServer.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"
#include "ToneWave.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>

namespace {
constexpr int patience = 10'000; // milliseconds

ServedMedium letters()
{
    ServedMedium medium;
    medium.size = 26;
    medium.type = "text/plain";
    medium.bytesPerSecond = 2;
    medium.read = [](qint64 from, qint64 most) {
        return QByteArray("abcdefghijklmnopqrstuvwxyz").mid(from, most);
    };
    return medium;
}

struct Answer
{
    QByteArray status; ///< its number
    QByteArray head;
    QByteArray body;
};

Answer split(const QByteArray &bytes)
{
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    return {bytes.mid(9, 3), bytes.left(end + 2), bytes.mid(end + 4)};
}
} // namespace

/// What clients get of the server, well treated and not.
class MediaServerTest : public KelvoTestCase
{
    Q_OBJECT
private:
    std::unique_ptr<QTcpSocket> send(const QByteArray &request)
    {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QHostAddress::LocalHost, quint16(m_server->url("x").port()));
        socket->write(request);
        return socket;
    }
    /// All that comes until the server closes.
    Answer ask(const QByteArray &line, const QByteArray &headers = {})
    {
        const auto socket = send(line + " HTTP/1.1\r\n" + headers + "\r\n");
        QSignalSpy closed(socket.get(), &QTcpSocket::disconnected);
        if (!closed.wait(patience))
            return {};
        return split(socket->readAll());
    }

    std::unique_ptr<MediaServer> m_server;

private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_server = std::make_unique<MediaServer>();
        QString error;
        QVERIFY(m_server->listen(QHostAddress::LocalHost, &error));
        m_server->serve("a.txt", letters());
    }
    void cleanup() { m_server.reset(); }

    void wholeAndParts()
    {
        const Answer whole = ask("GET /a.txt?title=x");
        QCOMPARE(whole.status, QByteArray("200"));
        QCOMPARE(whole.body, QByteArray("abcdefghijklmnopqrstuvwxyz"));
        QVERIFY(whole.head.contains("Content-Length: 26\r\n"));
        QVERIFY(whole.head.contains("Content-Type: text/plain\r\n"));
        const Answer part = ask("GET /a.txt", "Range: bytes=5-9\r\n");
        QCOMPARE(part.status, QByteArray("206"));
        QCOMPARE(part.body, QByteArray("fghij"));
        QVERIFY(part.head.contains("Content-Range: bytes 5-9/26\r\n"));
        QCOMPARE(ask("GET /a.txt", "range:bytes=20-\r\n").body, QByteArray("uvwxyz"));
        QCOMPARE(ask("GET /a.txt", "Range: bytes=-3\r\n").body, QByteArray("xyz"));
        QCOMPARE(ask("GET /a.txt", "Range: bytes=24-99\r\n").body, QByteArray("yz"));
        QCOMPARE(ask("GET /a.txt", "Range: bytes=26-\r\n").status, QByteArray("416"));
        QCOMPARE(ask("GET /a.txt", "Range: bytes=9-5\r\n").status, QByteArray("416"));
        const Answer head = ask("HEAD /a.txt");
        QVERIFY(head.head.contains("Content-Length: 26\r\n"));
        QCOMPARE(head.body, QByteArray());
    }

    void requestsThatAreNone()
    {
        QCOMPARE(ask("GET /b.txt").status, QByteArray("404"));
        QCOMPARE(ask("GET /../a.txt").status, QByteArray("404"));
        QCOMPARE(ask("POST /a.txt").status, QByteArray("405"));
        QCOMPARE(ask("nonsense").status, QByteArray("400"));
        QCOMPARE(ask("GET /a.txt", QByteArray(17 * 1024, 'x') + "\r\n").status, QByteArray("400"));
    }

    void status()
    {
        QSignalSpy requests(m_server.get(), &MediaServer::requested);
        MediaFault fault;
        fault.status = 503;
        m_server->setFault("a.txt", fault);
        QCOMPARE(ask("GET /a.txt").status, QByteArray("503"));
        m_server->setFault("a.txt", {});
        QCOMPARE(ask("GET /a.txt").status, QByteArray("200"));
        QCOMPARE(requests.size(), 2);
        QCOMPARE(requests.at(0), QVariantList({"a.txt", 503, 0}));
        QCOMPARE(requests.at(1), QVariantList({"a.txt", 200, 0}));
    }

    void cutAndWrongLength()
    {
        MediaFault fault;
        fault.cutAt = 4; // two bytes a second
        m_server->setFault("a.txt", fault);
        QCOMPARE(ask("GET /a.txt").body, QByteArray("abcdefgh"));
        fault = {};
        fault.length = 1000;
        m_server->setFault("a.txt", fault);
        const Answer answer = ask("GET /a.txt");
        QVERIFY(answer.head.contains("Content-Length: 1000\r\n"));
        QCOMPARE(answer.body.size(), 26);
    }

    void stallAndGoOn()
    {
        MediaFault fault;
        fault.stallAt = 4;
        m_server->setFault("a.txt", fault);
        const auto socket = send("GET /a.txt HTTP/1.1\r\n\r\n");
        QSignalSpy closed(socket.get(), &QTcpSocket::disconnected);
        QTRY_VERIFY(socket->peek(10'000).endsWith("abcdefgh"));
        QVERIFY(!closed.wait(300));
        QVERIFY(socket->peek(10'000).endsWith("abcdefgh"));
        m_server->setFault("a.txt", {});
        QVERIFY(closed.wait(patience));
        QVERIFY(socket->readAll().endsWith("xyz"));
    }

    void slowly()
    {
        MediaFault fault;
        fault.speed = 10; // 20 letters a second, after two of them
        m_server->setFault("a.txt", fault);
        QElapsedTimer time;
        time.start();
        QCOMPARE(ask("GET /a.txt").body.size(), 26);
        QVERIFY(time.elapsed() >= 1150);
    }

    void delayed()
    {
        MediaFault fault;
        fault.delay = std::chrono::milliseconds(300);
        m_server->setFault("a.txt", fault);
        QElapsedTimer time;
        time.start();
        QCOMPARE(ask("GET /a.txt").status, QByteArray("200"));
        QVERIFY(time.elapsed() >= 295);
    }

    void mediumThatGoesWhileItIsSent()
    {
        MediaFault fault;
        fault.stallAt = 1;
        m_server->setFault("a.txt", fault);
        const auto socket = send("GET /a.txt HTTP/1.1\r\n\r\n");
        QSignalSpy closed(socket.get(), &QTcpSocket::disconnected);
        QTRY_VERIFY(socket->peek(10'000).endsWith("ab"));
        m_server->clear();
        QVERIFY(closed.wait(patience));
    }

    void moreClientsThanThereMayBe()
    {
        std::vector<std::unique_ptr<QTcpSocket>> sockets;
        for (int i = 0; i < MediaServer::MostClients; ++i)
            sockets.push_back(send("GET"));
        QTRY_COMPARE(sockets.back()->state(), QAbstractSocket::ConnectedState);
        QCOMPARE(ask("GET /a.txt").body, QByteArray());
        sockets.clear();
        QTRY_COMPARE(ask("GET /a.txt").body.size(), 26);
    }

    void tone()
    {
        const ToneWave wave(441, 2.5, QStringLiteral("Ä tone"));
        const QByteArray all = wave.read(0, wave.size() + 100);
        QCOMPARE(all.size(), wave.size());
        QVERIFY(all.startsWith("RIFF"));
        QVERIFY(all.contains("INAM") && all.contains("Ä tone"));
        QCOMPARE(wave.size() - wave.headSize(), qint64(2.5 * ToneWave::BytesPerSecond));
        QByteArray pieces;
        while (pieces.size() < wave.size())
            pieces += wave.read(pieces.size(), 997);
        QVERIFY(pieces == all);
        // It goes on where it was, second by second.
        QVERIFY(all.mid(wave.headSize(), 1000) == all.mid(wave.headSize() + ToneWave::BytesPerSecond, 1000));
        QCOMPARE(wave.read(wave.size(), 10), QByteArray());
    }
};

KELVO_TEST(MediaServerTest)
#include "MediaServerTest.moc"

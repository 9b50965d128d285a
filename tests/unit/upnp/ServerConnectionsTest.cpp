// SPDX-License-Identifier: MIT
// The connections that others open to a server of ours.
#include "ServerConnections.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <libsoup/soup.h>

namespace {
constexpr char request[] = "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n";

int living = 0; // sockets that requests came by

void serve()
{
    while (g_main_context_iteration(nullptr, FALSE)) { }
}

void ended(void *, GObject *)
{
    --living;
}

void seen(SoupServer *, SoupServerMessage *message, GObject **last)
{
    auto *socket = G_OBJECT(soup_server_message_get_socket(message));
    if (socket == *last)
        return;
    *last = socket;
    ++living;
    g_object_weak_ref(socket, ended, nullptr);
}

void answer(SoupServer *, SoupServerMessage *message, const char *, GHashTable *, void *)
{
    soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
    soup_server_message_set_response(message, "text/plain", SOUP_MEMORY_STATIC, "yes", 3);
}
} // namespace

class ServerConnectionsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        living = 0;
        m_last = nullptr;
        m_server.reset(soup_server_new(nullptr, nullptr));
        QVERIFY(soup_server_listen_local(m_server.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr));
        GSList *addresses = soup_server_get_uris(m_server.get());
        m_port = quint16(g_uri_get_port(static_cast<GUri *>(addresses->data)));
        g_slist_free_full(addresses, GDestroyNotify(g_uri_unref));
        soup_server_add_handler(m_server.get(), nullptr, answer, nullptr, nullptr);
        g_signal_connect(m_server.get(), "request-started", G_CALLBACK(seen), &m_last);
        // The server runs in this thread's GLib context, whatever loop Qt runs on.
        m_turn.callOnTimeout(serve);
        m_turn.start(1);
    }

    void cleanup() { m_server.reset(); }

    void endWithTheirAnswer()
    {
        ServerConnections::endWithTheirAnswer(m_server.get());
        ServerConnections::endWithTheirAnswer(m_server.get()); // no second time
        for (int i = 0; i < 3; ++i) {
            QTcpSocket client;
            QVERIFY(connectTo(client));
            const QByteArray answer = ask(client);
            QVERIFY2(answer.startsWith("HTTP/1.1 200"), answer.constData());
            QVERIFY2(answer.contains("\r\nConnection: close\r\n"), answer.constData());
            QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);
        }
        QTRY_COMPARE(living, 0);
    }

    void endWithPeersThatDoNotWait()
    {
        ServerConnections::endWithTheirAnswer(m_server.get());
        for (int i = 0; i < 3; ++i) {
            QTcpSocket client;
            QVERIFY(connectTo(client));
            client.write(request);
            QTRY_COMPARE(living, 1);
            client.abort();
            QTRY_COMPARE(living, 0);
        }
    }

    void endAtOnceWhenTheServerDoes()
    {
        ServerConnections::endWithTheirAnswer(m_server.get());
        endServerWithRequestUnderWay();
        QCOMPARE(living, 0);
    }

    // What is said of versions is true of the one that is here.
    void keepTheirSocketsWithSomeVersions()
    {
        endServerWithRequestUnderWay();
        const bool isKept = ServerConnections::keepsSockets(
            soup_get_major_version(), soup_get_minor_version(), soup_get_micro_version());
        QCOMPARE(isKept, living == 1);
        if (living == 1)
            g_object_unref(m_last);
        QCOMPARE(living, 0);
    }

    // To release what is not kept would end connections that are in use.
    void areLeftAloneWithVersionsThatAreNotKnown_data()
    {
        QTest::addColumn<unsigned>("major");
        QTest::addColumn<unsigned>("minor");
        QTest::addColumn<unsigned>("micro");
        QTest::addColumn<bool>("isKept");
        QTest::newRow("2.74.3") << 2u << 74u << 3u << false;
        QTest::newRow("3.0.8") << 3u << 0u << 8u << false;
        QTest::newRow("3.2.0") << 3u << 2u << 0u << true;
        QTest::newRow("3.2.3") << 3u << 2u << 3u << true;
        QTest::newRow("3.2.4") << 3u << 2u << 4u << false;
        QTest::newRow("3.4.0") << 3u << 4u << 0u << false;
        QTest::newRow("4.2.3") << 4u << 2u << 3u << false;
    }
    void areLeftAloneWithVersionsThatAreNotKnown()
    {
        QFETCH(unsigned, major);
        QFETCH(unsigned, minor);
        QFETCH(unsigned, micro);
        QTEST(ServerConnections::keepsSockets(major, minor, micro), "isKept");
    }

private:
    void endServerWithRequestUnderWay()
    {
        QTcpSocket client;
        QVERIFY(connectTo(client));
        client.write(request);
        QTRY_COMPARE(living, 1);
        soup_server_disconnect(m_server.get());
        serve();
    }
    bool connectTo(QTcpSocket &client) const
    {
        client.connectToHost(QStringLiteral("127.0.0.1"), m_port);
        return QTest::qWaitFor([&] { return client.state() == QAbstractSocket::ConnectedState; });
    }
    static QByteArray ask(QTcpSocket &client)
    {
        client.write(request);
        QByteArray answer;
        const bool isWhole = QTest::qWaitFor([&] {
            answer += client.readAll();
            return answer.endsWith("\r\n\r\nyes");
        });
        return isWhole ? answer : "no answer but: " + answer;
    }

    GlibHandles::Object<SoupServer> m_server;
    GObject *m_last = nullptr; // not owned
    quint16 m_port = 0;
    QTimer m_turn;
};

KELVO_TEST(ServerConnectionsTest)
#include "ServerConnectionsTest.moc"

// SPDX-License-Identifier: MIT
// Events, and the answers to the subscriptions that they are of: they may come in any order.
#include "EventOrder.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <libsoup/soup.h>

#include <memory>

namespace {
void turn()
{
    while (g_main_context_iteration(nullptr, FALSE)) { }
}

void takeEvent(SoupServer *, SoupServerMessage *message, const char *, GHashTable *, void *taken)
{
    *static_cast<QByteArray *>(taken)
        += soup_message_headers_get_one(soup_server_message_get_request_headers(message), "SEQ");
    soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
}

void disregard(GObject *session, GAsyncResult *result, void *)
{
    const GlibHandles::Object<GInputStream> answer(
        soup_session_send_finish(SOUP_SESSION(session), result, nullptr));
}
} // namespace

class EventOrderTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_taken.clear();
        m_session.reset(soup_session_new());
        m_server.reset(soup_server_new(nullptr, nullptr));
        QVERIFY(soup_server_listen_local(m_server.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr));
        GSList *addresses = soup_server_get_uris(m_server.get());
        m_port = quint16(g_uri_get_port(static_cast<GUri *>(addresses->data)));
        g_slist_free_full(addresses, GDestroyNotify(g_uri_unref));
        soup_server_add_handler(m_server.get(), "/first", takeEvent, &m_taken, nullptr);
        soup_server_add_handler(m_server.get(), "/second", takeEvent, &m_taken, nullptr);
        EventOrder::keep(m_session.get(), m_server.get());
        EventOrder::keep(m_session.get(), m_server.get()); // no second time
        m_device = std::make_unique<QTcpServer>();
        QVERIFY(m_device->listen(QHostAddress(QHostAddress::LocalHost)));
        // Both run in this thread's GLib context, whatever loop Qt runs on.
        m_turn.callOnTimeout(turn);
        m_turn.start(1);
    }

    void cleanup()
    {
        m_events.clear();
        m_server.reset();
        m_session.reset();
        turn();
        m_turn.stop();
        m_device.reset();
    }

    void eventWaitsForTheAnswer()
    {
        QTcpSocket *question = subscribe("/first");
        QVERIFY(question);
        send("/first", "uuid:1", "0");
        // Of what is not asked for, nothing waits.
        send("/second", "uuid:9", "9");
        QTRY_COMPARE(m_taken, QByteArray("9"));
        answer(question, "SID: uuid:1\r\n");
        QTRY_COMPARE(m_taken, QByteArray("90"));
        QTRY_VERIFY(m_events[0]->peek(12).endsWith("200"));
        send("/first", "uuid:1", "1");
        QTRY_COMPARE(m_taken, QByteArray("901"));
    }

    void eventOfAnotherSubscriptionIsRefused()
    {
        QTcpSocket *question = subscribe("/first");
        QVERIFY(question);
        send("/first", "uuid:before", "7");
        answer(question, "SID: uuid:1\r\n");
        QTRY_VERIFY(m_events[0]->peek(12).endsWith("412"));
        send("/first", "uuid:before", "8");
        QTRY_VERIFY(m_events[1]->peek(12).endsWith("412"));
        send("/first", "uuid:1", "0");
        QTRY_COMPARE(m_taken, QByteArray("0"));
    }

    void eventGoesOnWithoutASubscription_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("refused") << QByteArray("HTTP/1.1 503 Busy\r\n");
        QTest::newRow("without an identifier") << QByteArray("HTTP/1.1 200 OK\r\n");
    }

    void eventGoesOnWithoutASubscription()
    {
        QFETCH(QByteArray, answer);
        QTcpSocket *question = subscribe("/first");
        QVERIFY(question);
        send("/first", "uuid:1", "0");
        question->write(answer + "Content-Length: 0\r\n\r\n");
        QTRY_COMPARE(m_taken, QByteArray("0"));
    }

    void deviceThatWaitsForItselfIsNotKeptWaiting()
    {
        QVERIFY(subscribe("/first"));
        send("/first", "uuid:1", "0");
        QTRY_VERIFY(m_events[0]->peek(12).endsWith("200"));
    }

    void endedSubscriptionIsForgotten()
    {
        QTcpSocket *question = subscribe("/first");
        QVERIFY(question);
        answer(question, "SID: uuid:1\r\n");
        send("/first", "uuid:1", "0");
        QTRY_COMPARE(m_taken, QByteArray("0"));
        QVERIFY(ask("UNSUBSCRIBE", "SID", "uuid:1"));
        send("/first", "uuid:2", "1");
        QTRY_COMPARE(m_taken, QByteArray("01"));
    }

    void peerMayGoWhileItsEventWaits()
    {
        QTcpSocket *question = subscribe("/first");
        QVERIFY(question);
        send("/first", "uuid:1", "0");
        send("/second", "uuid:9", "9");
        QTRY_COMPARE(m_taken, QByteArray("9"));
        m_events[0]->abort();
        answer(question, "SID: uuid:1\r\n");
        send("/first", "uuid:1", "1");
        QTRY_VERIFY(m_taken.endsWith('1'));
    }

    void serverMayEndWhileAnEventWaits()
    {
        QVERIFY(subscribe("/first"));
        send("/first", "uuid:1", "0");
        send("/second", "uuid:9", "9");
        QTRY_COMPARE(m_taken, QByteArray("9"));
        m_server.reset();
        turn();
        QCOMPARE(m_taken, QByteArray("9"));
    }

private:
    /// The connection that the device got it by.
    QTcpSocket *ask(const char *method, const char *name, const QByteArray &value)
    {
        const QByteArray address
            = "http://127.0.0.1:" + QByteArray::number(m_device->serverPort()) + "/events";
        const GlibHandles::Object<SoupMessage> message(soup_message_new(method, address.constData()));
        soup_message_headers_append(soup_message_get_request_headers(message.get()), name, value.constData());
        soup_session_send_async(m_session.get(), message.get(), 0, nullptr, disregard, nullptr);
        QTcpSocket *connection = nullptr;
        const bool hasCome = QTest::qWaitFor([&] {
            connection = connection ? connection : m_device->nextPendingConnection();
            return connection && connection->bytesAvailable() > 0;
        });
        return hasCome ? connection : nullptr;
    }
    QTcpSocket *subscribe(const QByteArray &path)
    {
        return ask("SUBSCRIBE", "Callback", "<http://127.0.0.1:" + QByteArray::number(m_port) + path + '>');
    }
    static void answer(QTcpSocket *question, const QByteArray &headers)
    {
        question->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n" + headers + "\r\n");
    }
    void send(const QByteArray &path, const QByteArray &id, const QByteArray &number)
    {
        m_events.push_back(std::make_unique<QTcpSocket>());
        QTcpSocket &event = *m_events.back();
        event.connectToHost(QStringLiteral("127.0.0.1"), m_port);
        QVERIFY(event.waitForConnected());
        event.write("NOTIFY " + path + " HTTP/1.1\r\nHost: localhost\r\nSID: " + id + "\r\nSEQ: " + number
            + "\r\nContent-Length: 1\r\n\r\n.");
    }

    GlibHandles::Object<SoupSession> m_session;
    GlibHandles::Object<SoupServer> m_server;
    std::unique_ptr<QTcpServer> m_device;
    std::vector<std::unique_ptr<QTcpSocket>> m_events;
    QByteArray m_taken; // numbers of events
    quint16 m_port = 0;
    QTimer m_turn;
};

KELVO_TEST(EventOrderTest)
#include "EventOrderTest.moc"

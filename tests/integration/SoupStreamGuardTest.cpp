// SPDX-License-Identifier: MIT
// The HTTP library's streams of messages that have ended before them.
#include "SoupStreamGuard.h"
#include "HttpTestServer.h"
#include "KelvoTestCase.h"

#include <QTest>

#include <libsoup/soup.h>

namespace {
/// One request, from its beginning until its answer has been given to nobody or read.
struct Request
{
    bool isCalledOff = false; ///< just before the answer is asked for
    bool isAnswered = false;
    QByteArray body;
    GCancellable *cancellable = nullptr;
};

void takeAnswer(GObject *session, GAsyncResult *result, gpointer data)
{
    auto &request = *static_cast<Request *>(data);
    request.isAnswered = true;
    if (request.isCalledOff)
        g_cancellable_cancel(request.cancellable);
    GInputStream *stream = soup_session_send_finish(SOUP_SESSION(session), result, nullptr);
    if (!stream)
        return;
    request.body.resize(100);
    gsize size = 0;
    g_input_stream_read_all(stream, request.body.data(), gsize(request.body.size()), &size, nullptr, nullptr);
    request.body.resize(qsizetype(size));
    g_object_unref(stream);
}

class SoupStreamGuardTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { g_clear_object(&m_session); }
    void leavesTheStreamOfAMessageThatHasEnded();
    void readsWhatIsNotCalledOff();

private:
    Request send(bool callOff);

    HttpTestServer m_server;
    SoupSession *m_session = nullptr;
};

void SoupStreamGuardTest::initTestCase()
{
    m_server.serve("/song", HttpTestServer::Resource{.body = QByteArray(70, 's')});
    m_session = soup_session_new();
    SoupStreamGuard::begin();
    SoupStreamGuard::begin();
}

Request SoupStreamGuardTest::send(bool callOff)
{
    Request request;
    request.isCalledOff = callOff;
    request.cancellable = g_cancellable_new();
    SoupMessage *message = soup_message_new("GET", m_server.url("/song").toEncoded().constData());
    soup_session_send_async(
        m_session, message, G_PRIORITY_DEFAULT, request.cancellable, takeAnswer, &request);
    [&request] {
        QTRY_VERIFY(request.isAnswered);
    }();
    g_object_unref(message);
    g_clear_object(&request.cancellable);
    return request;
}

// Without the guard the program ends here. The first round is the first answer of all.
void SoupStreamGuardTest::leavesTheStreamOfAMessageThatHasEnded()
{
    for (int round = 1; round <= 3; ++round) {
        QCOMPARE(send(true).body, QByteArray());
        QTRY_COMPARE(SoupStreamGuard::streamsLeft(), round);
        // And goes on.
        QCOMPARE(send(false).body, QByteArray(70, 's'));
    }
}

void SoupStreamGuardTest::readsWhatIsNotCalledOff()
{
    const int before = SoupStreamGuard::streamsLeft();
    for (int i = 0; i < 3; ++i)
        QCOMPARE(send(false).body, QByteArray(70, 's'));
    QCOMPARE(SoupStreamGuard::streamsLeft(), before);
}
} // namespace

QTEST_GUILESS_MAIN(SoupStreamGuardTest)
#include "SoupStreamGuardTest.moc"

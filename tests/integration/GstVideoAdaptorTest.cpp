// SPDX-License-Identifier: MIT
#include "GstVideoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QFile>
#include <QSet>

#include <cstdlib>

#include <xcb/xcb.h>
#include <xcb/xv.h>

using R = KelvoRenderer;

namespace {
/// Another program that uses the video adaptor of the display, while it lives: all of it.
class AdaptorUser
{
public:
    AdaptorUser()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        const uint root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        xcb_xv_query_adaptors_reply_t *reply
            = xcb_xv_query_adaptors_reply(m_connection, xcb_xv_query_adaptors(m_connection, root), nullptr);
        if (!reply)
            return;
        xcb_xv_adaptor_info_iterator_t adaptors = xcb_xv_query_adaptors_info_iterator(reply);
        for (; adaptors.rem > 0; xcb_xv_adaptor_info_next(&adaptors)) {
            for (uint port = 0; port < adaptors.data->num_ports; ++port)
                grab(adaptors.data->base_id + port);
        }
        std::free(reply);
    }
    ~AdaptorUser() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(AdaptorUser)

    int ports() const { return m_ports; }

private:
    void grab(uint port)
    {
        xcb_xv_grab_port_reply_t *reply = xcb_xv_grab_port_reply(
            m_connection, xcb_xv_grab_port(m_connection, port, XCB_CURRENT_TIME), nullptr);
        m_ports += reply && reply->result == XCB_XV_GRAB_PORT_STATUS_SUCCESS ? 1 : 0;
        std::free(reply);
    }

    xcb_connection_t *const m_connection;
    int m_ports = 0;
};
/// Ids of the memory that this process shares with the X server now.
QSet<qint64> sharedWithServer()
{
    QSet<qint64> ids;
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly))
        return ids;
    const QList<QByteArray> lines = maps.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() > 5 && fields.at(5).startsWith("/SYSV"))
            ids += fields.at(4).toLongLong();
    }
    return ids;
}
} // namespace

/// What is seen of a video where the display has a video adaptor.
class GstVideoAdaptorTest : public GstVideoTestCase
{
    Q_OBJECT
private:
    QString output() { return heard().metadata(QStringLiteral("video-output")).toString(); }

private Q_SLOTS:
    void initTestCase() { openServer(XServer::Kind::WithVideoAdaptor); }

    void showsByTheAdaptor()
    {
        play();
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        QCOMPARE(output(), QStringLiteral("xvimagesink"));
        QCOMPARE(heard().property(R::PropertyColorKey).toUInt(), 0U); // it draws into the window
        QCOMPARE(heard().errors(), QList<int>{});
    }

    /// A decoder that made its pictures in that memory would have each copied into some more.
    void usesTheDisplaysMemoryAgain()
    {
        play();
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        QSet<qint64> used;
        const int begin = heard().askPosition();
        QTRY_VERIFY((used += sharedWithServer(), heard().askPosition() >= begin + 2));
        QVERIFY(!used.isEmpty());
        QVERIFY2(used.size() < 10, qPrintable(QString::number(used.size())));
    }

    void showsWithoutAnAdaptorThatOthersUse()
    {
        {
            const AdaptorUser other;
            QVERIFY(other.ports() > 0);
            play();
            QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
            QCOMPARE(output(), QStringLiteral("ximagesink"));
            QCOMPARE(heard().errors(), QList<int>{}); // nothing is missing
            QCOMPARE(heard().mediaIndexes().count(), 1);
            renderer()->stop();
            TRY_STATE(Stopped);
        }
        play();
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        QCOMPARE(output(), QStringLiteral("xvimagesink"));
    }
};

KELVO_TEST(GstVideoAdaptorTest)
#include "GstVideoAdaptorTest.moc"

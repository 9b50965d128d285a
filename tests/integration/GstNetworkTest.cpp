// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "HttpTestServer.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <algorithm>

using R = KelvoRenderer;

/// Media from a server: buffering, and how it goes together with what the user wants.
class GstNetworkTest : public GstTestCase
{
    Q_OBJECT
private:
    HttpTestServer m_server;

    HttpTestServer::Resource sound(const QString &name) const
    {
        QFile file(mediaFile(name));
        HttpTestServer::Resource resource;
        resource.contentType = "audio/mpeg";
        if (file.open(QIODevice::ReadOnly))
            resource.body = file.readAll();
        return resource;
    }
    /// Fills the buffer in about two seconds.
    QUrl slow()
    {
        HttpTestServer::Resource resource = sound(QStringLiteral("long.mp3"));
        resource.bytesPerSecond = 60000;
        m_server.serve(QStringLiteral("/slow.mp3"), resource);
        return m_server.url(QStringLiteral("/slow.mp3"));
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void playsFromAServer()
    {
        m_server.serve(QStringLiteral("/short.mp3"), sound(QStringLiteral("short.mp3")));
        renderer()->playUri(m_server.url(QStringLiteral("/short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().errors(), QList<int>());
    }

    void seeksOnAServer()
    {
        m_server.serve(QStringLiteral("/long.mp3"), sound(QStringLiteral("long.mp3")));
        renderer()->playUri(m_server.url(QStringLiteral("/long.mp3")));
        TRY_STATE(Playing);
        renderer()->setPosition(15, R::SeekAbsolute);
        QTRY_COMPARE(heard().askPosition(), 16);
    }

    void cannotSeekWithoutRanges()
    {
        HttpTestServer::Resource resource = sound(QStringLiteral("long.mp3"));
        resource.ranges = false;
        m_server.serve(QStringLiteral("/no-ranges.mp3"), resource);
        renderer()->playUri(m_server.url(QStringLiteral("/no-ranges.mp3")));
        TRY_STATE(Playing);
        renderer()->setPosition(15, R::SeekAbsolute);
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::NotSeekable});
        QCOMPARE(heard().state(), R::Playing);
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, 2.0);
        QTRY_COMPARE(heard().errors().count(), 2);
        QTRY_COMPARE(heard().property(R::PropertyPlaybackSpeed), QVariant(1.0));
    }

    void tellsHowTheBufferFills()
    {
        renderer()->playUri(slow());
        QTRY_VERIFY(!heard().buffering().isEmpty());
        QVERIFY(!heard().states().contains(R::Playing));
        TRY_STATE(Playing);
        const QList<float> fractions = heard().buffering();
        QVERIFY(fractions.count() > 3);
        QCOMPARE(fractions.constLast(), 1.0F);
        QCOMPARE(std::adjacent_find(fractions.cbegin(), fractions.cend()), fractions.cend());
        QVERIFY(std::all_of(fractions.cbegin(), fractions.cend(), [](float f) { return f >= 0 && f <= 1; }));
    }

    void pauseWhileBufferingHolds()
    {
        renderer()->playUri(slow());
        QTRY_VERIFY(!heard().buffering().isEmpty());
        renderer()->pause();
        TRY_STATE(Paused);
        QTRY_COMPARE_WITH_TIMEOUT(heard().buffering().constLast(), 1.0F, 10000);
        QCOMPARE(heard().askPosition(), 0);
        QCOMPARE(heard().state(), R::Paused);
        QVERIFY(!heard().states().contains(R::Playing));
        renderer()->resume();
        TRY_STATE(Playing);
    }

    void resumeWhileBufferingWaitsForTheBuffer()
    {
        renderer()->playUri(slow());
        QTRY_VERIFY(!heard().buffering().isEmpty());
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->resume();
        TRY_STATE(Transitioning);
        TRY_STATE(Playing);
        QCOMPARE(heard().buffering().constLast(), 1.0F);
    }

    void stopEndsTheBuffering()
    {
        renderer()->playUri(slow());
        QTRY_VERIFY(!heard().buffering().isEmpty());
        renderer()->stop();
        TRY_STATE(Stopped);
        QTRY_COMPARE(heard().buffering().constLast(), 1.0F);
        QCOMPARE(heard().askPosition(), 0);
    }

    void anotherItemEndsTheBuffering()
    {
        renderer()->playUri(slow());
        QTRY_VERIFY(!heard().buffering().isEmpty());
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().buffering().constLast(), 1.0F);
        QCOMPARE(heard().errors(), QList<int>());
    }

    void stallsWhilePausedAreNoError()
    {
        HttpTestServer::Resource resource = sound(QStringLiteral("long.mp3"));
        resource.stallAfter = 200000;
        m_server.serve(QStringLiteral("/stalling.mp3"), resource);
        renderer()->playUri(m_server.url(QStringLiteral("/stalling.mp3")));
        TRY_STATE(Playing);
        renderer()->pause();
        TRY_STATE(Paused);
        QTest::qWait(3000); // longer than the limit for playing
        QCOMPARE(heard().errors(), QList<int>());
        QCOMPARE(heard().state(), R::Paused);
    }

    void goesOnWhenAStallEnds()
    {
        HttpTestServer::Resource resource = sound(QStringLiteral("tone.mp3"));
        resource.stallAfter = 30000;
        HttpTestServer server;
        server.serve(QStringLiteral("/stalling.mp3"), resource);
        renderer()->playUri(server.url(QStringLiteral("/stalling.mp3")));
        QTRY_VERIFY(server.bytesSent() >= 30000);
        server.release();
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().errors(), QList<int>());
    }
};

KELVO_TEST(GstNetworkTest)
#include "GstNetworkTest.moc"

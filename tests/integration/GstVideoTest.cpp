// SPDX-License-Identifier: MIT
#include "GstVideoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QTest>

#include <atomic>

#include <gst/gst.h>

using R = KelvoRenderer;

namespace {
bool isBlue(QColor color)
{
    return color.blue() > 200 && color.green() < 60 && color.red() < 60;
}

// A picture is so many microseconds on its way to the window.
const QByteArray slowOutput("identity sleep-time=400000 ! ximagesink sync=false");
std::atomic<int> picturesUnderWay = 0;

/// Counts the pictures that come to an "identity": they have the size by then in which they will be shown.
void countPictures()
{
    gst_init(nullptr, nullptr);
    GstElement *identity = gst_element_factory_make("identity", nullptr);
    gst_object_ref_sink(identity);
    const auto count = [](GSignalInvocationHint *, guint, const GValue *, gpointer) -> gboolean {
        ++picturesUnderWay;
        return TRUE;
    };
    g_signal_add_emission_hook(
        g_signal_lookup("handoff", G_OBJECT_TYPE(identity)), 0, count, nullptr, nullptr);
    gst_object_unref(identity);
}
} // namespace

/// What is seen of a video, in a window that stands for the console's page. Places are relative to that window.
class GstVideoTest : public GstVideoTestCase
{
    Q_OBJECT
private:
    bool loadWithOutput(const QByteArray &output)
    {
        GstTestCase::cleanup();
        qputenv("KELVO_VIDEO_SINK", output);
        const bool loaded = loadRenderer();
        qunsetenv("KELVO_VIDEO_SINK");
        return loaded;
    }

private Q_SLOTS:
    void initTestCase()
    {
        openServer(XServer::Kind::Plain);
        countPictures();
    }

    void showsInItsPlace()
    {
        play();
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        QCOMPARE(heard().metadata(QStringLiteral("video-output")).toString(), QStringLiteral("ximagesink"));
        QCOMPARE(heard().errors(), QList<int>{});
    }

    void isCutOffAtTheEdgeOfThePage()
    {
        place(QStringLiteral("320,240,160,120"));
        play();
        QTRY_VERIFY(isRed(at(390, 290)));
        QVERIFY(!isRed(at(410, 290)));
        QVERIFY(!isRed(at(390, 310)));
    }

    void staysWhereItIsWhenResizedWhilePaused()
    {
        play();
        renderer()->setPosition(5, R::SeekAbsolute);
        pause();
        const int before = heard().askPosition();
        heard().clear();
        place(QStringLiteral("10,10,320,240"));
        QVERIFY(comesToShow(QRect(10, 10, 320, 240)));
        QCOMPARE(heard().askPosition(), before);
        QCOMPARE(heard().states().count(), 0);
    }

    void followsItsPlaceOnTheWayToAPause_data()
    {
        QTest::addColumn<bool>("isPlaying");
        QTest::newRow("from loading") << false;
        QTest::newRow("from playing") << true;
    }
    void followsItsPlaceOnTheWayToAPause()
    {
        QFETCH(bool, isPlaying);
        QVERIFY(loadWithOutput(slowOutput));
        showInPage();
        renderer()->playUri(media(QStringLiteral("red.mp4")));
        if (isPlaying)
            TRY_STATE(Playing);
        const int before = picturesUnderWay;
        QTRY_VERIFY(picturesUnderWay > before);
        renderer()->pause();
        place(QStringLiteral("10,10,320,240"));
        TRY_STATE(Paused);
        QVERIFY(comesToShow(QRect(10, 10, 320, 240)));
        QCOMPARE(heard().state(), R::Paused);
        QCOMPARE(heard().errors(), QList<int>{});
    }

    void followsItsPlaceDuringASeek()
    {
        QVERIFY(loadWithOutput(slowOutput));
        showInPage();
        play();
        pause();
        const int before = picturesUnderWay;
        renderer()->setPosition(5, R::SeekAbsolute);
        QTRY_VERIFY(picturesUnderWay > before);
        place(QStringLiteral("10,10,320,240"));
        QVERIFY(comesToShow(QRect(10, 10, 320, 240)));
        QCOMPARE(heard().askPosition(), 5);
        QCOMPARE(heard().errors(), QList<int>{});
    }

    void comesBackWhenUncovered_data() { addPlayingAndPaused(); }
    void comesBackWhenUncovered()
    {
        QFETCH(bool, paused);
        play();
        if (paused)
            pause();
        QTRY_VERIFY(isRed(at(100, 90)));
        m_server->setShown(m_page, false); // another tab
        QVERIFY(!isRed(at(100, 90)));
        m_server->setShown(m_page, true);
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        const uint cover = m_server->addWindow(Page, Qt::white);
        QCOMPARE(at(100, 90), QColor(Qt::white));
        m_server->destroy(cover);
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
    }

    /// In a thread without a name of its own, for which items would wait up to a twentieth of a second each.
    void outputsDoNotListenForEventsThemselves()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        QCOMPARE(threadsNamed("gst-engine"), 1);
    }

    void doesNotFlickerWhenThePageIsRepainted()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        for (int round = 0; round < 100; ++round) {
            m_server->repaint(m_page);
            QVERIFY2(isRed(at(40 + round, 40 + round)), qPrintable(QString::number(round)));
            QTest::qWait(2); // some pictures of the video in between
        }
    }

    void goesAwayWhenStopped()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        renderer()->stop();
        QTRY_COMPARE(at(100, 90), Green);
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
    }

    void goesAwayAtTheEnd()
    {
        play(QStringLiteral("silent.mp4"));
        QTRY_VERIFY(at(100, 90) != Green);
        QTRY_COMPARE(heard().completed(), 1);
        QTRY_COMPARE(at(100, 90), Green);
    }

    void soundTakesThePictureAway()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        play(QStringLiteral("long.mp3"));
        QTRY_COMPARE(at(100, 90), Green);
        QTRY_VERIFY(heard().metadata(QStringLiteral("audio-output")).isValid());
        QCOMPARE(heard().metadataReports(QStringLiteral("video-output")), 1);
    }

    void nextVideoTakesThePlace()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        play(QStringLiteral("blue.mp4"));
        QVERIFY(comesToShow(QRect(20, 30, 160, 120), isBlue));
    }

    void failureTakesThePictureAway()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        renderer()->playUri(media(QStringLiteral("missing.mp4")));
        TRY_STATE(Stopped);
        QTRY_COMPARE(at(100, 90), Green);
    }

    void movesToAnotherWindow()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        const uint other = m_server->addWindow(QRect(0, 0, 640, 480), Qt::white);
        set(R::PropertyXid, other);
        QTRY_VERIFY(isRed(m_server->pixel(100, 90)));
        QCOMPARE(m_server->childrenOf(m_page), 0);
        set(R::PropertyXid, m_page);
        QTRY_COMPARE(m_server->pixel(100, 90), QColor(Qt::white));
        m_server->destroy(other);
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
    }

    void windowMayComeLate()
    {
        set(R::PropertyXid, 0U);
        place(QStringLiteral("0,0,0,0"));
        play();
        QCOMPARE(at(100, 90), Green);
        set(R::PropertyXid, m_page);
        place(QStringLiteral("20,30,160,120"));
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        set(R::PropertyXid, 0U);
        QTRY_COMPARE(at(100, 90), Green);
        QCOMPARE(heard().state(), R::Playing);
    }

    void survivesWhatIsNoWindow()
    {
        LogRecorder log;
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        set(R::PropertyXid, 3U);
        QTRY_VERIFY(!log.warnings().filter(QStringLiteral("Window 3 cannot show video")).isEmpty());
        QTRY_COMPARE(at(100, 90), Green);
        QCOMPARE(heard().state(), R::Playing);
        QCOMPARE(heard().errors(), QList<int>{});
        set(R::PropertyXid, m_page);
        QTRY_VERIFY(isRed(at(100, 90)));
    }

    void goesToTheNextWindowAtTheEndOfOne()
    {
        LogRecorder log;
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        for (int round = 0; round < 10; ++round) {
            m_server->destroy(m_page);
            m_page = m_server->addWindow(Page, Green);
            set(R::PropertyXid, m_page);
            QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        }
        QCOMPARE(log.warnings(), QStringList());
        QCOMPARE(heard().errors(), QList<int>{});
    }

    void survivesNonsensePlaces_data()
    {
        QTest::addColumn<QString>("rectangle");
        QTest::newRow("huge") << QStringLiteral("0,0,999999,999999");
        QTest::newRow("far away") << QStringLiteral("-999999,999999,160,120");
        QTest::newRow("empty") << QStringLiteral("10,10,0,120");
    }
    void survivesNonsensePlaces()
    {
        QFETCH(QString, rectangle);
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        place(rectangle);
        QTRY_COMPARE(heard().property(R::PropertyRenderRectangle).toString(), rectangle);
        QTRY_VERIFY(!shows(QRect(20, 30, 160, 120)));
        place(QStringLiteral("20,30,160,120"));
        QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
        QCOMPARE(heard().errors(), QList<int>{});
    }

    void goesAwayWithTheRenderer()
    {
        play();
        QTRY_VERIFY(isRed(at(100, 90)));
        registry().unloadPlugin(QStringLiteral("gst-renderer.so"));
        QTRY_COMPARE(at(100, 90), Green);
        QTRY_COMPARE(m_server->childrenOf(m_page), 0);
    }

    void playsOnWhenTheOutputFails_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("no such display") << QByteArray("ximagesink display=:4711");
        QTest::newRow("no overlay hardware") << QByteArray("xvimagesink");
    }
    void playsOnWhenTheOutputFails()
    {
        QFETCH(QByteArray, output);
        QVERIFY(loadWithOutput(output));
        play();
        QCOMPARE(heard().errors(), QList<int>{KelvoError::VideoOutputFailed});
        QTRY_VERIFY(heard().askPosition() >= 1);
        QCOMPARE(
            heard().metadata(QStringLiteral("video-output")).toString(), QStringLiteral("no video output"));
        QCOMPARE(heard().mediaIndexes().count(), 1);
    }

    void playsWithoutAnXServer()
    {
        GstTestCase::cleanup();
        const QByteArray display = qgetenv("DISPLAY");
        qunsetenv("DISPLAY");
        const bool loaded = loadRenderer();
        if (loaded)
            play(QStringLiteral("clip.mp4"));
        qputenv("DISPLAY", display);
        QVERIFY(loaded);
        QCOMPARE(
            heard().metadata(QStringLiteral("video-output")).toString(), QStringLiteral("no video output"));
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().errors(), QList<int>{});
    }
};

KELVO_TEST(GstVideoTest)
#include "GstVideoTest.moc"

// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "HttpTestServer.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using R = KelvoRenderer;

namespace {
const QString plugin = QStringLiteral("gst-renderer.so");
constexpr qint64 atOnce = 100; // milliseconds, on a busy machine
} // namespace

/// Taking the renderer away in the middle of things.
class GstLifecycleTest : public GstTestCase
{
    Q_OBJECT
private:
    HttpTestServer m_server;

    QUrl serve(const QString &path, int bytesPerSecond, qint64 stallAfter, bool silent)
    {
        QFile file(mediaFile(QStringLiteral("long.mp3")));
        HttpTestServer::Resource resource;
        if (file.open(QIODevice::ReadOnly))
            resource.body = file.readAll();
        resource.bytesPerSecond = bytesPerSecond;
        resource.stallAfter = stallAfter;
        resource.silent = silent;
        m_server.serve(path, resource);
        return m_server.url(path);
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void unloads_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<int>("state");
        QTest::newRow("while stopped") << QUrl() << int(R::Stopped);
        QTest::newRow("while playing") << media(QStringLiteral("long.mp4")) << int(R::Playing);
        QTest::newRow("while starting") << media(QStringLiteral("long.mp4")) << int(R::Transitioning);
        QTest::newRow("while buffering")
            << serve(QStringLiteral("/slow.mp3"), 20000, -1, false) << int(R::Transitioning);
        QTest::newRow("while stalled")
            << serve(QStringLiteral("/stalled.mp3"), 0, 5000, false) << int(R::Transitioning);
        QTest::newRow("while nobody answers")
            << serve(QStringLiteral("/silent.mp3"), 0, -1, true) << int(R::Transitioning);
        QTest::newRow("while a list is read")
            << serve(QStringLiteral("/silent.pls"), 0, -1, true) << int(R::Transitioning);
    }

    void unloads()
    {
        QFETCH(QUrl, url);
        QFETCH(int, state);
        if (url.isValid())
            renderer()->playUri(url);
        QTRY_COMPARE(int(heard().state()), state);
        if (!url.isLocalFile() && url.isValid()) {
            const qsizetype before = m_server.requests().count();
            QTRY_VERIFY(m_server.requests().count() >= std::max<qsizetype>(1, before));
        }
        QElapsedTimer time;
        time.start();
        registry().unloadPlugin(plugin);
        QVERIFY2(time.elapsed() < atOnce, qPrintable(QString::number(time.elapsed())));
        QVERIFY(!renderer());
        QCOMPARE(registry().renderers().count(), 0);
        // It comes back and works while the one before may still be busy with its end.
        QVERIFY(loadRenderer());
        renderer()->playUri(media(QStringLiteral("blip.flac")));
        QTRY_COMPARE(heard().completed(), 1);
    }

    void unloadsBeforeItIsReady()
    {
        registry().unloadPlugin(plugin);
        registry().loadPlugin(plugin);
        QTRY_COMPARE(registry().loadedPlugins(), QStringList{plugin});
        registry().unloadPlugin(plugin);
        QVERIFY(loadRenderer()); // by then the engine of the one before has started too
        QCOMPARE(registry().renderers().count(), 1);
    }

    void unloadsFromWithinASignal()
    {
        bool done = false;
        connect(renderer(), &R::stateChanged, this, [this, &done](R::State state) {
            if (state == R::Playing) {
                registry().unloadPlugin(plugin);
                done = true;
            }
        });
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        QTRY_VERIFY(done);
        QVERIFY(!renderer());
    }

    void answersNobodyWhoHasGone()
    {
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        TRY_STATE(Playing);
        for (int i = 0; i < 50; ++i) {
            RendererRecorder gone(renderer());
            renderer()->getPosition(&gone, "takePosition(uint)");
            renderer()->getStatus(&gone, "takeStatus(QString,uint,int,QString)");
        }
        QVERIFY(heard().askPosition() >= 0);
    }

    void comesAndGoesManyTimes()
    {
        for (int i = 0; i < 20; ++i) {
            registry().unloadPlugin(plugin);
            QVERIFY(loadRenderer());
            renderer()->playUri(media(i % 2 ? QStringLiteral("long.mp3") : QStringLiteral("clip.webm")));
            if (i % 3)
                TRY_STATE(Playing);
        }
    }

    void manyCommandsInARow()
    {
        const auto playlist
            = makePlaylist(media(QStringList{"long.mp3", "clip.mp4", "tone.ogg", "clip.webm"}));
        playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
        renderer()->assignPlaylist(playlist.get());
        renderer()->play();
        for (int i = 0; i < 200; ++i) {
            switch (i * 7 % 9) {
            case 0:
                renderer()->next();
                break;
            case 1:
                renderer()->pause();
                break;
            case 2:
                renderer()->setPosition(i % 20, R::SeekAbsolute);
                break;
            case 3:
                renderer()->resume();
                break;
            case 4:
                renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, i % 2 ? 2.0 : -2.0);
                break;
            case 5:
                renderer()->previous();
                break;
            case 6:
                renderer()->pauseAt(uint(i % 5));
                break;
            case 7:
                renderer()->gotoIndex(uint(i % 4));
                break;
            default:
                renderer()->play();
                break;
            }
            QTest::qWait(i % 3 * 10);
        }
        renderer()->stop();
        TRY_STATE(Stopped);
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, 1.0);
        heard().clear();
        renderer()->playUri(media(QStringLiteral("blip.flac")));
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().errors(), QList<int>());
        renderer()->assignPlaylist(nullptr);
    }
};

KELVO_TEST(GstLifecycleTest)
#include "GstLifecycleTest.moc"

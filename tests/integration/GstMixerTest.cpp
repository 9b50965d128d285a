// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "SoundServer.h"
#include "TestGroup.h"

#include <QTest>

#include <memory>

using R = KelvoRenderer;

namespace {
const QString output = QStringLiteral("audio-output");
const QString silence = QStringLiteral("none (silent clock)");
} // namespace

/// The renderer on a real sound server, where other programs have their say.
class GstMixerTest : public GstTestCase
{
    Q_OBJECT
private:
    std::unique_ptr<SoundServer> m_server;

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<SoundServer>();
        QVERIFY(m_server->isRunning());
        GstTestCase::init();
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        TRY_STATE(Playing);
        QCOMPARE(heard().metadata(QStringLiteral("audio-output")).toString(), QStringLiteral("pulsesink"));
    }
    void cleanup()
    {
        GstTestCase::cleanup();
        QTRY_VERIFY_WITH_TIMEOUT(!engineRuns(), 10000);
        m_server.reset();
    }

    void volumeFollowsTheMixer()
    {
        SoundServer::setVolume(QStringLiteral("40%"));
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(40U));
        SoundServer::setVolume(QStringLiteral("0%"));
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(0U));
        SoundServer::setVolume(QStringLiteral("150%")); // louder than loudest
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(99U));
        QCOMPARE(heard().askProperty(R::PropertyVolume), QVariant(99U));
    }

    void mixerFollowsTheVolume()
    {
        renderer()->setKelvoProperty(R::PropertyVolume, 33);
        QTRY_VERIFY2(
            SoundServer::streams().contains(QStringLiteral(" 33% ")), qPrintable(SoundServer::streams()));
    }

    void volumeStaysFromItemToItem()
    {
        renderer()->setKelvoProperty(R::PropertyVolume, 33);
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(33U));
        QTRY_VERIFY2(
            SoundServer::streams().contains(QStringLiteral(" 33% ")), qPrintable(SoundServer::streams()));
        // The server gives each stream its own volume, until it is told another one.
        const auto playlist = makePlaylist(QList<QUrl>(4, media(QStringLiteral("long.mp3"))));
        renderer()->assignPlaylist(playlist.get());
        for (uint item = 0; item < 4; ++item) {
            heard().clear();
            renderer()->gotoIndex(item);
            QTRY_COMPARE(heard().states(), (QList<R::State>{R::Transitioning, R::Playing}));
            QTRY_VERIFY2(
                SoundServer::streams().contains(QStringLiteral(" 33% ")), qPrintable(SoundServer::streams()));
            QCOMPARE(heard().askProperty(R::PropertyVolume), QVariant(33U));
            QCOMPARE(heard().property(R::PropertyVolume), QVariant()); // nor was it another on the way
        }
    }

    void volumeStaysWhenItemsAreSkipped()
    {
        renderer()->setKelvoProperty(R::PropertyVolume, 33);
        QTRY_COMPARE(heard().property(R::PropertyVolume), QVariant(33U));
        const auto playlist = makePlaylist(QList<QUrl>(12, media(QStringLiteral("long.mp3"))));
        renderer()->assignPlaylist(playlist.get());
        heard().clear();
        // Each comes at another moment of the start of the one before.
        for (uint item = 0; item < 12; ++item) {
            renderer()->gotoIndex(item);
            QTest::qWait(int(item) * 4);
        }
        QTRY_COMPARE(heard().mediaIndexes().value(11, -1), 11);
        TRY_STATE(Playing);
        QTRY_VERIFY2(
            SoundServer::streams().contains(QStringLiteral(" 33% ")), qPrintable(SoundServer::streams()));
        QCOMPARE(heard().askProperty(R::PropertyVolume), QVariant(33U));
        QCOMPARE(heard().property(R::PropertyVolume), QVariant());
    }

    void telephoneCallOverrides()
    {
        QProcess call;
        call.start(QStringLiteral("pacat"),
            {QStringLiteral("--playback"), QStringLiteral("--property=media.role=phone"),
                QStringLiteral("/dev/zero")});
        TRY_STATE(Paused);
        QCOMPARE(heard().property(R::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE), QVariant(true));
        call.kill();
        call.waitForFinished(5000);
        TRY_STATE(Playing);
        QCOMPARE(heard().property(R::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE), QVariant(false));
    }

    void nextItemUsesTheServerThatIsBack()
    {
        const auto playlist = makePlaylist(QList<QUrl>(4, media(QStringLiteral("long.mp3"))));
        renderer()->assignPlaylist(playlist.get());
        renderer()->gotoIndex(0);
        QTRY_COMPARE(heard().mediaIndexes().constLast(), 0);
        QTRY_COMPARE(heard().metadata(output), QVariant(QStringLiteral("pulsesink")));
        TRY_STATE(Playing);
        m_server->end();
        QTRY_COMPARE_WITH_TIMEOUT(heard().metadata(output), QVariant(silence), 10000);
        TRY_STATE(Playing);
        renderer()->next(); // there is none yet
        QTRY_COMPARE_WITH_TIMEOUT(heard().metadata(output), QVariant(silence), 10000);
        TRY_STATE(Playing);
        m_server->start();
        QVERIFY(m_server->isRunning());
        renderer()->next();
        QTRY_COMPARE_WITH_TIMEOUT(heard().metadata(output), QVariant(QStringLiteral("pulsesink")), 10000);
        TRY_STATE(Playing);
        QTRY_VERIFY(SoundServer::streams().contains(QStringLiteral("Sink Input #")));
        // The loss is one piece of news, however many items follow.
        QCOMPARE(heard().errors(), QList<int>{KelvoError::AudioOutputFailed});
        renderer()->next();
        QTRY_COMPARE(heard().mediaIndexes().constLast(), 3);
        TRY_STATE(Playing);
        QCOMPARE(heard().metadata(output), QVariant(QStringLiteral("pulsesink")));
        renderer()->assignPlaylist(nullptr);
    }

    /// The output breaks just as the next item takes it over.
    void itemThatStartsAsTheServerGoesPlaysAllTheSame()
    {
        for (int round = 0; round < 3; ++round) {
            m_server->end();
            m_server->start();
            QVERIFY(m_server->isRunning());
            const qsizetype items = heard().mediaIndexes().size();
            renderer()->playUri(media(QStringLiteral("long.mp3")));
            QTRY_COMPARE(heard().mediaIndexes().size(), items + 1);
            QTRY_COMPARE_WITH_TIMEOUT(heard().metadata(output), QVariant(QStringLiteral("pulsesink")), 10000);
            TRY_STATE(Playing);
        }
        QVERIFY(!heard().errors().contains(KelvoError::EngineFailed));
    }

    void goesOnSilentlyAfterTheServer()
    {
        m_server->end();
        QTRY_COMPARE_WITH_TIMEOUT(heard().errors(), QList<int>{KelvoError::AudioOutputFailed}, 10000);
        const int position = heard().askPosition();
        QTRY_VERIFY(heard().askPosition() > position);
        QCOMPARE(heard().state(), R::Playing);
    }
};

KELVO_TEST(GstMixerTest)
#include "GstMixerTest.moc"

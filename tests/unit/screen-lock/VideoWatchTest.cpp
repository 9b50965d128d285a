// SPDX-License-Identifier: MIT
#include "VideoWatch.h"
#include "FakePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

namespace {
const auto film = KelvoContent{QStringLiteral("1"), QUrl(QStringLiteral("file:///film.mp4")), {}};
const auto nextFilm = KelvoContent{QStringLiteral("2"), QUrl(QStringLiteral("file:///next.mp4")), {}};
const auto song = KelvoContent{QStringLiteral("3"), QUrl(QStringLiteral("file:///song.mp3")), {}};

/// A renderer that reports as the real ones do.
class Reporting : public RecordingRenderer
{
public:
    using RecordingRenderer::RecordingRenderer;

    void choose() { Q_EMIT kelvoPropertyChanged(PropertyXid, 7U); }
    void load(const KelvoContent &item, int index = 0)
    {
        Q_EMIT stateChanged(Transitioning);
        Q_EMIT mediaChanged(index, item);
    }
    void tellOutput(const char *output)
    {
        Q_EMIT metadataChanged(QStringLiteral("video-output"), {QString::fromLatin1(output)});
    }
    void playFilm(const KelvoContent &item = film)
    {
        load(item);
        tellOutput("ximagesink");
        Q_EMIT stateChanged(Playing);
    }
    void playSong()
    {
        load(song);
        Q_EMIT metadataChanged(QStringLiteral("audio-output"), {QStringLiteral("alsasink")});
        Q_EMIT stateChanged(Playing);
    }
};
} // namespace

class VideoWatchTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_registry = std::make_unique<KelvoRegistry>();
        m_watch = std::make_unique<VideoWatch>(m_registry.get());
        m_changes = std::make_unique<QSignalSpy>(m_watch.get(), &VideoWatch::shownChanged);
        m_renderer = std::make_unique<Reporting>(QStringLiteral("here"));
        m_registry->addRenderer(m_renderer.get());
        m_renderer->choose();
    }
    void cleanup()
    {
        m_renderer.reset();
        m_watch.reset();
        m_registry.reset();
    }

    void aFilmIsShownWhileItPlays()
    {
        m_renderer->load(film);
        m_renderer->tellOutput("ximagesink");
        QVERIFY(!m_watch->isShown());
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QVERIFY(m_watch->isShown());
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Paused);
        QVERIFY(!m_watch->isShown());
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing); // the fact is not told again
        QVERIFY(m_watch->isShown());
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Stopped);
        QVERIFY(!m_watch->isShown());
        QCOMPARE(m_changes->size(), 4);
    }

    void aFactThatComesLateCounts()
    {
        m_renderer->load(film);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QVERIFY(!m_watch->isShown());
        m_renderer->tellOutput("ximagesink");
        QVERIFY(m_watch->isShown());
    }

    void whatPlaysAndIsNotSeenHereIsNotShown()
    {
        m_renderer->playSong();
        QVERIFY(!m_watch->isShown());
        m_renderer->load(film);
        m_renderer->tellOutput("no video output");
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QVERIFY(!m_watch->isShown());
        QCOMPARE(m_changes->size(), 0);
    }

    void withoutAWindowNothingIsShown()
    {
        Reporting other(QStringLiteral("elsewhere"));
        m_registry->addRenderer(&other);
        other.playFilm();
        QVERIFY(!m_watch->isShown());
        other.choose();
        QVERIFY(m_watch->isShown());
        Q_EMIT other.kelvoPropertyChanged(KelvoRenderer::PropertyXid, 0U);
        QVERIFY(!m_watch->isShown());
    }

    void betweenTwoFilmsNothingChanges()
    {
        m_renderer->playFilm();
        m_renderer->playFilm(nextFilm);
        QVERIFY(m_watch->isShown());
        QCOMPARE(m_changes->size(), 1);
    }

    void aSongAfterAFilmEndsIt()
    {
        m_renderer->playFilm();
        m_renderer->playSong();
        QVERIFY(!m_watch->isShown());
        m_renderer->playFilm();
        QVERIFY(m_watch->isShown());
    }

    void theSameItemAgainIsStillAFilm()
    {
        m_renderer->playFilm();
        m_renderer->load(film, 3); // now at another place of its list
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QVERIFY(m_watch->isShown());
        QCOMPARE(m_changes->size(), 1);
    }

    void anotherEntryOfOneItemIsAnotherMedium()
    {
        m_renderer->playFilm();
        m_renderer->load({film.uuid, song.url, {}});
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QVERIFY(!m_watch->isShown());
    }

    void anItemWithoutAListBeginsAnew()
    {
        m_renderer->playFilm();
        Q_EMIT m_renderer->playlistChanged(nullptr);
        QVERIFY(!m_watch->isShown());
        m_renderer->tellOutput("ximagesink");
        QVERIFY(m_watch->isShown());
        FakePlaylist list(QStringLiteral("list"), {});
        Q_EMIT m_renderer->playlistChanged(&list);
        QVERIFY(m_watch->isShown());
    }

    void aRendererThatGoesTakesItsFilmWithIt()
    {
        m_renderer->playFilm();
        m_registry->removeRenderer(m_renderer.get());
        QVERIFY(!m_watch->isShown());
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QVERIFY(!m_watch->isShown());
        m_registry->addRenderer(m_renderer.get());
        QVERIFY(!m_watch->isShown());
        m_renderer->choose();
        m_renderer->playFilm();
        QVERIFY(m_watch->isShown());
        m_renderer.reset();
        QVERIFY(!m_watch->isShown());
    }

    void oneOfTwoFilmsIsEnough()
    {
        Reporting other(QStringLiteral("other"));
        m_registry->addRenderer(&other);
        other.choose();
        m_renderer->playFilm();
        other.playFilm();
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Stopped);
        QVERIFY(m_watch->isShown());
        Q_EMIT other.stateChanged(KelvoRenderer::Stopped);
        QVERIFY(!m_watch->isShown());
        QCOMPARE(m_changes->size(), 2);
    }

    void whoIsThereAlreadyIsFollowed()
    {
        VideoWatch late(m_registry.get());
        m_renderer->choose();
        m_renderer->playFilm();
        QVERIFY(late.isShown());
    }

private:
    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<VideoWatch> m_watch;
    std::unique_ptr<QSignalSpy> m_changes;
    std::unique_ptr<Reporting> m_renderer;
};

KELVO_TEST(VideoWatchTest)
#include "VideoWatchTest.moc"

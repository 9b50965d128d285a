// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "TestGroup.h"

#include <QTest>

using R = KelvoRenderer;

/// The assigned playlist: order, repeat, skipping, edits and items that do not play.
class GstPlaylistTest : public GstTestCase
{
    Q_OBJECT
private:
    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;

    void assign(const QStringList &files)
    {
        m_playlist = makePlaylist(media(files));
        renderer()->assignPlaylist(m_playlist.get());
    }
    void assignThree() { assign({"long.mp3", "tone.mp3", "tone.ogg"}); }
    void playing(int index)
    {
        QTRY_VERIFY(!heard().mediaIndexes().isEmpty());
        QTRY_COMPARE(heard().mediaIndexes().constLast(), index);
        TRY_STATE(Playing);
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }
    void cleanup()
    {
        GstTestCase::cleanup();
        m_playlist.reset();
    }

    void playsOneAfterTheOther()
    {
        assign({"blip.flac", "blip.flac", "short.mp3"});
        renderer()->play();
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().events(),
            (QStringList{"Transitioning", "playlist", "media 0", "Playing", "Transitioning", "media 1",
                "Playing", "Transitioning", "media 2", "Playing", "Stopped", "completed"}));
    }

    void goesRoundWithRepeatAll()
    {
        assign({"blip.flac", "blip.flac"});
        m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
        renderer()->play();
        QTRY_VERIFY(heard().mediaIndexes().count() >= 4);
        QCOMPARE(heard().mediaIndexes().mid(0, 4), (QList<int>{0, 1, 0, 1}));
        QCOMPARE(heard().completed(), 0);
    }

    void repeatsOne()
    {
        assign({"blip.flac", "tone.mp3"});
        m_playlist->setRepeatMode(KelvoPlaylist::RepeatOne);
        renderer()->play();
        QTRY_VERIFY(heard().mediaIndexes().count() >= 3);
        QCOMPARE(heard().mediaIndexes().mid(0, 3), (QList<int>{0, 0, 0}));
        renderer()->next();
        playing(1);
    }

    void stopsAfterEachItemWithoutAutoAdvance()
    {
        renderer()->setKelvoProperty(R::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
        assign({"blip.flac", "blip.flac"});
        renderer()->play();
        TRY_STATE(Playing);
        TRY_STATE(Stopped);
        QCOMPARE(heard().completed(), 0);
        renderer()->next();
        renderer()->play();
        QTRY_COMPARE(heard().completed(), 1);
    }

    void skipsForwardsAndBackwards()
    {
        assignThree();
        renderer()->play();
        playing(0);
        renderer()->next();
        playing(1);
        renderer()->previous();
        playing(0);
        renderer()->previous(); // from its beginning again
        QTRY_COMPARE(heard().mediaIndexes(), (QList<int>{0, 1, 0, 0}));
        playing(0);
    }

    void nextAfterTheLastStops()
    {
        assignThree();
        renderer()->gotoIndex(2);
        playing(2);
        renderer()->next();
        TRY_STATE(Stopped);
        QCOMPARE(heard().completed(), 0);
        QCOMPARE(heard().askStatus().index, 2U);
    }

    void goesRoundByHandWithRepeatAll()
    {
        assignThree();
        m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
        renderer()->gotoIndex(2);
        playing(2);
        renderer()->next();
        playing(0);
        renderer()->previous();
        playing(2);
    }

    void movesWhileStopped()
    {
        assignThree();
        renderer()->next();
        renderer()->next();
        QTRY_COMPARE(heard().mediaIndexes(), (QList<int>{1, 2}));
        QCOMPARE(heard().state(), R::Stopped);
        renderer()->play();
        playing(2);
    }

    void refusesIndexesPastTheEnd()
    {
        assignThree();
        renderer()->play();
        playing(0);
        renderer()->gotoIndex(3);
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::IndexOutOfRange});
        QCOMPARE(heard().state(), R::Playing);
    }

    void keepsTheItemAfterStop()
    {
        assignThree();
        renderer()->gotoIndex(1);
        playing(1);
        renderer()->stop();
        TRY_STATE(Stopped);
        renderer()->play();
        playing(1);
    }

    void answersItsPlace()
    {
        assignThree();
        renderer()->gotoIndex(1);
        playing(1);
        const RendererRecorder::Status status = heard().askStatus();
        QCOMPARE(status.playlistId, m_playlist->uuid());
        QCOMPARE(status.index, 1U);
        QCOMPARE(status.state, int(R::Playing));
        QCOMPARE(status.objectId, m_playlist->mediaInfoAt(1).uuid());
    }

    void emptyPlaylist()
    {
        assign({});
        renderer()->play();
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::EmptyPlaylist});
        QCOMPARE(heard().state(), R::Stopped);
    }

    void followsShuffling()
    {
        assign({"long.mp3", "tone.mp3", "tone.ogg", "tone.flac", "tone.m4a"});
        renderer()->play();
        playing(0);
        const QString uuid = m_playlist->mediaInfoAt(0).uuid();
        m_playlist->shuffle();
        QTRY_COMPARE(heard().askStatus().index, uint(m_playlist->indexOf(uuid)));
        QCOMPARE(heard().askStatus().objectId, uuid);
        QCOMPARE(heard().states().count(R::Transitioning), 1);
    }

    void tellsTheNewIndexOfThePlayingItem()
    {
        assignThree();
        renderer()->gotoIndex(2);
        playing(2);
        m_playlist->removeItem(0);
        QTRY_COMPARE(heard().mediaIndexes(), (QList<int>{2, 1}));
        QCOMPARE(heard().state(), R::Playing);
    }

    void playsWhatTookTheRemovedItemsPlace()
    {
        assignThree();
        renderer()->gotoIndex(1);
        playing(1);
        m_playlist->removeItem(1);
        QTRY_COMPARE(heard().mediaUrls().constLast(), media(QStringLiteral("tone.ogg")));
        playing(1);
    }

    void stopsWhenNothingIsLeft()
    {
        assignThree();
        renderer()->play();
        playing(0);
        m_playlist->clear();
        TRY_STATE(Stopped);
        QCOMPARE(heard().completed(), 0);
    }

    void stopsWhenThePlaylistIsDeleted()
    {
        assignThree();
        renderer()->play();
        playing(0);
        m_playlist.reset();
        TRY_STATE(Stopped);
        renderer()->play();
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::NothingToPlay});
    }

    void anotherPlaylistWaitsForACommand()
    {
        assign({"blip.flac", "blip.flac"});
        const auto other = makePlaylist(media(QStringList{"long.mp3"}));
        renderer()->play();
        playing(0);
        renderer()->assignPlaylist(other.get());
        playing(1); // the old one goes on by itself
        QCOMPARE(heard().askStatus().playlistId, m_playlist->uuid());
        renderer()->next();
        QTRY_COMPARE(heard().mediaUrls().constLast(), media(QStringLiteral("long.mp3")));
        QCOMPARE(heard().askStatus().playlistId, other->uuid());
        renderer()->assignPlaylist(nullptr);
    }

    void singleUriKeepsThePlaylist()
    {
        assignThree();
        renderer()->gotoIndex(1);
        playing(1);
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        QVERIFY(heard().events().endsWith(QStringLiteral("completed")));
        renderer()->play();
        playing(1);
        QCOMPARE(heard().events().filter(QStringLiteral("playlist")),
            (QStringList{"playlist", "no playlist", "playlist"}));
    }

    void skipsWhatDoesNotPlay()
    {
        assign({"no-such-file.mp3", "random.mp3", "blip.flac", "empty.mp3"});
        renderer()->play();
        QTRY_COMPARE_WITH_TIMEOUT(heard().completed(), 1, 10000);
        QCOMPARE(heard().errors(),
            (QList<int>{KelvoError::NotFound, KelvoError::UnsupportedType, KelvoError::EmptyMedia}));
        QCOMPARE(heard().mediaIndexes(), (QList<int>{0, 1, 2, 3}));
    }

    void stopsAfterARoundWithoutSuccess_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("repeat all") << int(KelvoPlaylist::RepeatAll);
        QTest::newRow("repeat off") << int(KelvoPlaylist::RepeatOff);
        QTest::newRow("repeat one") << int(KelvoPlaylist::RepeatOne);
    }

    void stopsAfterARoundWithoutSuccess()
    {
        QFETCH(int, mode);
        assign({"no-such-file.mp3", "empty.mp3", "words.txt"});
        m_playlist->setRepeatMode(mode);
        renderer()->play();
        QTRY_VERIFY(heard().errors().contains(KelvoError::NothingPlayable));
        TRY_STATE(Stopped);
        QCOMPARE(heard().errors(),
            (QList<int>{KelvoError::NotFound, KelvoError::EmptyMedia, KelvoError::UnsupportedType,
                KelvoError::NothingPlayable}));
        QCOMPARE(heard().completed(), 0);
    }

    void roundsOfPicturesDoNotSpin()
    {
        assign({"picture.png", "picture.png"});
        m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
        renderer()->play();
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::NothingPlayable});
        TRY_STATE(Stopped);
        QCOMPARE(heard().mediaIndexes(), (QList<int>{0, 1}));
    }

    void skipDropsPauseAt()
    {
        assignThree();
        renderer()->play();
        playing(0);
        renderer()->pauseAt(1);
        renderer()->next();
        playing(1);
        QTRY_COMPARE(heard().askPosition(), 2);
        QCOMPARE(heard().state(), R::Playing);
    }

    void skipWhilePausedStaysPaused()
    {
        assignThree();
        renderer()->play();
        playing(0);
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->next();
        QTRY_COMPARE(heard().mediaIndexes().constLast(), 1);
        TRY_STATE(Paused);
        QCOMPARE(heard().states().count(R::Playing), 1);
    }
};

KELVO_TEST(GstPlaylistTest)
#include "GstPlaylistTest.moc"

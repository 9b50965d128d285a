// SPDX-License-Identifier: MIT
// The way through a playlist: next, previous, repeat, auto-advance, its end.
#include "ContractCase.h"
#include "ContractSuite.h"

namespace {
using States = QList<KelvoRenderer::State>;

class PlaylistContract : public ContractCase
{
    Q_OBJECT
public:
    using ContractCase::ContractCase;

private Q_SLOTS:
    void advancesToTheEnd();
    void repeatsAll();
    void repeatsASingleItem();
    void repeatsOne();
    void nextAndPrevious_data();
    void nextAndPrevious();
    void nextAfterTheLastStops_data();
    void nextAfterTheLastStops();
    void previousAtTheFirstStartsItAgain();
    void movesWithoutPlayingWhileStopped();
    void movesRoundTheEndsWhileStopped();
    void gotoIndexWithoutAPlaylist();
    void stopsAfterEachItemWithoutAutoAdvance_data();
    void stopsAfterEachItemWithoutAutoAdvance();
    void completesAfterTheLastItemWithoutAutoAdvance();
    void uriCompletesWithoutAutoAdvance();
    void reportsTheItemInPlay();
    void reportsFactsAboutTheItem();
    void assigningAnotherDoesNotInterrupt();
    void playTakesUpTheOtherPlaylist();
    void advancesInTheOldPlaylist();
    void assigningNone();

private:
    QList<int> indexesHeard() const;
};

QList<int> PlaylistContract::indexesHeard() const
{
    QList<int> indexes;
    for (const RendererProbe::Media &media : m_probe->media)
        indexes.append(media.index);
    return indexes;
}

void PlaylistContract::advancesToTheEnd()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    REACHES(heard().completed > 0);
    settle();
    QCOMPARE(heard().completed, 1);
    QCOMPARE(indexesHeard(), (QList<int>{0, 1, 2}));
    QCOMPARE(heard().states,
        (States{Transitioning, Playing, Transitioning, Playing, Transitioning, Playing, Stopped}));
    HOLDS(heard().events.lastIndexOf("Stopped") < heard().events.lastIndexOf("completed"));
    QCOMPARE(heard().errors.size(), 0);
    QCOMPARE(status().state, int(Stopped));
    // The playlist was named once, before its first item.
    QCOMPARE(heard().playlists.size(), 1);
    QCOMPARE(heard().playlists.constFirst(), playlist);
}

void PlaylistContract::repeatsAll()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems().mid(0, 2));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    startPlaylist(playlist, 1);
    REACHES(indexesHeard() == (QList<int>{0, 1}) && heard().state() == Playing);
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().states, (States{Transitioning, Playing, Transitioning, Playing}));
}

void PlaylistContract::repeatsASingleItem()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems().mid(0, 1));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    startPlaylist(playlist);
    REACHES(heard().states == (States{Transitioning, Playing}));
    REACHES(isPlaying(0));
    HOLDS(position() == 0);
    QCOMPARE(heard().completed, 0);
}

void PlaylistContract::repeatsOne()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    playlist->setRepeatMode(KelvoPlaylist::RepeatOne);
    startPlaylist(playlist, 1);
    REACHES(heard().states == (States{Transitioning, Playing}));
    REACHES(isPlaying(1));
    // The mode may change while the item plays.
    playlist->setRepeatMode(KelvoPlaylist::RepeatOff);
    REACHES(isPlaying(2));
    QCOMPARE(heard().completed, 0);
}

void PlaylistContract::nextAndPrevious_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("from");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<int>("to");
    for (auto [mode, name] : {std::pair(KelvoPlaylist::RepeatOff, "off"),
             std::pair(KelvoPlaylist::RepeatAll, "all"), std::pair(KelvoPlaylist::RepeatOne, "one")}) {
        QTest::addRow("next, repeat %s", name) << int(mode) << 0 << true << 1;
        QTest::addRow("previous, repeat %s", name) << int(mode) << 2 << false << 1;
    }
    QTest::newRow("next after the last") << int(KelvoPlaylist::RepeatAll) << 2 << true << 0;
    QTest::newRow("previous before the first") << int(KelvoPlaylist::RepeatAll) << 0 << false << 2;
}

void PlaylistContract::nextAndPrevious()
{
    QFETCH(int, mode);
    QFETCH(int, from);
    QFETCH(bool, forward);
    QFETCH(int, to);
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    playlist->setRepeatMode(mode);
    startPlaylist(playlist, uint(from));
    forward ? renderer()->next() : renderer()->previous();
    REACHES(isPlaying(uint(to)));
    QCOMPARE(heard().states, (States{Transitioning, Playing}));
    QCOMPARE(indexesHeard(), QList<int>{to});
    QCOMPARE(heard().media.constLast().content.uuid, playlist->mediaInfoAt(uint(to)).uuid());
}

void PlaylistContract::nextAfterTheLastStops_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("repeat off") << int(KelvoPlaylist::RepeatOff);
    QTest::newRow("repeat one") << int(KelvoPlaylist::RepeatOne);
}

void PlaylistContract::nextAfterTheLastStops()
{
    QFETCH(int, mode);
    KelvoPlaylist *playlist = makeLongPlaylist(2);
    playlist->setRepeatMode(mode);
    startPlaylist(playlist, 1);
    renderer()->next();
    REACHES(heard().state() == Stopped);
    settle();
    QCOMPARE(heard().states, States{Stopped});
    QCOMPARE(heard().errors.size(), 0);
}

void PlaylistContract::previousAtTheFirstStartsItAgain()
{
    NEEDS(Seek);
    startPlaylist(makeLongPlaylist(2));
    renderer()->setPosition(6, KelvoRenderer::SeekAbsolute);
    REACHES(position() == 6);
    renderer()->previous();
    REACHES(position() < 2);
    REACHES(isPlaying(0));
    QCOMPARE(heard().completed, 0);
}

void PlaylistContract::movesWithoutPlayingWhileStopped()
{
    renderer()->assignPlaylist(makeLongPlaylist(3));
    renderer()->next();
    renderer()->next();
    renderer()->previous();
    REACHES(status().index == 1);
    settle();
    QCOMPARE(heard().states.size(), 0);
    renderer()->play();
    REACHES(isPlaying(1));
}

void PlaylistContract::movesRoundTheEndsWhileStopped()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->previous();
    settle();
    QCOMPARE(status().index, 0U);
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    renderer()->previous();
    REACHES(status().index == 2);
    renderer()->next();
    REACHES(status().index == 0);
    QCOMPARE(heard().states.size(), 0);
}

void PlaylistContract::gotoIndexWithoutAPlaylist()
{
    renderer()->gotoIndex(0);
    REACHES(heard().errors.size() == 1);
    QCOMPARE(heard().errors.constFirst().code(), KelvoError::IndexOutOfRange);
    // An index made from -1, as a window without a selection has it.
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->gotoIndex(uint(-1));
    REACHES(heard().errors.size() == 2);
    QCOMPARE(heard().errorsOf(KelvoError::IndexOutOfRange), 2);
    QCOMPARE(heard().states.size(), 0);
}

void PlaylistContract::stopsAfterEachItemWithoutAutoAdvance_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("repeat off") << int(KelvoPlaylist::RepeatOff);
    QTest::newRow("repeat all") << int(KelvoPlaylist::RepeatAll);
    QTest::newRow("repeat one") << int(KelvoPlaylist::RepeatOne);
}

void PlaylistContract::stopsAfterEachItemWithoutAutoAdvance()
{
    QFETCH(int, mode);
    renderer()->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    playlist->setRepeatMode(mode);
    startPlaylist(playlist);
    REACHES(heard().state() == Stopped);
    settle();
    QCOMPARE(heard().states, States{Stopped});
    QCOMPARE(heard().completed, 0);
    QCOMPARE(heard().errors.size(), 0);
}

void PlaylistContract::completesAfterTheLastItemWithoutAutoAdvance()
{
    renderer()->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
    startPlaylist(makePlaylist(m_subject.shortItems()), 2);
    REACHES(heard().completed == 1);
    QCOMPARE(heard().states, States{Stopped});
    HOLDS(heard().events.lastIndexOf("Stopped") < heard().events.lastIndexOf("completed"));
}

void PlaylistContract::uriCompletesWithoutAutoAdvance()
{
    renderer()->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(heard().completed == 1);
    QCOMPARE(heard().state(), Stopped);
}

void PlaylistContract::reportsTheItemInPlay()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    renderer()->assignPlaylist(playlist);
    renderer()->gotoIndex(2);
    REACHES(!heard().media.isEmpty());
    const RendererProbe::Media media = heard().media.constFirst();
    QCOMPARE(media.index, 2);
    QCOMPARE(media.content.uuid, playlist->mediaInfoAt(2).uuid());
    QCOMPARE(media.content.url, m_subject.shortItems().at(2));
    QCOMPARE(heard().playlists.size(), 1);
    QCOMPARE(heard().playlists.constFirst(), playlist);
    HOLDS(heard().events.indexOf("playlist") < heard().events.indexOf("media 2"));
}

void PlaylistContract::reportsFactsAboutTheItem()
{
    NEEDS(Metadata);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().metadataCount("duration") > 0);
    QCOMPARE(heard().metadata("duration").typeId(), int(QMetaType::Int));
    REACHES(heard().metadata("duration").toInt() == m_subject.longSeconds());
    REACHES(heard().metadataCount("title") > 0);
    HOLDS(!heard().metadata("title").toString().isEmpty());
}

void PlaylistContract::assigningAnotherDoesNotInterrupt()
{
    KelvoPlaylist *first = makeLongPlaylist(3);
    KelvoPlaylist *second = makeLongPlaylist(3);
    startPlaylist(first, 1);
    renderer()->assignPlaylist(second);
    settle();
    QCOMPARE(heard().states, States());
    QCOMPARE(heard().media.size(), 0);
    QCOMPARE(status().playlistId, first->uuid());
    QCOMPARE(status().index, 1U);
    renderer()->gotoIndex(2);
    REACHES(isPlaying(2));
    QCOMPARE(status().playlistId, second->uuid());
    QCOMPARE(heard().playlists.size(), 1);
    QCOMPARE(heard().playlists.constFirst(), second);
    QCOMPARE(heard().media.constLast().content.uuid, second->mediaInfoAt(2).uuid());
}

void PlaylistContract::playTakesUpTheOtherPlaylist()
{
    startPlaylist(makeLongPlaylist(3), 1);
    KelvoPlaylist *second = makeLongPlaylist(3);
    renderer()->assignPlaylist(second);
    renderer()->play();
    REACHES(status().playlistId == second->uuid());
    REACHES(isPlaying(0));
}

void PlaylistContract::advancesInTheOldPlaylist()
{
    KelvoPlaylist *first = makePlaylist(m_subject.shortItems());
    startPlaylist(first);
    renderer()->assignPlaylist(makeLongPlaylist(1));
    REACHES(isPlaying(1));
    QCOMPARE(status().playlistId, first->uuid());
}

void PlaylistContract::assigningNone()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->assignPlaylist(nullptr);
    renderer()->play();
    REACHES(heard().errorsOf(KelvoError::NothingToPlay) == 1);
    QCOMPARE(status().playlistId, QString());
    QCOMPARE(heard().state(), Stopped);
}
} // namespace

std::unique_ptr<QObject> makePlaylistContract(RendererSubject &subject)
{
    return std::make_unique<PlaylistContract>(subject);
}

#include "PlaylistContract.moc"

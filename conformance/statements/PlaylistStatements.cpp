// SPDX-License-Identifier: MIT
// The way through a playlist: next, previous, repeat, auto-advance, its end.
#include "StatementGroups.h"
#include "Trial.h"

namespace {
class PlaylistStatements : public Trial
{
public:
    using Trial::Trial;

    void advancesToTheEnd();
    void repeatsAll();
    void repeatsASingleItem();
    void repeatsOne();
    void nextAndPrevious(int mode, int from, bool forward, int to);
    void nextAfterTheLastStops(int mode);
    void previousAtTheFirstStartsItAgain();
    void movesWithoutPlayingWhileStopped();
    void movesRoundTheEndsWhileStopped();
    void gotoIndexWithoutAPlaylist();
    void stopsAfterEachItemWithoutAutoAdvance(int mode);
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

QList<int> PlaylistStatements::indexesHeard() const
{
    QList<int> indexes;
    for (const RendererProbe::Media &media : m_probe->media)
        indexes.append(media.index);
    return indexes;
}

void PlaylistStatements::advancesToTheEnd()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    REACHES(heard().completed > 0);
    settle();
    SAME(heard().completed, 1);
    SAME(indexesHeard(), (QList<int>{0, 1, 2}));
    SAME(heard().states,
        (States{Transitioning, Playing, Transitioning, Playing, Transitioning, Playing, Stopped}));
    HOLDS(heard().events.lastIndexOf("Stopped") < heard().events.lastIndexOf("completed"));
    SAME(heard().errors.size(), 0);
    SAME(status().state, int(Stopped));
    // The playlist was named once, before its first item.
    SAME(heard().playlists.size(), 1);
    SAME(heard().playlists.constFirst(), playlist);
}

void PlaylistStatements::repeatsAll()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems().mid(0, 2));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    startPlaylist(playlist, 1);
    REACHES(indexesHeard() == (QList<int>{0, 1}) && heard().state() == Playing);
    SAME(heard().completed, 0);
    SAME(heard().states, (States{Transitioning, Playing, Transitioning, Playing}));
}

void PlaylistStatements::repeatsASingleItem()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems().mid(0, 1));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    startPlaylist(playlist);
    REACHES(heard().states == (States{Transitioning, Playing}));
    REACHES(isPlaying(0));
    HOLDS(position() == 0);
    SAME(heard().completed, 0);
}

void PlaylistStatements::repeatsOne()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    playlist->setRepeatMode(KelvoPlaylist::RepeatOne);
    startPlaylist(playlist, 1);
    REACHES(heard().states == (States{Transitioning, Playing}));
    REACHES(isPlaying(1));
    // The mode may change while the item plays.
    playlist->setRepeatMode(KelvoPlaylist::RepeatOff);
    REACHES(isPlaying(2));
    SAME(heard().completed, 0);
}

void PlaylistStatements::nextAndPrevious(int mode, int from, bool forward, int to)
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    playlist->setRepeatMode(mode);
    startPlaylist(playlist, uint(from));
    forward ? renderer()->next() : renderer()->previous();
    REACHES(isPlaying(uint(to)));
    SAME(heard().states, (States{Transitioning, Playing}));
    SAME(indexesHeard(), QList<int>{to});
    SAME(heard().media.constLast().content.uuid, playlist->mediaInfoAt(uint(to)).uuid());
}

void PlaylistStatements::nextAfterTheLastStops(int mode)
{
    KelvoPlaylist *playlist = makeLongPlaylist(2);
    playlist->setRepeatMode(mode);
    startPlaylist(playlist, 1);
    renderer()->next();
    REACHES(heard().state() == Stopped);
    settle();
    SAME(heard().states, States{Stopped});
    SAME(heard().errors.size(), 0);
}

void PlaylistStatements::previousAtTheFirstStartsItAgain()
{
    startPlaylist(makeLongPlaylist(2));
    renderer()->setPosition(6, KelvoRenderer::SeekAbsolute);
    REACHES(position() == 6);
    renderer()->previous();
    REACHES(position() < 2);
    REACHES(isPlaying(0));
    SAME(heard().completed, 0);
}

void PlaylistStatements::movesWithoutPlayingWhileStopped()
{
    renderer()->assignPlaylist(makeLongPlaylist(3));
    renderer()->next();
    renderer()->next();
    renderer()->previous();
    REACHES(status().index == 1);
    settle();
    SAME(heard().states.size(), 0);
    renderer()->play();
    REACHES(isPlaying(1));
}

void PlaylistStatements::movesRoundTheEndsWhileStopped()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->previous();
    settle();
    SAME(status().index, 0U);
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    renderer()->previous();
    REACHES(status().index == 2);
    renderer()->next();
    REACHES(status().index == 0);
    SAME(heard().states.size(), 0);
}

void PlaylistStatements::gotoIndexWithoutAPlaylist()
{
    renderer()->gotoIndex(0);
    REACHES(heard().errors.size() == 1);
    SAME(heard().errors.constFirst().code(), KelvoError::IndexOutOfRange);
    // An index made from -1, as a window without a selection has it.
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->gotoIndex(uint(-1));
    REACHES(heard().errors.size() == 2);
    SAME(heard().errorsOf(KelvoError::IndexOutOfRange), 2);
    SAME(heard().states.size(), 0);
}

void PlaylistStatements::stopsAfterEachItemWithoutAutoAdvance(int mode)
{
    renderer()->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    playlist->setRepeatMode(mode);
    startPlaylist(playlist);
    REACHES(heard().state() == Stopped);
    settle();
    SAME(heard().states, States{Stopped});
    SAME(heard().completed, 0);
    SAME(heard().errors.size(), 0);
}

void PlaylistStatements::completesAfterTheLastItemWithoutAutoAdvance()
{
    renderer()->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
    startPlaylist(makePlaylist(m_subject.shortItems()), 2);
    REACHES(heard().completed == 1);
    SAME(heard().states, States{Stopped});
    HOLDS(heard().events.lastIndexOf("Stopped") < heard().events.lastIndexOf("completed"));
}

void PlaylistStatements::uriCompletesWithoutAutoAdvance()
{
    renderer()->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, false);
    renderer()->playUri(m_subject.shortItems().constFirst());
    REACHES(heard().completed == 1);
    SAME(heard().state(), Stopped);
}

void PlaylistStatements::reportsTheItemInPlay()
{
    KelvoPlaylist *playlist = makePlaylist(m_subject.shortItems());
    renderer()->assignPlaylist(playlist);
    renderer()->gotoIndex(2);
    REACHES(!heard().media.isEmpty());
    const RendererProbe::Media media = heard().media.constFirst();
    SAME(media.index, 2);
    SAME(media.content.uuid, playlist->mediaInfoAt(2).uuid());
    SAME(media.content.url, m_subject.shortItems().at(2));
    SAME(heard().playlists.size(), 1);
    SAME(heard().playlists.constFirst(), playlist);
    HOLDS(heard().events.indexOf("playlist") < heard().events.indexOf("media 2"));
}

void PlaylistStatements::reportsFactsAboutTheItem()
{
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().metadataCount("duration") > 0);
    SAME(heard().metadata("duration").typeId(), int(QMetaType::Int));
    REACHES(heard().metadata("duration").toInt() == m_subject.longSeconds());
    REACHES(heard().metadataCount("title") > 0);
    HOLDS(!heard().metadata("title").toString().isEmpty());
}

void PlaylistStatements::assigningAnotherDoesNotInterrupt()
{
    KelvoPlaylist *first = makeLongPlaylist(3);
    KelvoPlaylist *second = makeLongPlaylist(3);
    startPlaylist(first, 1);
    renderer()->assignPlaylist(second);
    settle();
    SAME(heard().states, States());
    SAME(heard().media.size(), 0);
    SAME(status().playlistId, first->uuid());
    SAME(status().index, 1U);
    renderer()->gotoIndex(2);
    REACHES(isPlaying(2));
    SAME(status().playlistId, second->uuid());
    SAME(heard().playlists.size(), 1);
    SAME(heard().playlists.constFirst(), second);
    SAME(heard().media.constLast().content.uuid, second->mediaInfoAt(2).uuid());
}

void PlaylistStatements::playTakesUpTheOtherPlaylist()
{
    startPlaylist(makeLongPlaylist(3), 1);
    KelvoPlaylist *second = makeLongPlaylist(3);
    renderer()->assignPlaylist(second);
    renderer()->play();
    REACHES(status().playlistId == second->uuid());
    REACHES(isPlaying(0));
}

void PlaylistStatements::advancesInTheOldPlaylist()
{
    KelvoPlaylist *first = makePlaylist(m_subject.shortItems());
    startPlaylist(first);
    renderer()->assignPlaylist(makeLongPlaylist(1));
    REACHES(isPlaying(1));
    SAME(status().playlistId, first->uuid());
}

void PlaylistStatements::assigningNone()
{
    renderer()->assignPlaylist(makeLongPlaylist(1));
    renderer()->assignPlaylist(nullptr);
    renderer()->play();
    REACHES(heard().errorsOf(KelvoError::NothingToPlay) == 1);
    SAME(status().playlistId, QString());
    SAME(heard().state(), Stopped);
}

QList<Statement> movingStatements()
{
    using G = PlaylistStatements;
    return {
        statement("playlist.to-the-end",
            "A playlist plays item after item to its end, Stopped and then completed, each reported once.",
            {}, &G::advancesToTheEnd),
        statement("playlist.repeat-all", "With repeat all the first item follows the last one.", {},
            &G::repeatsAll),
        statement("playlist.repeat-all-single-item", "With repeat all a single item begins again.", {},
            &G::repeatsASingleItem),
        statement("playlist.repeat-one", "With repeat one the item begins again, until the mode changes.", {},
            &G::repeatsOne),
        statement("playlist.next-repeat-off", "next() plays the following item, with repeat off.", {},
            &G::nextAndPrevious, KelvoPlaylist::RepeatOff, 0, true, 1),
        statement("playlist.previous-repeat-off", "previous() plays the item before, with repeat off.", {},
            &G::nextAndPrevious, KelvoPlaylist::RepeatOff, 2, false, 1),
        statement("playlist.next-repeat-all", "next() plays the following item, with repeat all.", {},
            &G::nextAndPrevious, KelvoPlaylist::RepeatAll, 0, true, 1),
        statement("playlist.previous-repeat-all", "previous() plays the item before, with repeat all.", {},
            &G::nextAndPrevious, KelvoPlaylist::RepeatAll, 2, false, 1),
        statement("playlist.next-repeat-one", "next() plays the following item, with repeat one.", {},
            &G::nextAndPrevious, KelvoPlaylist::RepeatOne, 0, true, 1),
        statement("playlist.previous-repeat-one", "previous() plays the item before, with repeat one.", {},
            &G::nextAndPrevious, KelvoPlaylist::RepeatOne, 2, false, 1),
        statement("playlist.next-after-the-last", "With repeat all next() at the last item plays the first.",
            {}, &G::nextAndPrevious, KelvoPlaylist::RepeatAll, 2, true, 0),
        statement("playlist.previous-before-the-first",
            "With repeat all previous() at the first item plays the last.", {}, &G::nextAndPrevious,
            KelvoPlaylist::RepeatAll, 0, false, 2),
        statement("playlist.next-after-the-last-stops.repeat-off",
            "next() at the last item stops, with repeat off.", {}, &G::nextAfterTheLastStops,
            KelvoPlaylist::RepeatOff),
        statement("playlist.next-after-the-last-stops.repeat-one",
            "next() at the last item stops, with repeat one.", {}, &G::nextAfterTheLastStops,
            KelvoPlaylist::RepeatOne),
        statement("playlist.previous-at-the-first", "previous() at the first item begins it again.",
            {Ability::Seek}, &G::previousAtTheFirstStartsItAgain),
        statement("playlist.moves-while-stopped",
            "next() and previous() while Stopped move the current item without playing.", {},
            &G::movesWithoutPlayingWhileStopped),
        statement("playlist.moves-round-the-ends",
            "While Stopped, next() and previous() go round the ends with repeat all only.", {},
            &G::movesRoundTheEndsWhileStopped),
        statement("playlist.goto-index-without-a-playlist",
            "gotoIndex() without such an item gives error IndexOutOfRange and changes nothing.", {},
            &G::gotoIndexWithoutAPlaylist),
    };
}

QList<Statement> endingAndAssigningStatements()
{
    using G = PlaylistStatements;
    return {
        statement("playlist.auto-advance-off.repeat-off",
            "Without auto-advance playback stops after an item and does not complete, with repeat off.", {},
            &G::stopsAfterEachItemWithoutAutoAdvance, KelvoPlaylist::RepeatOff),
        statement("playlist.auto-advance-off.repeat-all",
            "Without auto-advance playback stops after an item and does not complete, with repeat all.", {},
            &G::stopsAfterEachItemWithoutAutoAdvance, KelvoPlaylist::RepeatAll),
        statement("playlist.auto-advance-off.repeat-one",
            "Without auto-advance playback stops after an item and does not complete, with repeat one.", {},
            &G::stopsAfterEachItemWithoutAutoAdvance, KelvoPlaylist::RepeatOne),
        statement("playlist.auto-advance-off.last-item",
            "Without auto-advance playback completes after the last item.", {},
            &G::completesAfterTheLastItemWithoutAutoAdvance),
        statement("playlist.auto-advance-off.uri", "Without auto-advance playback completes after a URI.", {},
            &G::uriCompletesWithoutAutoAdvance),
        statement("playlist.reports-the-item",
            "The playlist is reported once and before the item, which is reported with its index, id and "
            "URL.",
            {}, &G::reportsTheItemInPlay),
        statement("playlist.reports-facts", "Duration and title of the item are reported.",
            {Ability::Metadata}, &G::reportsFactsAboutTheItem),
        statement("playlist.assigning-does-not-interrupt",
            "Assigning another playlist does not interrupt what plays; gotoIndex() then is about the new "
            "one.",
            {}, &G::assigningAnotherDoesNotInterrupt),
        statement("playlist.play-takes-up-the-other",
            "play() takes up a playlist that was assigned while another one plays.", {},
            &G::playTakesUpTheOtherPlaylist),
        statement("playlist.advances-in-the-old",
            "At the end of an item the playlist in play goes on, whatever was assigned since.", {},
            &G::advancesInTheOldPlaylist),
        statement("playlist.assigning-none", "After assigning no playlist there is nothing to play.", {},
            &G::assigningNone),
    };
}
} // namespace

QList<Statement> playlistStatements()
{
    return movingStatements() + endingAndAssigningStatements();
}

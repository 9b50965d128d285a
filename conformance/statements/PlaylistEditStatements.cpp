// SPDX-License-Identifier: MIT
// What happens when the playlist changes while it plays.
#include "StatementGroups.h"
#include "Trial.h"

#include <QStandardItemModel>

namespace {
class PlaylistEditStatements : public Trial
{
public:
    using Trial::Trial;

    void playsOnAtItsNewIndex(const QString &edit);
    void followsTheShuffledOrder();
    void removedItemIsReplacedByTheNext();
    void removedLastItem();
    void removedRange();
    void removedWhileStopped();
    void removedWhilePaused();
    void clearedInMidPlay(bool whilePaused);
    void lastItemRemoved();
    void appendedInMidPlay();
    void deletedInMidPlay(KelvoRenderer::State state);
    void deletedBeforeItPlays();
    void deletedWhileAnotherPlays();

private:
    bool isPlayingItem(const QString &uuid);
};

/// Also that the index that goes with the item is the right one.
bool PlaylistEditStatements::isPlayingItem(const QString &uuid)
{
    const RendererProbe::Status now = status();
    return now.state == Playing && now.objectId == uuid
        && int(now.index) == m_playlists.back()->indexOf(uuid);
}

void PlaylistEditStatements::playsOnAtItsNewIndex(const QString &edit)
{
    KelvoPlaylist *playlist = makeLongPlaylist(20);
    if (edit == QLatin1String("unshuffle"))
        playlist->shuffle();
    startPlaylist(playlist, 7);
    const QString uuid = playlist->mediaInfoAt(7).uuid();
    const QHash<QString, std::function<void()>> edits{
        {"shuffle",
            [&] {
                playlist->shuffle();
            }},
        {"unshuffle",
            [&] {
                playlist->unshuffle();
            }},
        {"sort by title, down",
            [&] {
                playlist->sort("title", KelvoPlaylist::TitleDescending);
            }},
        {"sort by title, up",
            [&] {
                playlist->sort("title", KelvoPlaylist::TitleAscending);
            }},
        {"remove before",
            [&] {
                playlist->removeItem(2);
            }},
        {"remove after",
            [&] {
                playlist->removeItem(8);
            }},
        {"remove range before",
            [&] {
                playlist->removeItems(0, 6);
            }},
    };
    edits.value(edit)();
    settle();
    HOLDS(isPlayingItem(uuid));
    SAME(heard().states, States());
    // Whether or not the move is reported as a media change: what is reported is true.
    for (const RendererProbe::Media &media : std::as_const(heard().media)) {
        SAME(media.content.uuid, uuid);
        SAME(media.index, playlist->indexOf(uuid));
    }
}

void PlaylistEditStatements::followsTheShuffledOrder()
{
    KelvoPlaylist *playlist = makeLongPlaylist(20);
    startPlaylist(playlist, 7);
    playlist->shuffle();
    settle();
    const uint here = status().index;
    SAME(playlist->indexOf(playlist->mediaInfoAt(here).uuid()), int(here));
    playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    const QString following = playlist->mediaInfoAt((here + 1) % 20).uuid();
    renderer()->next();
    REACHES(isPlayingItem(following));
}

void PlaylistEditStatements::removedItemIsReplacedByTheNext()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    const QString following = playlist->mediaInfoAt(2).uuid();
    playlist->removeItem(1);
    REACHES(isPlayingItem(following));
    SAME(heard().media.constLast().index, 1);
    SAME(heard().media.constLast().content.uuid, following);
    SAME(heard().completed, 0);
    SAME(heard().errors.size(), 0);
}

void PlaylistEditStatements::removedLastItem()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 2);
    const QString before = playlist->mediaInfoAt(1).uuid();
    playlist->removeItem(2);
    REACHES(isPlayingItem(before));
}

void PlaylistEditStatements::removedRange()
{
    KelvoPlaylist *playlist = makeLongPlaylist(6);
    startPlaylist(playlist, 2);
    const QString following = playlist->mediaInfoAt(4).uuid();
    playlist->removeItems(1, 3);
    REACHES(isPlayingItem(following));
    SAME(status().index, 1U);
    // Removed again before the first removal has led to anything.
    playlist->removeItem(1);
    playlist->removeItem(1);
    REACHES(isPlayingItem(playlist->mediaInfoAt(0).uuid()));
}

void PlaylistEditStatements::removedWhileStopped()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    settle();
    playlist->removeItem(0);
    settle();
    SAME(heard().states, States());
    renderer()->play();
    REACHES(isPlayingItem(playlist->mediaInfoAt(0).uuid()));
}

void PlaylistEditStatements::removedWhilePaused()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    renderer()->pause();
    REACHES(heard().state() == Paused);
    const QString following = playlist->mediaInfoAt(2).uuid();
    playlist->removeItem(1);
    REACHES(status().objectId == following);
    settle();
    REACHES(heard().state() == Paused || heard().state() == Playing);
    renderer()->resume();
    REACHES(isPlayingItem(following));
}

void PlaylistEditStatements::clearedInMidPlay(bool whilePaused)
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    startPlaylist(playlist, 1);
    if (whilePaused) {
        renderer()->pause();
        REACHES(heard().state() == Paused);
    }
    playlist->clear();
    REACHES(heard().state() == Stopped);
    settle();
    SAME(heard().errors.size(), 0);
    SAME(status().state, int(Stopped));
    SAME(status().objectId, QString());
    SAME(position(), 0);
}

void PlaylistEditStatements::lastItemRemoved()
{
    KelvoPlaylist *playlist = makeLongPlaylist(1);
    startPlaylist(playlist);
    playlist->removeItem(0);
    REACHES(heard().state() == Stopped);
    settle();
    SAME(heard().states, States{Stopped});
    SAME(heard().errors.size(), 0);
}

void PlaylistEditStatements::appendedInMidPlay()
{
    KelvoGeneralSourcePlaylist *playlist = makePlaylist(m_subject.shortItems().mid(0, 1));
    startPlaylist(playlist);
    auto *model = qobject_cast<QStandardItemModel *>(playlist->underlyingModel());
    HOLDS(model);
    model->appendRow({new QStandardItem(QStringLiteral("new")), new QStandardItem(QStringLiteral("New")),
        new QStandardItem(m_subject.longItem().toString())});
    REACHES(isPlaying(1));
    SAME(heard().completed, 0);
}

void PlaylistEditStatements::deletedInMidPlay(KelvoRenderer::State state)
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    const auto first = state == Paused ? Playing : state;
    REACHES(heard().states.contains(first));
    if (state == Paused) {
        renderer()->pause();
        REACHES(heard().state() == Paused);
    }
    delete playlist;
    REACHES(heard().state() == Stopped);
    settle();
    SAME(status().playlistId, QString());
    SAME(status().state, int(Stopped));
    // It is no longer assigned.
    heard().clear();
    renderer()->play();
    REACHES(heard().errorsOf(KelvoError::NothingToPlay) == 1);
    renderer()->next();
    renderer()->previous();
    settle();
    SAME(heard().states, States());
}

void PlaylistEditStatements::deletedBeforeItPlays()
{
    KelvoPlaylist *playlist = makeLongPlaylist(3);
    renderer()->assignPlaylist(playlist);
    renderer()->play();
    delete playlist;
    settle();
    REACHES(heard().state() == Stopped);
    renderer()->playUri(m_subject.longItem());
    REACHES(heard().state() == Playing);
}
void PlaylistEditStatements::deletedWhileAnotherPlays()
{
    KelvoPlaylist *first = makeLongPlaylist(2);
    startPlaylist(first, 1);
    KelvoPlaylist *second = makeLongPlaylist(2);
    renderer()->assignPlaylist(second);
    settle();
    delete second;
    settle();
    SAME(heard().states, States());
    SAME(status().playlistId, first->uuid());
    HOLDS(isPlaying(1));
}
} // namespace

QList<Statement> playlistEditStatements()
{
    using G = PlaylistEditStatements;
    return QList<Statement>{
        statement("edit.plays-on.shuffle",
            "The item in play goes on at its new index when the playlist is shuffled.", {},
            &G::playsOnAtItsNewIndex, "shuffle"),
        statement("edit.plays-on.unshuffle",
            "The item in play goes on at its new index when the playlist is unshuffled.", {},
            &G::playsOnAtItsNewIndex, "unshuffle"),
        statement("edit.plays-on.sort-by-title-down",
            "The item in play goes on at its new index when the playlist is sorted by title, down.", {},
            &G::playsOnAtItsNewIndex, "sort by title, down"),
        statement("edit.plays-on.sort-by-title-up",
            "The item in play goes on at its new index when the playlist is sorted by title, up.", {},
            &G::playsOnAtItsNewIndex, "sort by title, up"),
        statement("edit.plays-on.remove-before",
            "The item in play goes on at its new index when the playlist loses an item before it.", {},
            &G::playsOnAtItsNewIndex, "remove before"),
        statement("edit.plays-on.remove-after",
            "The item in play goes on at its new index when the playlist loses an item after it.", {},
            &G::playsOnAtItsNewIndex, "remove after"),
        statement("edit.plays-on.remove-range-before",
            "The item in play goes on at its new index when the playlist loses a range of items before it.",
            {}, &G::playsOnAtItsNewIndex, "remove range before"),
        statement("edit.follows-the-shuffled-order", "After a shuffle next() follows the new order.", {},
            &G::followsTheShuffledOrder),
        statement("edit.removed-item", "When the item in play is removed, the one that took its place plays.",
            {}, &G::removedItemIsReplacedByTheNext),
        statement("edit.removed-last-item",
            "When the last item is removed while it plays, the one before plays.", {}, &G::removedLastItem),
        statement("edit.removed-range",
            "When a range with the item in play is removed, the one behind the range plays.", {},
            &G::removedRange),
        statement("edit.removed-while-stopped",
            "Removing the current item while Stopped starts nothing; play() plays what took its place.", {},
            &G::removedWhileStopped),
        statement("edit.removed-while-paused",
            "When the item is removed while Paused, the one that took its place is current.",
            {Ability::Pause}, &G::removedWhilePaused),
        statement("edit.cleared.playing", "Clearing the playlist while Playing stops, without an error.", {},
            &G::clearedInMidPlay, false),
        statement("edit.cleared.paused", "Clearing the playlist while Paused stops, without an error.",
            {Ability::Pause}, &G::clearedInMidPlay, true),
        statement("edit.only-item-removed", "Removing the only item stops, without an error.", {},
            &G::lastItemRemoved),
        statement(
            "edit.appended", "An item that is appended in mid-play follows.", {}, &G::appendedInMidPlay),
        statement("edit.deleted.transitioning",
            "A playlist that is deleted while Transitioning stops and is no longer assigned.", {},
            &G::deletedInMidPlay, Transitioning),
        statement("edit.deleted.playing",
            "A playlist that is deleted while Playing stops and is no longer assigned.", {},
            &G::deletedInMidPlay, Playing),
        statement("edit.deleted.paused",
            "A playlist that is deleted while Paused stops and is no longer assigned.", {Ability::Pause},
            &G::deletedInMidPlay, Paused),
        statement("edit.deleted-before-it-plays",
            "A playlist that is deleted right after play() does no harm.", {}, &G::deletedBeforeItPlays),
        statement("edit.deleted-while-another-plays",
            "Deleting an assigned playlist does not interrupt the one that plays.", {},
            &G::deletedWhileAnotherPlays),
    };
}

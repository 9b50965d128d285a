// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"

#include "KelvoCommandListener.h"
#include "KelvoMessageHandler.h"
#include "playlist/PlaylistContents.h"
#include "playlist/PlaylistModelFollower.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {
// An index as its caller meant it: -1 arrives here as the largest number.
qint64 meant(uint index)
{
    return index > uint(std::numeric_limits<int>::max()) ? qint64(int(index)) : qint64(index);
}
} // namespace

struct KelvoGeneralSourcePlaylist::Private
{
    const QString id;
    const QString name;
    const QString sourceUuid;
    int repeatMode = KelvoPlaylist::RepeatOff;
    PlaylistContents contents{};
    PlaylistModelFollower follower{contents};
};

KelvoGeneralSourcePlaylist::KelvoGeneralSourcePlaylist(
    const QString &id, const QString &name, const QString &sourceUuid, QObject *parent)
    : KelvoPlaylistBase(parent)
    , d(new Private{id, name, sourceUuid})
{
    connect(&d->contents, &PlaylistContents::changed, this, &KelvoGeneralSourcePlaylist::contentsChanged);
}

KelvoGeneralSourcePlaylist::~KelvoGeneralSourcePlaylist() = default;

QString KelvoGeneralSourcePlaylist::uuid() const
{
    return d->id;
}

QString KelvoGeneralSourcePlaylist::name() const
{
    return d->name;
}

QString KelvoGeneralSourcePlaylist::sourceUuid() const
{
    return d->sourceUuid;
}

QAbstractItemModel *KelvoGeneralSourcePlaylist::itemModel()
{
    return &d->contents.itemModel();
}

int KelvoGeneralSourcePlaylist::count() const
{
    return d->contents.count();
}

KelvoMediaInfo KelvoGeneralSourcePlaylist::mediaInfoAt(uint index) const
{
    return index < uint(count()) ? d->contents.mediaInfoAt(int(index)) : KelvoMediaInfo();
}

int KelvoGeneralSourcePlaylist::indexOf(const QString &mediaUuid) const
{
    return d->contents.indexOf(mediaUuid);
}

bool KelvoGeneralSourcePlaylist::isShuffled() const
{
    return d->contents.isShuffled();
}

void KelvoGeneralSourcePlaylist::shuffle()
{
    KelvoCommandListener::noteCommand(*this, "shuffle");
    d->contents.shuffle();
}

void KelvoGeneralSourcePlaylist::unshuffle()
{
    KelvoCommandListener::noteCommand(*this, "unshuffle");
    d->contents.unshuffle();
}

int KelvoGeneralSourcePlaylist::repeatMode() const
{
    return d->repeatMode;
}

void KelvoGeneralSourcePlaylist::setRepeatMode(int mode)
{
    KelvoCommandListener::noteCommand(*this, "setRepeatMode", mode);
    if (mode != RepeatAll && mode != RepeatOff && mode != RepeatOne) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "knows no repeat mode" << mode;
        return;
    }
    if (std::exchange(d->repeatMode, mode) != mode)
        Q_EMIT repeatModeChanged(mode);
}

void KelvoGeneralSourcePlaylist::sort(const QString &key, int order)
{
    KelvoCommandListener::noteCommand(*this, "sort", key, order);
    if (key == SortKeyTitle && (order == TitleAscending || order == TitleDescending))
        d->contents.sortByTitle(order == TitleDescending);
    else if (key == SortKeyDuration && (order == DurationAscending || order == DurationDescending))
        d->contents.sortByDuration(order == DurationDescending);
    else
        qCWarning(lcKelvo) << "Playlist" << d->name << "cannot be sorted by" << key << "in order" << order;
}

void KelvoGeneralSourcePlaylist::removeItem(uint index)
{
    KelvoCommandListener::noteCommand(*this, "removeItem", index);
    if (index >= uint(count())) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "has no item" << meant(index) << "to remove, only"
                           << count() << "items";
        return;
    }
    d->contents.remove(int(index), 1);
}

void KelvoGeneralSourcePlaylist::removeItems(uint from, uint to)
{
    KelvoCommandListener::noteCommand(*this, "removeItems", from, to);
    if (from >= uint(count()) || to < from) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "has no items" << meant(from) << "to" << meant(to)
                           << "to remove, only" << count() << "items";
        return;
    }
    d->contents.remove(int(from), int(std::min(to, uint(count()) - 1) - from + 1));
}

void KelvoGeneralSourcePlaylist::clear()
{
    KelvoCommandListener::noteCommand(*this, "clear");
    if (count() > 0)
        d->contents.remove(0, count());
}

void KelvoGeneralSourcePlaylist::setUnderlyingModel(QAbstractItemModel *model)
{
    d->follower.follow(model);
}

QAbstractItemModel *KelvoGeneralSourcePlaylist::underlyingModel() const
{
    return d->follower.model();
}

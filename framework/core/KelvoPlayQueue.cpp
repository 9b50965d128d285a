// SPDX-License-Identifier: MIT
#include "KelvoPlayQueue.h"

#include "KelvoPlaylist.h"

#include <algorithm>

KelvoPlayQueue::KelvoPlayQueue(QObject *parent)
    : QObject(parent)
{
}

KelvoPlayQueue::~KelvoPlayQueue() = default;

void KelvoPlayQueue::setPlaylist(KelvoPlaylist *playlist)
{
    if (playlist == m_playlist)
        return;
    if (m_playlist)
        disconnect(m_playlist, nullptr, this, nullptr);
    m_playlist = playlist;
    if (m_playlist) {
        connect(m_playlist, &KelvoPlaylist::contentsChanged, this, &KelvoPlayQueue::followContents);
        connect(m_playlist, &QObject::destroyed, this, &KelvoPlayQueue::followDestruction);
    }
    makeCurrent(count() > 0 ? 0 : -1);
}

KelvoPlaylist *KelvoPlayQueue::playlist() const
{
    return m_playlist;
}

int KelvoPlayQueue::count() const
{
    const KelvoPlaylist *list = m_playlist;
    return list ? list->count() : 0;
}

KelvoMediaInfo KelvoPlayQueue::current() const
{
    const KelvoPlaylist *list = m_playlist;
    return list && m_index >= 0 ? list->mediaInfoAt(uint(m_index)) : KelvoMediaInfo();
}

bool KelvoPlayQueue::setIndex(int index)
{
    if (index < 0 || index >= count())
        return false;
    makeCurrent(index);
    return true;
}

int KelvoPlayQueue::nextIndex() const
{
    if (m_index < 0)
        return -1;
    if (m_index + 1 < count())
        return m_index + 1;
    return repeatMode() == KelvoPlaylist::RepeatAll ? 0 : -1;
}

int KelvoPlayQueue::previousIndex() const
{
    if (m_index != 0)
        return std::max(m_index - 1, -1);
    return repeatMode() == KelvoPlaylist::RepeatAll ? count() - 1 : 0;
}

int KelvoPlayQueue::followingIndex() const
{
    return m_index >= 0 && repeatMode() == KelvoPlaylist::RepeatOne ? m_index : nextIndex();
}

int KelvoPlayQueue::repeatMode() const
{
    const KelvoPlaylist *list = m_playlist;
    return list ? list->repeatMode() : int(KelvoPlaylist::RepeatOff);
}

void KelvoPlayQueue::makeCurrent(int index)
{
    m_index = index;
    m_currentUuid = current().uuid();
}

bool KelvoPlayQueue::isCurrentAt(int index) const
{
    const KelvoPlaylist *list = m_playlist;
    return list && index >= 0 && index < list->count()
        && list->mediaInfoAt(uint(index)).uuid() == m_currentUuid;
}

int KelvoPlayQueue::search() const
{
    const KelvoPlaylist *list = m_playlist;
    return list ? list->indexOf(m_currentUuid) : -1;
}

void KelvoPlayQueue::followContents(uint from, uint removed, uint added)
{
    if (m_index < 0) {
        if (count() > 0) {
            makeCurrent(0);
            Q_EMIT indexMoved(0);
        }
        return;
    }
    if (isCurrentAt(m_index))
        return;

    // Most edits happen in one place: the counts tell where the item went, without a search.
    const int shifted = int(qint64(m_index) + added - removed);
    const int moved = uint(m_index) >= from && isCurrentAt(shifted) ? shifted : search();
    if (moved >= 0) {
        m_index = moved;
        Q_EMIT indexMoved(moved);
        return;
    }

    const qint64 offset = qint64(m_index) - from;
    const qint64 place = offset < 0 ? m_index : from + std::min<qint64>(offset, added);
    makeCurrent(int(std::min<qint64>(place, count() - 1)));
    Q_EMIT currentRemoved(m_index);
}

void KelvoPlayQueue::followDestruction()
{
    const bool hadCurrent = m_index >= 0;
    makeCurrent(-1);
    if (hadCurrent)
        Q_EMIT currentRemoved(-1);
}

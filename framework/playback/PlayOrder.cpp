// SPDX-License-Identifier: MIT
#include "PlayOrder.h"

#include "KelvoPlaylist.h"

#include <algorithm>

PlayOrder::PlayOrder()
{
    connect(&m_queue, &KelvoPlayQueue::indexMoved, this, &PlayOrder::edited);
    connect(&m_queue, &KelvoPlayQueue::currentRemoved, this, &PlayOrder::edited);
}

KelvoPlaylist *PlayOrder::playlist() const
{
    return isInPlaylist() ? m_queue.playlist() : nullptr;
}

int PlayOrder::index() const
{
    return isInPlaylist() ? m_queue.index() : -1;
}

KelvoMediaInfo PlayOrder::item() const
{
    switch (m_inPlay) {
    case InPlay::Address:
        return m_address;
    case InPlay::Playlist:
        return m_queue.current();
    case InPlay::Foreign:
        break;
    }
    return {};
}

PlayOrder::Status PlayOrder::status() const
{
    const KelvoPlaylist *list = playlist();
    if (!list)
        return {};
    return {list->uuid(), uint(std::max(0, m_queue.index())), m_queue.current().uuid()};
}

PlayRun::Place PlayOrder::place(bool autoAdvance) const
{
    return {isInPlaylist(), m_queue.index(), m_queue.count(), m_queue.nextIndex(), m_queue.followingIndex(),
        autoAdvance};
}

QString PlayOrder::playlistName() const
{
    return m_queue.playlist() ? m_queue.playlist()->name() : QString();
}

void PlayOrder::assign(KelvoPlaylist *playlist, bool isStopped)
{
    m_assigned = playlist;
    if (isStopped || !isInPlaylist())
        takeUpAssigned();
}

bool PlayOrder::isOtherAssigned() const
{
    return isInPlaylist() && m_queue.playlist() != m_assigned;
}

bool PlayOrder::takeUpAssigned()
{
    if (m_queue.playlist() == m_assigned)
        return false;
    m_queue.setPlaylist(m_assigned);
    return true;
}

void PlayOrder::setAddress(const KelvoMediaInfo &item)
{
    m_address = item;
    m_inPlay = InPlay::Address;
}

KelvoError PlayOrder::choose()
{
    if (hasPlaylist()) {
        m_inPlay = InPlay::Playlist;
        return count() > 0 ? KelvoError() : KelvoError(KelvoError::EmptyPlaylist, playlistName());
    }
    if (m_address.url().isEmpty())
        return {KelvoError::NothingToPlay, {}};
    m_inPlay = InPlay::Address;
    return {};
}

bool PlayOrder::chooseAssigned(uint index)
{
    if (!m_assigned || index >= uint(m_assigned->count()))
        return false;
    takeUpAssigned();
    return moveTo(int(index));
}

bool PlayOrder::moveTo(int index)
{
    if (!m_queue.setIndex(index))
        return false;
    m_inPlay = InPlay::Playlist;
    return true;
}

// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"
#include "KelvoGstRenderer.h"
#include "KelvoPlaylist.h"

#include <algorithm>

void KelvoGstRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    m_assigned = playlist;
    if (m_state == Stopped || m_singleInPlay)
        adoptAssigned();
}

/// True when another playlist than before is now the one that plays.
bool KelvoGstRenderer::adoptAssigned()
{
    if (m_queue.playlist() == m_assigned)
        return false;
    m_queue.setPlaylist(m_assigned);
    return true;
}

void KelvoGstRenderer::play()
{
    const bool other = adoptAssigned() || (m_singleInPlay && m_queue.playlist());
    if (m_state != Stopped && !other) {
        resume();
        return;
    }
    m_singleInPlay = !m_queue.playlist();
    if (m_singleInPlay && m_single.url().isEmpty()) {
        reportError(KelvoError::NothingToPlay, {});
        halt(false);
    } else if (!m_singleInPlay && m_queue.count() == 0) {
        reportError(KelvoError::EmptyPlaylist, m_queue.playlist()->name());
        halt(false);
    } else {
        startRun();
    }
}

void KelvoGstRenderer::playUri(const QUrl &uri)
{
    playUriWithType(uri, {});
}

void KelvoGstRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    m_single = KelvoMediaInfo({}, uri);
    m_single.setMimeType(contentType);
    m_singleInPlay = true;
    startRun();
}

void KelvoGstRenderer::stop()
{
    dropPauseAt();
    halt(false);
}

void KelvoGstRenderer::pause()
{
    if (m_state == Stopped || m_pauseWanted)
        return;
    m_pauseWanted = true;
    if (m_loaded)
        tellPlayer([](ItemPlayer &player) { player.pause(); });
    else
        setState(Paused);
}

void KelvoGstRenderer::resume()
{
    if (m_state == Stopped || (m_state != Paused && !m_pauseWanted))
        return;
    m_pauseWanted = false;
    if (m_loaded)
        tellPlayer([](ItemPlayer &player) { player.resume(); });
    else
        setState(Transitioning);
}

void KelvoGstRenderer::pauseAt(uint seconds)
{
    tellPlayer([seconds](ItemPlayer &player) { player.setPauseAt(seconds); });
}

void KelvoGstRenderer::dropPauseAt()
{
    tellPlayer([](ItemPlayer &player) { player.dropPauseAt(); });
}

/// Moves the current item without playing; false when something plays.
bool KelvoGstRenderer::moveWhileStopped(int index)
{
    if (m_state != Stopped)
        return false;
    if (m_queue.setIndex(index)) {
        m_singleInPlay = false;
        const KelvoMediaInfo item = m_queue.current();
        const KelvoContent content{item.uuid(), item.url(), item.mimeType()};
        m_facts.announce(content, true);
        later([this, index, content] { Q_EMIT mediaChanged(index, content); });
    }
    return true;
}

/// Leaves the item in play for the one at `index`; -1: for nothing. A playlist that was assigned in the
/// meantime comes first.
void KelvoGstRenderer::leaveItemBySkip(int index)
{
    const bool other = adoptAssigned();
    if (other ? m_queue.count() > 0 : m_queue.setIndex(index))
        startItem();
    else
        halt(false);
}

void KelvoGstRenderer::next()
{
    dropPauseAt();
    if (m_state == Stopped)
        adoptAssigned();
    if (moveWhileStopped(m_queue.nextIndex()))
        return;
    const bool otherAssigned = !m_singleInPlay && m_queue.playlist() != m_assigned;
    if (!otherAssigned && m_entry + 1 < m_entries.count())
        startEntry(m_entry + 1);
    else if (m_singleInPlay)
        halt(false);
    else
        leaveItemBySkip(m_queue.nextIndex());
}

void KelvoGstRenderer::previous()
{
    dropPauseAt();
    if (m_state == Stopped)
        adoptAssigned();
    if (moveWhileStopped(m_queue.previousIndex()))
        return;
    const bool otherAssigned = !m_singleInPlay && m_queue.playlist() != m_assigned;
    if (!otherAssigned && m_entry > 0)
        startEntry(m_entry - 1);
    else if (m_singleInPlay)
        startItem();
    else
        leaveItemBySkip(m_queue.previousIndex());
}

void KelvoGstRenderer::gotoIndex(uint index)
{
    if (!m_assigned || index >= uint(m_assigned->count())) {
        reportError(KelvoError::IndexOutOfRange, QString::number(index));
        return;
    }
    dropPauseAt();
    adoptAssigned();
    m_queue.setIndex(int(index));
    m_singleInPlay = false;
    startRun();
}

void KelvoGstRenderer::setPosition(int seconds, int mode)
{
    if (mode != SeekAbsolute && mode != SeekRelative)
        reportError(KelvoError::InvalidValue, QStringLiteral("seek mode %1").arg(mode));
    else if (m_state != Stopped)
        tellPlayer([seconds, mode](ItemPlayer &player) { player.seek(seconds, mode == SeekRelative); });
}

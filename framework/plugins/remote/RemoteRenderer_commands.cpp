// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "RemoteRenderer.h"

#include <algorithm>

void RemoteRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    m_assigned = playlist;
    if (m_state == Stopped || m_inPlay != InPlay::OfPlaylist)
        adoptAssigned();
}

/// True when another playlist than before is now the one that plays.
bool RemoteRenderer::adoptAssigned()
{
    if (m_queue.playlist() == m_assigned)
        return false;
    m_queue.setPlaylist(m_assigned);
    return true;
}

void RemoteRenderer::play()
{
    const bool other = adoptAssigned() || (m_inPlay != InPlay::OfPlaylist && m_queue.playlist());
    if (m_state != Stopped && !other) {
        resume();
        return;
    }
    m_inPlay = m_queue.playlist() ? InPlay::OfPlaylist : InPlay::Single;
    if (m_inPlay == InPlay::Single && m_single.url().isEmpty()) {
        reportError(KelvoError::NothingToPlay, {});
        halt(false);
    } else if (m_inPlay == InPlay::OfPlaylist && m_queue.count() == 0) {
        reportError(KelvoError::EmptyPlaylist, m_queue.playlist()->name());
        halt(false);
    } else {
        startRun();
    }
}

void RemoteRenderer::playUri(const QUrl &uri)
{
    playUriWithType(uri, {});
}

void RemoteRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    m_single = KelvoMediaInfo({}, uri);
    m_single.setMimeType(contentType);
    m_inPlay = InPlay::Single;
    startRun();
}

void RemoteRenderer::stop()
{
    m_pauseAt.reset();
    if (m_state != Stopped)
        halt(false);
}

/// Otherwise that is reported.
bool RemoteRenderer::canPause()
{
    const bool can = m_transport->abilities().pause;
    if (!can)
        reportError(KelvoError::NotSupported, QStringLiteral("%1 cannot pause what it plays").arg(m_name));
    return can;
}

void RemoteRenderer::pause()
{
    if (m_state != Playing && m_state != Transitioning)
        return;
    if (m_loaded && !canPause())
        return;
    m_pauseWanted = true;
    // What is not yet there to be paused is paused once it is.
    if (m_loaded)
        m_transport->pause();
}

void RemoteRenderer::resume()
{
    if (m_state == Stopped || (m_state != Paused && !m_pauseWanted))
        return;
    m_pauseWanted = false;
    m_pauseSent = false;
    if (m_loaded)
        m_transport->resume();
}

void RemoteRenderer::pauseAt(uint seconds)
{
    // Whether a player can pause what it does not play yet, it does not know itself.
    if (m_loaded && !canPause())
        return;
    m_pauseAt = seconds;
    positionMoved();
}

/// Moves the current item without playing; false when something plays.
bool RemoteRenderer::moveWhileStopped(int index)
{
    if (m_state != Stopped)
        return false;
    if (m_queue.setIndex(index)) {
        // What the player holds is no longer the current item.
        m_epoch = 0;
        m_inPlay = InPlay::OfPlaylist;
        const KelvoMediaInfo item = m_queue.current();
        const KelvoContent content{item.uuid(), item.url(), item.mimeType()};
        m_facts.announce(content, true);
        later([this, index, content] { Q_EMIT mediaChanged(index, content); });
    }
    return true;
}

/// Leaves the item in play for the one at `index`; -1: for nothing. A playlist that was assigned in the
/// meantime comes first.
void RemoteRenderer::leaveItemBySkip(int index)
{
    const bool other = adoptAssigned();
    if (other ? m_queue.count() > 0 : m_queue.setIndex(index))
        startItem();
    else
        halt(false);
}

void RemoteRenderer::next()
{
    m_pauseAt.reset();
    if (m_state == Stopped)
        adoptAssigned();
    if (moveWhileStopped(m_queue.nextIndex()))
        return;
    if (m_inPlay == InPlay::OfPlaylist)
        leaveItemBySkip(m_queue.nextIndex());
    else
        halt(false);
}

void RemoteRenderer::previous()
{
    m_pauseAt.reset();
    if (m_state == Stopped)
        adoptAssigned();
    if (moveWhileStopped(m_queue.previousIndex()))
        return;
    if (m_inPlay == InPlay::OfPlaylist)
        leaveItemBySkip(m_queue.previousIndex());
    else if (m_inPlay == InPlay::Single)
        startItem();
    else
        setPosition(0, SeekAbsolute);
}

void RemoteRenderer::gotoIndex(uint index)
{
    if (!m_assigned || index >= uint(m_assigned->count())) {
        reportError(KelvoError::IndexOutOfRange, QString::number(index));
        return;
    }
    m_pauseAt.reset();
    adoptAssigned();
    m_queue.setIndex(int(index));
    m_inPlay = InPlay::OfPlaylist;
    startRun();
}

void RemoteRenderer::setPosition(int seconds, int mode)
{
    if (mode != SeekAbsolute && mode != SeekRelative) {
        reportError(KelvoError::InvalidValue, QStringLiteral("seek mode %1").arg(mode));
        return;
    }
    if (m_state == Stopped)
        return;
    if (!m_loaded) {
        m_seekWhenLoaded = mode == SeekAbsolute ? seconds : m_seekWhenLoaded.value_or(0) + seconds;
        return;
    }
    if (!m_transport->abilities().seek) {
        reportError(KelvoError::NotSeekable, m_item.url().toDisplayString());
        return;
    }
    const double wanted = std::max(0.0, (mode == SeekRelative ? m_position.now() : 0.0) + seconds);
    if (m_duration > 0 && wanted >= m_duration)
        seekToEnd();
    else
        seekTo(wanted);
}

void RemoteRenderer::seekTo(double seconds)
{
    m_transport->seek(seconds);
    m_seekTarget = seconds;
    m_seekArrived = false;
    m_position.moveTo(seconds);
    m_positionKnown = true;
    m_lastReport.start();
    m_lastSeek.start();
    positionMoved();
}

/// Players differ in what they do with a seek to the end, or do nothing: the end is brought about here.
void RemoteRenderer::seekToEnd()
{
    if (m_inPlay == InPlay::OfAnother || (m_pauseAt && *m_pauseAt <= m_duration)) {
        seekTo(m_duration);
        return;
    }
    m_playedInRun = true;
    m_failedInRow = 0;
    m_idleInRow = -1;
    itemEnded();
}

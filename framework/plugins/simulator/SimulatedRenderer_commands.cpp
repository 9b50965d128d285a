// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "SimulatedClock.h"
#include "SimulatedRenderer.h"

#include <algorithm>

void SimulatedRenderer::doPlay()
{
    const bool other = adoptAssigned() || (m_uriInPlay && m_queue.playlist());
    if (m_state != Stopped && !other) {
        if (m_state == Paused) {
            m_pauseWanted = false;
            setState(m_loaded && m_bufferStep < 0 ? Playing : Transitioning);
            updateRunning();
        }
        return;
    }
    m_uriInPlay = !m_queue.playlist();
    if (m_uriInPlay ? m_uri.url().isEmpty() : m_queue.count() == 0) {
        reportError(m_uriInPlay ? KelvoError::NothingToPlay : KelvoError::EmptyPlaylist);
        halt();
        return;
    }
    if (!m_uriInPlay && m_queue.index() < 0)
        m_queue.setIndex(0);
    startRun();
}

/// True when another playlist than before is now the one that plays.
bool SimulatedRenderer::adoptAssigned()
{
    if (m_queue.playlist() == m_assigned)
        return false;
    m_queue.setPlaylist(m_assigned);
    return true;
}

void SimulatedRenderer::doAssign(KelvoPlaylist *playlist)
{
    m_assigned = playlist;
    if (m_state == Stopped || m_uriInPlay)
        adoptAssigned();
}

/// Moves the current item without playing; false when something plays.
bool SimulatedRenderer::moveWhileStopped(int index)
{
    if (m_state != Stopped)
        return false;
    if (m_queue.setIndex(index)) {
        m_uriInPlay = false;
        const KelvoMediaInfo item = m_queue.current();
        const KelvoContent to{item.uuid(), item.url(), item.mimeType()};
        m_facts.announce(to, true);
        report([this, index, to] { Q_EMIT mediaChanged(index, to); });
    }
    return true;
}

void SimulatedRenderer::doNext()
{
    m_pauseAt.reset();
    if (m_state == Stopped)
        adoptAssigned();
    if (moveWhileStopped(m_queue.nextIndex()))
        return;
    if (!m_uriInPlay && adoptAssigned()) {
        m_queue.count() > 0 ? startItem() : halt();
    } else if (m_entry + 1 < m_entries.count()) {
        startEntry(m_entry + 1);
    } else if (!m_uriInPlay && m_queue.nextIndex() >= 0) {
        m_queue.setIndex(m_queue.nextIndex());
        startItem();
    } else {
        halt();
    }
}

void SimulatedRenderer::doPrevious()
{
    m_pauseAt.reset();
    if (m_state == Stopped)
        adoptAssigned();
    if (moveWhileStopped(m_queue.previousIndex()))
        return;
    if (!m_uriInPlay && adoptAssigned()) {
        m_queue.count() > 0 ? startItem() : halt();
    } else if (m_entry > 0 || m_uriInPlay) {
        startEntry(std::max(0, m_entry - 1));
    } else {
        m_queue.setIndex(m_queue.previousIndex());
        startItem();
    }
}

void SimulatedRenderer::doGotoIndex(uint index)
{
    if (!m_assigned || index >= uint(m_assigned->count())) {
        reportError(KelvoError::IndexOutOfRange);
        return;
    }
    m_pauseAt.reset();
    adoptAssigned();
    m_queue.setIndex(int(index));
    m_uriInPlay = false;
    startRun();
}

void SimulatedRenderer::doSetPosition(int seconds, int mode)
{
    if (mode != SeekAbsolute && mode != SeekRelative) {
        reportError(KelvoError::InvalidValue);
        return;
    }
    if (m_state == Stopped)
        return;
    if (!m_loaded) {
        m_seekWhenLoaded = mode == SeekAbsolute ? seconds : m_seekWhenLoaded.value_or(0) + seconds;
        return;
    }
    if (!m_entries.at(m_entry).seekable) {
        reportError(KelvoError::NotSeekable);
        return;
    }
    const double wanted = (mode == SeekRelative ? position() : 0) + 1000.0 * seconds;
    m_position.moveTo(std::clamp(wanted, 0.0, duration()), m_clock->now());
    if (wanted >= duration() && !atPausePoint())
        endEntry();
    else
        updateRunning();
}

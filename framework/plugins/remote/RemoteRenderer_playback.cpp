// SPDX-License-Identifier: MIT
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "RemoteRenderer.h"
#include "RemoteUrl.h"

#include <utility>

namespace {
/// What ends earlier than this did not play, whatever state the player passed through. Milliseconds.
constexpr qint64 NoPlaying = 100;

/// Without an address that could do harm where it is shown or opened.
KelvoMediaInfo withoutUnfitAddress(const KelvoMediaInfo &item)
{
    KelvoMediaInfo harmless(item.uuid(), {}, item.title(), item.duration());
    harmless.setArtist(item.artist());
    harmless.setAlbum(item.album());
    harmless.setMimeType(item.mimeType());
    return harmless;
}
} // namespace

/// The user chose what to play.
void RemoteRenderer::startRun()
{
    m_pauseWanted = false;
    m_playedInRun = false;
    m_failedInRow = 0;
    m_idleInRow = 0;
    startItem();
}

void RemoteRenderer::startItem()
{
    leaveItem();
    m_item = m_inPlay == InPlay::Single ? m_single : m_queue.current();
    m_epoch = ++m_lastEpoch;
    setState(Transitioning);
    announceItem();
    const QUrl uri = m_item.url();
    if (!uri.isValid() || uri.isRelative()) {
        later([this, epoch = m_epoch, text = uri.toDisplayString()] {
            if (epoch == m_epoch)
                itemFailed(KelvoError::InvalidUrl, text);
        });
        return;
    }
    m_loadedPaused = m_pauseWanted;
    m_transport->load({m_epoch, m_item, m_pauseWanted, rateForLoading()});
}

/// Everything that is still said about the item so far belongs to the past.
void RemoteRenderer::leaveItem()
{
    m_epoch = 0;
    m_loaded = false;
    m_pauseSent = false;
    m_loadedPaused = false;
    m_seekWhenLoaded.reset();
    m_playingSince.invalidate();
    m_positionTold = m_moved = false;
    m_duration = -1;
    m_position.setRunning(false);
    m_position.moveTo(0);
    m_positionKnown = false;
    m_lastSeek.invalidate();
    m_seekTarget.reset();
    positionMoved();
    answerWaiting();
}

void RemoteRenderer::announceItem()
{
    if (!playlistInPlay())
        later([this] { Q_EMIT playlistChanged(nullptr); });
    m_facts.announce(content(), playlistInPlay());
    tellItem();
}

void RemoteRenderer::tellItem()
{
    KelvoPlaylist *playlist = playlistInPlay();
    if (playlist && playlist != m_announced)
        later([this, guarded = QPointer<KelvoPlaylist>(playlist)] { Q_EMIT playlistChanged(guarded); });
    m_announced = playlist;
    const int index = m_inPlay == InPlay::OfPlaylist ? m_queue.index() : -1;
    later([this, index, content = content()] { Q_EMIT mediaChanged(index, content); });
}

KelvoPlaylist *RemoteRenderer::playlistInPlay() const
{
    return m_inPlay == InPlay::OfPlaylist ? m_queue.playlist() : nullptr;
}

KelvoContent RemoteRenderer::content() const
{
    return {m_item.uuid(), m_item.url(), m_item.mimeType()};
}

void RemoteRenderer::transportReached(quint64 epoch, State state)
{
    if (epoch != m_epoch)
        return;
    if (epoch == 0 && m_inPlay != InPlay::OfAnother) {
        // Somebody plays what we know nothing about.
        if (state != Playing && state != Paused)
            return;
        takeReplacement({});
    }
    switch (state) {
    case Stopped:
        stoppedElsewhere();
        break;
    case Transitioning:
        forgetFalseStart();
        m_position.setRunning(false);
        setState(Transitioning);
        positionMoved();
        break;
    case Playing:
        reachedPlaying();
        break;
    case Paused:
        reachedPaused();
        break;
    }
}

void RemoteRenderer::reachedPlaying()
{
    const bool wantsPause = m_pauseWanted && m_state == Transitioning;
    if (wantsPause && canPause()) {
        if (!std::exchange(m_pauseSent, true))
            m_transport->pause();
        m_loaded = true;
        return;
    }
    m_pauseWanted = false;
    if (!m_playingSince.isValid())
        m_playingSince.start();
    m_position.setRunning(true);
    setState(Playing);
    takeLoaded();
    positionMoved();
}

void RemoteRenderer::reachedPaused()
{
    if (std::exchange(m_loadedPaused, false) && !m_pauseWanted && !m_loaded) {
        // Resumed while it was loading.
        m_loaded = true;
        m_transport->resume();
        return;
    }
    m_pauseWanted = true;
    m_pauseSent = false;
    m_position.setRunning(false);
    // Where exactly it paused, the player knows.
    m_positionKnown = m_positionKnown && m_state == Paused;
    setState(Paused);
    takeLoaded();
    positionMoved();
    if (!m_positionKnown)
        askPosition();
}

/// The player has the item: what waited for that.
void RemoteRenderer::takeLoaded()
{
    m_loaded = true;
    if (m_seekWhenLoaded)
        setPosition(*std::exchange(m_seekWhenLoaded, std::nullopt), SeekAbsolute);
}

/// Not by us, not by an end. The item stays in the player: who goes on with it there is shown.
void RemoteRenderer::stoppedElsewhere()
{
    if (m_state == Stopped)
        return;
    const quint64 epoch = m_epoch;
    leaveItem();
    m_epoch = epoch;
    m_pauseWanted = false;
    setState(Stopped);
}

void RemoteRenderer::takeReplacement(const KelvoMediaInfo &item)
{
    leaveItem();
    m_inPlay = InPlay::OfAnother;
    m_item = item;
    if (!item.url().isEmpty() && !RemoteUrl::isMedia(item.url())) {
        qCDebug(lcKelvo).noquote() << m_name << "names an address that is none of media:"
                                   << item.url().toDisplayString().left(200);
        m_item = withoutUnfitAddress(item);
    }
    m_pauseAt.reset();
    m_loaded = m_state == Playing || m_state == Paused;
    m_position.setRunning(m_state == Playing);
    announceItem();
    positionMoved();
}

void RemoteRenderer::itemEnded()
{
    if (!hasLived()) {
        failUnplayed();
        return;
    }
    if (!m_loaded && m_state == Transitioning)
        setState(Playing); // Too short for the player to tell of it.
    const bool idle = !m_playingSince.isValid() || m_playingSince.elapsed() < NoPlaying;
    m_playedInRun = true;
    m_failedInRow = 0;
    m_idleInRow = idle ? m_idleInRow + 1 : 0;
    const bool advances = m_properties.value(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE).toBool();
    if (m_inPlay != InPlay::OfPlaylist || !advances) {
        halt(m_inPlay != InPlay::OfPlaylist || m_queue.index() == m_queue.count() - 1);
        return;
    }
    const int following = m_queue.followingIndex();
    // A round of pictures and the like would go on at full speed for ever.
    if (following >= 0 && following <= m_queue.index() && m_idleInRow >= m_queue.count()) {
        reportError(KelvoError::NothingPlayable, m_queue.playlist()->name());
        halt(false);
    } else if (m_queue.setIndex(following)) {
        startItem();
    } else {
        halt(true);
    }
}

void RemoteRenderer::itemFailed(KelvoError::Code code, const QString &message)
{
    reportError(code, message);
    if (m_inPlay != InPlay::OfPlaylist) {
        halt(false);
        return;
    }
    if (hasProgressed()) {
        m_playedInRun = true;
        m_failedInRow = 0;
    } else {
        ++m_failedInRow;
    }
    const int next = m_queue.nextIndex();
    const bool nothingPlays
        = !hasProgressed() && (m_failedInRow >= m_queue.count() || (next < 0 && !m_playedInRun));
    if (nothingPlays && code != KelvoError::NothingPlayable)
        reportError(KelvoError::NothingPlayable, m_queue.playlist() ? m_queue.playlist()->name() : QString());
    if (nothingPlays || !m_properties.value(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE).toBool())
        halt(false);
    else if (m_queue.setIndex(next))
        startItem();
    else
        halt(true);
}

void RemoteRenderer::halt(bool completed)
{
    leaveItem();
    m_pauseWanted = false;
    if (m_state != Stopped)
        m_transport->unload();
    setState(Stopped);
    if (completed)
        later([this] { Q_EMIT playbackCompleted(); });
}

/// The playlist is edited by somebody else's call, perhaps in several steps: what follows from it waits for
/// them.
void RemoteRenderer::followEdit()
{
    if (!std::exchange(m_editPending, true))
        later([this] { playlistEdited(); });
}

void RemoteRenderer::playlistEdited()
{
    m_editPending = false;
    if (m_state == Stopped || m_inPlay != InPlay::OfPlaylist)
        return;
    if (m_queue.index() < 0)
        halt(false);
    else if (m_item.uuid() != m_queue.current().uuid())
        startItem();
    else
        announceItem();
}

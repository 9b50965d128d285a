// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"
#include "KelvoGstRenderer.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "PlaylistFileReader.h"

#include <utility>

namespace {
/// Failures of something that GStreamer has no player for: it may be a list that was not announced as one.
bool mayBeList(KelvoError::Code code)
{
    return code == KelvoError::UnsupportedType || code == KelvoError::CodecMissing;
}
} // namespace

/// The user chose what to play.
void KelvoGstRenderer::startRun()
{
    m_pauseWanted = false;
    m_playedInRun = false;
    m_failedInRow = 0;
    m_idleInRow = 0;
    startItem();
}

void KelvoGstRenderer::startItem()
{
    m_item = m_singleInPlay ? m_single : m_queue.current();
    m_entries = {m_item.url()};
    m_isList = false;
    m_listTried = false;
    m_playedInItem = false;
    m_heldFailure = {};
    m_skippedEntries = 0;
    startEntry(0);
}

void KelvoGstRenderer::startEntry(int entry)
{
    leaveEntry();
    m_entry = entry;
    setState(Transitioning);
    announceEntry();
    const QUrl &uri = m_entries.at(m_entry);
    if (!uri.isValid() || uri.isRelative()) {
        later([this, epoch = m_epoch, text = uri.toDisplayString()] {
            if (epoch == m_epoch)
                entryFailed(KelvoError::InvalidUrl, text);
        });
    } else if (!m_isList && PlaylistFile::announced(uri, m_item.mimeType())) {
        readList(ListReading::Announced);
    } else {
        loadEntry();
    }
}

/// Everything that is still said about the entry so far belongs to the past.
void KelvoGstRenderer::leaveEntry()
{
    ++m_epoch;
    m_loaded = false;
    reportBuffering(100);
    if (std::exchange(m_reading, false))
        m_listThread.post([reader = m_listReader] { reader->cancel(); });
}

void KelvoGstRenderer::readList(ListReading reason)
{
    m_listTried = true;
    m_reading = true;
    if (reason == ListReading::Announced) {
        // What played before must not be heard while the list is on its way.
        tellPlayer([](ItemPlayer &player) { player.unload(); });
        reportScanning(0);
    }
    m_listThread.post([reader = m_listReader, epoch = m_epoch, uri = m_item.url(), type = m_item.mimeType()] {
        reader->read(epoch, uri, type);
    });
}

void KelvoGstRenderer::listRead(quint64 epoch, const PlaylistFile::Contents &contents)
{
    if (epoch != m_epoch || !m_reading)
        return;
    m_reading = false;
    const KelvoError held = std::exchange(m_heldFailure, {});
    if (contents.kind == PlaylistFile::Contents::List) {
        m_isList = true;
        m_entries = contents.entries;
        startEntry(0);
    } else if (held.code() != KelvoError::NoError) {
        entryFailed(held.code(), held.message());
    } else if (contents.kind == PlaylistFile::Contents::Unusable) {
        entryFailed(contents.code, contents.message);
    } else {
        reportScanning(1);
        loadEntry();
    }
}

void KelvoGstRenderer::loadEntry()
{
    m_loaded = true;
    double speed = m_properties.value(PropertyPlaybackSpeed).toDouble();
    if (speed < 0) {
        // Backwards from the beginning leads nowhere.
        speed = 1.0;
        setProperty(PropertyPlaybackSpeed, speed);
    }
    const ItemPlayer::Item item{m_epoch, m_entries.at(m_entry), m_pauseWanted, speed};
    tellPlayer([item](ItemPlayer &player) { player.load(item); });
}

void KelvoGstRenderer::announceEntry()
{
    if (!playlistInPlay())
        later([this] { Q_EMIT playlistChanged(nullptr); });
    m_facts.announce(content(), playlistInPlay());
    tellItem();
}

void KelvoGstRenderer::tellItem()
{
    KelvoPlaylist *playlist = playlistInPlay();
    if (playlist && playlist != m_announced)
        later([this, guarded = QPointer<KelvoPlaylist>(playlist)] { Q_EMIT playlistChanged(guarded); });
    m_announced = playlist;
    const int index = m_singleInPlay ? -1 : m_queue.index();
    later([this, index, content = content()] { Q_EMIT mediaChanged(index, content); });
}

KelvoPlaylist *KelvoGstRenderer::playlistInPlay() const
{
    return m_singleInPlay ? nullptr : m_queue.playlist();
}

KelvoContent KelvoGstRenderer::content() const
{
    return {m_item.uuid(), m_entries.at(m_entry), m_isList ? QString() : m_item.mimeType()};
}

void KelvoGstRenderer::playerReached(quint64 epoch, State state)
{
    if (epoch != m_epoch)
        return;
    if (state == Playing || state == Paused) {
        m_playedInItem = true;
        reportScanning(1);
        reportSkippedEntries();
    }
    setState(state);
}

void KelvoGstRenderer::playerFailed(
    quint64 epoch, KelvoError::Code code, const QString &message, bool progressed)
{
    if (epoch != m_epoch)
        return;
    m_playedInRun = m_playedInRun || progressed;
    m_failedInRow = progressed ? -1 : m_failedInRow;
    entryFailed(code, message);
}

void KelvoGstRenderer::entryEnded(bool progressed)
{
    m_playedInRun = true;
    m_failedInRow = 0;
    m_idleInRow = progressed ? 0 : m_idleInRow + 1;
    if (m_entry + 1 < m_entries.count())
        startEntry(m_entry + 1);
    else
        itemEnded();
}

void KelvoGstRenderer::itemEnded()
{
    const bool advances = m_properties.value(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE).toBool();
    if (m_singleInPlay || !advances) {
        halt(m_singleInPlay || m_queue.index() == m_queue.count() - 1);
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

void KelvoGstRenderer::entryFailed(KelvoError::Code code, const QString &message)
{
    if (!m_isList && !m_listTried && mayBeList(code)) {
        m_heldFailure = KelvoError(code, message);
        readList(ListReading::AfterFailure);
        return;
    }
    if (!m_isList) {
        itemFailed(code, message);
        return;
    }
    // Until the first entry plays, the list is searched for one, and what does not play is told in one piece.
    qCWarning(lcKelvo) << "Entry" << m_entry << "of" << m_item.url() << "does not play:" << message;
    if (m_playedInItem)
        reportError(code, message);
    else
        skipEntry(KelvoError(code, message));
    if (m_entry + 1 < m_entries.count())
        startEntry(m_entry + 1);
    else if (m_playedInItem)
        itemEnded();
    else
        itemFailed(KelvoError::NothingPlayable,
            QStringLiteral("%1: %2").arg(m_item.url().toDisplayString(), message));
}

void KelvoGstRenderer::skipEntry(const KelvoError &failure)
{
    if (m_skippedEntries++ == 0)
        m_firstFailure = failure;
    reportScanning(float(m_entry + 1) / float(m_entries.count()));
}

void KelvoGstRenderer::reportSkippedEntries()
{
    const int skipped = std::exchange(m_skippedEntries, 0);
    if (skipped == 0)
        return;
    const auto text = QStringLiteral("%1 of %2 entries of %3 do not play: %4");
    reportError(m_firstFailure.code(),
        text.arg(QString::number(skipped), QString::number(m_entries.count()), m_item.url().toDisplayString(),
            m_firstFailure.message()));
}

void KelvoGstRenderer::itemFailed(KelvoError::Code code, const QString &message)
{
    reportScanning(1);
    reportError(code, message);
    if (m_singleInPlay) {
        halt(false);
        return;
    }
    ++m_failedInRow;
    const int next = m_queue.nextIndex();
    const bool nothingPlays = m_failedInRow >= m_queue.count() || (next < 0 && !m_playedInRun);
    if (nothingPlays && code != KelvoError::NothingPlayable)
        reportError(KelvoError::NothingPlayable, m_queue.playlist() ? m_queue.playlist()->name() : QString());
    if (nothingPlays || !m_properties.value(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE).toBool())
        halt(false);
    else if (m_queue.setIndex(next))
        startItem();
    else
        halt(true);
}

void KelvoGstRenderer::halt(bool completed)
{
    leaveEntry();
    reportScanning(1);
    m_pauseWanted = false;
    tellPlayer([](ItemPlayer &player) { player.unload(); });
    setState(Stopped);
    if (completed)
        later([this] { Q_EMIT playbackCompleted(); });
}

/// The playlist is edited by somebody else's call, perhaps in several steps: what follows from it waits for
/// them.
void KelvoGstRenderer::followEdit()
{
    if (!std::exchange(m_editPending, true))
        later([this] { playlistEdited(); });
}

void KelvoGstRenderer::playlistEdited()
{
    m_editPending = false;
    if (m_state == Stopped || m_singleInPlay)
        return;
    if (m_queue.index() < 0)
        halt(false);
    else if (m_item.uuid() != m_queue.current().uuid())
        startItem();
    else
        announceEntry();
}

// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "SimulatedClock.h"
#include "SimulatedRenderer.h"
#include "SimulatorProperties.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {
// Milliseconds that opening an item takes: long enough for testers to see the state pass by in a log.
constexpr int LoadingTime = 20;
constexpr int BufferSteps = 10;
} // namespace

/// The user chose what to play.
void SimulatedRenderer::startRun()
{
    m_pauseWanted = false;
    m_playedInRun = false;
    m_failedInRow = 0;
    startItem();
}

void SimulatedRenderer::startItem()
{
    m_entries = SimulatedMedium::entriesOf(
        m_uriInPlay ? m_uri : m_queue.current(), number(SimulatorProperties::Duration));
    for (SimulatedMedium &entry : m_entries)
        entry.seekable = entry.seekable && flag(SimulatorProperties::Seekable);
    m_playedInItem = false;
    startEntry(0);
}

void SimulatedRenderer::startEntry(int entry)
{
    m_entry = entry;
    m_clock->cancel(m_wake);
    endBuffering();
    m_loaded = false;
    m_seekWhenLoaded.reset();
    m_position.reset(m_clock->now());
    setState(Transitioning);
    announceItem();
    if (m_entries.count() > 1 && m_entry == 0)
        reportScanning(0);
    m_wake = later(LoadingTime, [this] { loaded(); });
}

void SimulatedRenderer::loaded()
{
    KelvoError::Code failure = m_entries.at(m_entry).failure;
    if (m_itemsToFail > 0) {
        --m_itemsToFail;
        failure = KelvoError::Code(number(SimulatorProperties::Failure));
    }
    if (failure != KelvoError::NoError) {
        failEntry(failure, m_entries.at(m_entry).info.url().toDisplayString());
        return;
    }
    m_loaded = true;
    reportScanning(1);
    m_playedInItem = true;
    m_playedInRun = true;
    m_failedInRow = 0;
    announceMetadata();
    if (number(SimulatorProperties::Buffering) > 0)
        startBuffering();
    else
        begin();
}

void SimulatedRenderer::startBuffering()
{
    m_clock->cancel(m_wake);
    if (m_state == Playing)
        setState(Transitioning);
    m_bufferStep = 0;
    updateRunning();
    fillBuffer();
}

void SimulatedRenderer::fillBuffer()
{
    report([this, fraction = float(m_bufferStep) / BufferSteps] { Q_EMIT bufferingInfo(fraction); });
    if (m_bufferStep++ < BufferSteps) {
        m_wake = later(number(SimulatorProperties::Buffering) / BufferSteps, [this] { fillBuffer(); });
        return;
    }
    m_bufferStep = -1;
    begin();
}

/// The item is left while its buffer fills.
void SimulatedRenderer::endBuffering()
{
    if (m_bufferStep >= 0)
        report([this] { Q_EMIT bufferingInfo(1); });
    m_bufferStep = -1;
}

/// All is there for the item to play.
void SimulatedRenderer::begin()
{
    setState(m_pauseWanted ? Paused : Playing);
    updateRunning();
    if (m_seekWhenLoaded)
        doSetPosition(*std::exchange(m_seekWhenLoaded, std::nullopt), SeekAbsolute);
}

void SimulatedRenderer::updateRunning()
{
    atPausePoint();
    m_position.setRunning(m_state == Playing && !flag(SimulatorProperties::Stall), m_clock->now());
    rearm();
}

/// Pauses when the position is at or past the point of pauseAt(). A point that is passed while already paused
/// has done its duty too.
bool SimulatedRenderer::atPausePoint()
{
    const bool there = m_loaded && (m_state == Playing || m_state == Paused) && m_pauseAt
        && position() >= 1000.0 * *m_pauseAt;
    if (!there)
        return false;
    m_pauseAt.reset();
    m_pauseWanted = true;
    setState(Paused);
    m_position.setRunning(false, m_clock->now());
    return true;
}

/// Wakes at whatever comes first: the pause point, the end of the item, its beginning when playing backwards.
void SimulatedRenderer::rearm()
{
    if (m_bufferStep >= 0 || !m_loaded)
        return;
    m_clock->cancel(m_wake);
    qint64 wait = std::numeric_limits<qint64>::max();
    const auto consider = [&](double point) {
        wait = std::min(wait, m_position.timeUntil(point, m_clock->now()).value_or(wait));
    };
    if (m_pauseAt && m_position.speed() > 0)
        consider(1000.0 * *m_pauseAt);
    consider(m_position.speed() > 0 ? duration() : 0);
    if (m_position.isRunning() && wait < std::numeric_limits<int>::max())
        m_wake = later(wait, [this] { checkPosition(); });
}

void SimulatedRenderer::checkPosition()
{
    if (m_editPending || atPausePoint())
        return;
    if (m_position.speed() > 0 && position() >= duration())
        endEntry();
    else if (m_position.speed() < 0 && position() <= 0)
        backAtStart();
    else
        rearm();
}

/// Fast rewind has come to the beginning: it plays on from there at normal speed.
void SimulatedRenderer::backAtStart()
{
    m_position.reset(m_clock->now());
    m_position.setSpeed(1, m_clock->now());
    changed(PropertyPlaybackSpeed, 1.0);
    updateRunning();
}

void SimulatedRenderer::endEntry()
{
    if (m_entry + 1 < m_entries.count()) {
        startEntry(m_entry + 1);
        return;
    }
    if (m_uriInPlay || !flag(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE)) {
        halt(m_uriInPlay || m_queue.index() == m_queue.count() - 1);
        return;
    }
    const int following = m_queue.followingIndex();
    if (following < 0) {
        halt(true);
        return;
    }
    m_queue.setIndex(following);
    startItem();
}

/// Until the first entry of a list plays, the list is searched for one: what does not play is no news of its own.
void SimulatedRenderer::failEntry(KelvoError::Code code, const QString &message)
{
    const bool last = m_entry + 1 == m_entries.count();
    if (m_entries.count() == 1 || m_playedInItem)
        reportError(code, message);
    else
        reportScanning(float(m_entry + 1) / float(m_entries.count()));
    if (!last) {
        startEntry(m_entry + 1);
    } else if (m_entries.count() > 1 && m_playedInItem) {
        endEntry();
    } else {
        if (m_entries.count() > 1)
            reportError(KelvoError::NothingPlayable, message);
        goOnAfterFailure();
    }
}

void SimulatedRenderer::goOnAfterFailure()
{
    if (m_uriInPlay) {
        halt();
        return;
    }
    ++m_failedInRow;
    const int next = m_queue.nextIndex();
    const bool nothingPlays = m_failedInRow >= m_queue.count() || (next < 0 && !m_playedInRun);
    if (nothingPlays && m_entries.count() == 1)
        reportError(KelvoError::NothingPlayable);
    if (nothingPlays || !flag(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE)) {
        halt();
    } else if (next < 0) {
        halt(true);
    } else {
        m_queue.setIndex(next);
        startItem();
    }
}

void SimulatedRenderer::halt(bool completed)
{
    m_clock->cancel(m_wake);
    endBuffering();
    reportScanning(1);
    m_loaded = false;
    m_pauseWanted = false;
    m_seekWhenLoaded.reset();
    m_position.reset(m_clock->now());
    setState(Stopped);
    if (completed)
        report([this] { Q_EMIT playbackCompleted(); });
}

void SimulatedRenderer::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    tellState(state);
}

void SimulatedRenderer::tellState(State state)
{
    report([this, state] { Q_EMIT stateChanged(state); });
}

/// For whoever has chosen this renderer only now.
void SimulatedRenderer::tellAgain()
{
    report([this] { Q_EMIT playlistChanged(nullptr); });
    m_announcedPlaylist = nullptr;
    if (m_state == Stopped)
        m_facts.clear();
    else
        tellItem();
    if (m_state == Paused)
        tellState(Playing);
    tellState(m_state);
    for (const KelvoItemFacts::Fact &fact : m_facts.told())
        tellFact(fact);
    changed(
        KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, m_properties.value(KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE));
}

/// The playlist is edited by somebody else's call: what follows from it is done from the event loop.
void SimulatedRenderer::followEdit()
{
    if (!std::exchange(m_editPending, true))
        later(0, [this] { playlistEdited(); });
}

void SimulatedRenderer::playlistEdited()
{
    m_editPending = false;
    if (m_state == Stopped)
        return;
    if (m_uriInPlay) {
        rearm();
    } else if (m_queue.index() < 0) {
        halt();
    } else if (m_entries.at(m_entry).info.uuid() != m_queue.current().uuid()) {
        startItem();
    } else {
        report([this, index = m_queue.index(), what = content()] { Q_EMIT mediaChanged(index, what); });
        rearm();
    }
}

void SimulatedRenderer::announceItem()
{
    if (!playlistInPlay())
        report([this] { Q_EMIT playlistChanged(nullptr); });
    m_facts.announce(content(), playlistInPlay());
    tellItem();
}

void SimulatedRenderer::tellItem()
{
    KelvoPlaylist *playlist = playlistInPlay();
    if (playlist && playlist != m_announcedPlaylist)
        report([this, guarded = QPointer<KelvoPlaylist>(playlist)] { Q_EMIT playlistChanged(guarded); });
    m_announcedPlaylist = playlist;
    const int index = m_uriInPlay ? -1 : m_queue.index();
    report([this, index, what = content()] { Q_EMIT mediaChanged(index, what); });
}

KelvoPlaylist *SimulatedRenderer::playlistInPlay() const
{
    return m_uriInPlay ? nullptr : m_queue.playlist();
}

void SimulatedRenderer::announceMetadata()
{
    const KelvoMediaInfo &info = m_entries.at(m_entry).info;
    takeFact(QStringLiteral("title"), {info.title()});
    if (!info.artist().isEmpty())
        takeFact(QStringLiteral("artist"), {info.artist()});
    if (!info.album().isEmpty())
        takeFact(QStringLiteral("album"), {info.album()});
    if (info.duration() > 0)
        takeFact(QStringLiteral("duration"), {info.duration()});
}

void SimulatedRenderer::takeFact(const QString &key, const QList<QVariant> &values)
{
    if (m_facts.take(key, values))
        tellFact({key, values});
}

void SimulatedRenderer::tellFact(const KelvoItemFacts::Fact &fact)
{
    report([this, fact] { Q_EMIT metadataChanged(fact.key, fact.values); });
}

/// Milliseconds, never outside of the item.
double SimulatedRenderer::position() const
{
    return m_state == Stopped ? 0 : std::clamp(m_position.at(m_clock->now()), 0.0, duration());
}

/// Milliseconds; more than anything when not known.
double SimulatedRenderer::duration() const
{
    const int seconds = m_entries.isEmpty() ? -1 : m_entries.at(m_entry).info.duration();
    return seconds > 0 ? 1000.0 * seconds : std::numeric_limits<double>::max();
}

KelvoContent SimulatedRenderer::content() const
{
    const KelvoMediaInfo &info = m_entries.at(m_entry).info;
    return {info.uuid(), info.url(), info.mimeType()};
}

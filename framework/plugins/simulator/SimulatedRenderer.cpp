// SPDX-License-Identifier: MIT
#include "SimulatedRenderer.h"

#include "KelvoAnswer.h"
#include "KelvoPlaylist.h"
#include "SimulatedClock.h"
#include "SimulatorProperties.h"

#include <algorithm>
#include <utility>

SimulatedRenderer::SimulatedRenderer(
    SimulatedClock *clock, const QString &uuid, const QString &name, QObject *parent)
    : KelvoRenderer(parent)
    , m_clock(clock)
    , m_uuid(uuid)
    , m_name(name)
    , m_properties{
          {KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, true},
          {KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, false},
          {PropertyXid, 0U},
          {PropertyAutopaint, true},
          {PropertyRenderRectangle, QString()},
          {PropertyColorKey, 0U},
          {PropertyCurrentFrameOnPause, false},
          {PropertyPlaybackSpeed, 1.0},
          {PropertyVolume, 70U},
          {SimulatorProperties::Latency, 0},
          {SimulatorProperties::Failure, 0},
          {SimulatorProperties::Error, 0},
          {SimulatorProperties::Buffering, 0},
          {SimulatorProperties::Stall, false},
          {SimulatorProperties::Vanish, -1},
          {SimulatorProperties::Name, name},
          {SimulatorProperties::Duration, 30},
          {SimulatorProperties::Seekable, true},
          {SimulatorProperties::Metadata, QString()},
          {SimulatorProperties::Advance, 0},
      }
{
    connect(&m_queue, &KelvoPlayQueue::indexMoved, this, &SimulatedRenderer::followEdit);
    connect(&m_queue, &KelvoPlayQueue::currentRemoved, this, &SimulatedRenderer::followEdit);
}

quint64 SimulatedRenderer::later(qint64 milliseconds, Task task)
{
    return m_clock->after(milliseconds, this, [this, task = std::move(task)] {
        task();
        flush();
    });
}

/// Commands keep their order also when the latency becomes shorter between two of them.
void SimulatedRenderer::command(Task task)
{
    const qint64 now = m_clock->now();
    m_lastCommandDue = std::max(m_lastCommandDue, now + number(SimulatorProperties::Latency));
    later(m_lastCommandDue - now, std::move(task));
}

void SimulatedRenderer::report(Task emission)
{
    m_reports.push_back(std::move(emission));
}

void SimulatedRenderer::reportError(KelvoError::Code code, const QString &message)
{
    report([this, problem = KelvoError(code, message)] { Q_EMIT error(problem); });
}

void SimulatedRenderer::reportScanning(float fraction)
{
    if (std::exchange(m_scanned, fraction) != fraction)
        report([this, fraction] { Q_EMIT scanningInfo(fraction); });
}

void SimulatedRenderer::flush()
{
    const QPointer<SimulatedRenderer> self(this);
    while (self && !m_reports.empty()) {
        const Task emission = std::move(m_reports.front());
        m_reports.pop_front();
        emission();
    }
}

void SimulatedRenderer::play()
{
    command([this] { doPlay(); });
}

void SimulatedRenderer::playUri(const QUrl &uri)
{
    playUriWithType(uri, {});
}

void SimulatedRenderer::playUriWithType(const QUrl &uri, const QString &contentType)
{
    command([this, uri, contentType] {
        m_uri = KelvoMediaInfo({}, uri);
        m_uri.setMimeType(contentType);
        m_uriInPlay = true;
        startRun();
    });
}

void SimulatedRenderer::stop()
{
    command([this] {
        m_pauseAt.reset();
        halt();
    });
}

void SimulatedRenderer::pause()
{
    command([this] {
        if (m_state != Playing && m_state != Transitioning)
            return;
        m_pauseWanted = true;
        setState(Paused);
        updateRunning();
    });
}

void SimulatedRenderer::resume()
{
    command([this] {
        if (m_state != Paused)
            return;
        m_pauseWanted = false;
        setState(m_loaded && m_bufferStep < 0 ? Playing : Transitioning);
        updateRunning();
    });
}

void SimulatedRenderer::next()
{
    command([this] { doNext(); });
}

void SimulatedRenderer::previous()
{
    command([this] { doPrevious(); });
}

void SimulatedRenderer::pauseAt(uint seconds)
{
    command([this, seconds] {
        m_pauseAt = seconds;
        updateRunning();
    });
}

void SimulatedRenderer::gotoIndex(uint index)
{
    command([this, index] { doGotoIndex(index); });
}

void SimulatedRenderer::setPosition(int seconds, int mode)
{
    command([this, seconds, mode] { doSetPosition(seconds, mode); });
}

void SimulatedRenderer::assignPlaylist(KelvoPlaylist *playlist)
{
    // The playlist may be deleted before the command takes effect; then none is assigned.
    command([this, guarded = QPointer<KelvoPlaylist>(playlist)] { doAssign(guarded); });
}

void SimulatedRenderer::getStatus(QObject *receiver, const char *slot)
{
    command([this, answer = KelvoAnswer(receiver, slot)] {
        const KelvoPlaylist *playlist = m_uriInPlay ? nullptr : m_queue.playlist();
        const QString id = playlist ? playlist->uuid() : QString();
        const uint index = playlist ? uint(std::max(0, m_queue.index())) : 0;
        const QString object = playlist ? m_queue.current().uuid() : QString();
        answer.deliver({id, index, int(m_state), object});
    });
}

void SimulatedRenderer::getPosition(QObject *receiver, const char *slot)
{
    command([this, answer = KelvoAnswer(receiver, slot)] { answer.deliver({uint(position() / 1000)}); });
}

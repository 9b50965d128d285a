// SPDX-License-Identifier: MIT
#include "RemoteRenderer.h"

#include "KelvoPlaylist.h"

#include <algorithm>

RemoteRenderer::RemoteRenderer(
    std::unique_ptr<RemoteTransport> transport, QString uuid, QString name, QObject *parent)
    : KelvoRenderer(parent)
    , m_transport(std::move(transport))
    , m_uuid(std::move(uuid))
    , m_name(std::move(name))
    , m_properties{
          {KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, true},
          {PropertyPlaybackSpeed, 1.0},
      }
{
    qRegisterMetaType<KelvoRenderer::State>();
    connect(&m_queue, &KelvoPlayQueue::indexMoved, this, &RemoteRenderer::followEdit);
    connect(&m_queue, &KelvoPlayQueue::currentRemoved, this, &RemoteRenderer::followEdit);
    for (QTimer *timer : {&m_pollTimer, &m_pauseTimer, &m_answerTimer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_pollTimer, &QTimer::timeout, this, &RemoteRenderer::askPosition);
    connect(&m_pauseTimer, &QTimer::timeout, this, &RemoteRenderer::checkPausePoint);
    connect(&m_answerTimer, &QTimer::timeout, this, &RemoteRenderer::answerWaiting);
    connectTransport();
}

RemoteRenderer::~RemoteRenderer() = default;

void RemoteRenderer::connectTransport()
{
    RemoteTransport *const transport = m_transport.get();
    connect(transport, &RemoteTransport::stateReported, this, &RemoteRenderer::transportReached);
    connect(transport, &RemoteTransport::ended, this, [this](quint64 epoch) {
        if (epoch == m_epoch && m_state != Stopped)
            itemEnded();
    });
    connect(transport, &RemoteTransport::failed, this,
        [this](quint64 epoch, KelvoError::Code code, const QString &message) {
            if (epoch == m_epoch && m_state != Stopped)
                itemFailed(code, message);
        });
    connect(transport, &RemoteTransport::troubled, this, &RemoteRenderer::transportTroubled);
    connect(transport, &RemoteTransport::positionReported, this, &RemoteRenderer::positionReported);
    connect(transport, &RemoteTransport::durationReported, this, &RemoteRenderer::durationReported);
    connect(transport, &RemoteTransport::fact, this,
        [this](quint64 epoch, const QString &key, const QList<QVariant> &values) {
            if (epoch == m_epoch && !values.isEmpty())
                takeFact(key, values);
        });
    connect(transport, &RemoteTransport::replaced, this, &RemoteRenderer::takeReplacement);
    connect(transport, &RemoteTransport::volumeReported, this, &RemoteRenderer::volumeReported);
    connect(transport, &RemoteTransport::rateReported, this, &RemoteRenderer::rateReported);
    connect(transport, &RemoteTransport::nameReported, this, [this](const QString &name) {
        if (name == m_name)
            return;
        m_name = name;
        later([this, name] { Q_EMIT nameChanged(name); });
    });
}

void RemoteRenderer::later(std::function<void()> call)
{
    QMetaObject::invokeMethod(this, std::move(call), Qt::QueuedConnection);
}

void RemoteRenderer::setState(State state)
{
    if (state == m_state)
        return;
    // A player that somebody else starts may skip this.
    if (m_state == Stopped && state != Transitioning)
        setState(Transitioning);
    m_state = state;
    tellState(state);
}

void RemoteRenderer::tellState(State state)
{
    later([this, state] { Q_EMIT stateChanged(state); });
}

void RemoteRenderer::takeFact(const QString &key, const QList<QVariant> &values)
{
    if (m_facts.take(key, values))
        tellFact({key, values});
}

void RemoteRenderer::tellFact(const KelvoItemFacts::Fact &fact)
{
    later([this, fact] { Q_EMIT metadataChanged(fact.key, fact.values); });
}

/// For whoever has chosen this renderer only now: nobody knows what goes on in a player that somebody else started.
void RemoteRenderer::tellAgain()
{
    later([this] { Q_EMIT playlistChanged(nullptr); });
    m_announced = nullptr;
    if (m_state == Stopped)
        m_facts.clear();
    else
        tellItem();
    if (m_state == Paused)
        tellState(Playing);
    tellState(m_state);
    for (const KelvoItemFacts::Fact &fact : m_facts.told())
        tellFact(fact);
    // None that is known of; but one of the renderer that was chosen before may still show.
    later([this] { Q_EMIT kelvoPropertyChanged(KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, false); });
}

void RemoteRenderer::reportError(KelvoError::Code code, const QString &message)
{
    later([this, problem = KelvoError(code, message)] { Q_EMIT error(problem); });
}

void RemoteRenderer::transportTroubled(KelvoError::Code code, const QString &message)
{
    reportError(code, message);
    m_volumeAwaited.reset();
    m_rateAwaited.reset();
    m_lastSeek.invalidate();
    if (m_pauseSent && m_loaded && m_state == Transitioning) {
        // It plays and would not pause.
        m_pauseWanted = m_pauseSent = false;
        reachedPlaying();
    }
}

void RemoteRenderer::getStatus(QObject *receiver, const char *slot)
{
    const KelvoPlaylist *playlist = m_inPlay == InPlay::OfPlaylist ? m_queue.playlist() : nullptr;
    const QString id = playlist ? playlist->uuid() : QString();
    const uint index = playlist ? uint(std::max(0, m_queue.index())) : 0;
    const QString object = playlist ? m_queue.current().uuid() : QString();
    // By way of this object's own event queue, so that it comes after the reports made before.
    later([answer = KelvoAnswer(receiver, slot), id, index, state = int(m_state), object] {
        answer.deliver({id, index, state, object});
    });
}

void RemoteRenderer::getPosition(QObject *receiver, const char *slot)
{
    answerPosition(
        [answer = KelvoAnswer(receiver, slot)](double position) { answer.deliver({uint(position)}); });
}

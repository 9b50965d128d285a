// SPDX-License-Identifier: MIT
#include "KelvoGstRenderer.h"

#include "EngineSettings.h"
#include "ItemPlayer.h"
#include "KelvoAnswer.h"
#include "KelvoPlaylist.h"
#include "PlaylistFileReader.h"
#include "RendererValues.h"

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {
constexpr auto endWhileStarting = 200ms;
constexpr auto endOnceStarted = 5s;
} // namespace

KelvoGstRenderer::KelvoGstRenderer(const EngineSettings &settings, QObject *parent)
    : KelvoRenderer(parent)
    , m_engine(std::make_unique<ItemPlayer>(settings), QStringLiteral("gst-engine"))
    , m_player(m_engine.worker<ItemPlayer>())
    , m_listThread(
          std::make_unique<PlaylistFileReader>(settings.networkTimeout), QStringLiteral("playlist-reader"))
    , m_listReader(m_listThread.worker<PlaylistFileReader>())
    , m_properties{
          {KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, true},
          {KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, false},
          {PropertyXid, 0U},
          {PropertyAutopaint, true},
          {PropertyRenderRectangle, QString()},
          {PropertyColorKey, 0U},
          {PropertyCurrentFrameOnPause, false},
          {PropertyPlaybackSpeed, 1.0},
          {PropertyVolume, uint(RendererValues::maximumVolume)},
      }
{
    qRegisterMetaType<KelvoRenderer::State>();
    qRegisterMetaType<KelvoError::Code>();
    qRegisterMetaType<PlaylistFile::Contents>();
    qRegisterMetaType<VideoFrame>();
    connect(&m_queue, &KelvoPlayQueue::indexMoved, this, &KelvoGstRenderer::followEdit);
    connect(&m_queue, &KelvoPlayQueue::currentRemoved, this, &KelvoGstRenderer::followEdit);
    connect(m_listReader, &PlaylistFileReader::finished, this, &KelvoGstRenderer::listRead);
    connectPlayer();
}

KelvoGstRenderer::~KelvoGstRenderer() = default;

/// What the player says about an entry that is no longer in play is dropped here.
void KelvoGstRenderer::connectPlayer()
{
    connect(m_player, &ItemPlayer::initialised, this, &KelvoGstRenderer::engineStarted);
    connect(m_player, &ItemPlayer::stateReached, this, &KelvoGstRenderer::playerReached);
    connect(m_player, &ItemPlayer::pausedAtPosition, this, [this](quint64 epoch) {
        if (epoch == m_epoch)
            m_pauseWanted = true;
    });
    connect(m_player, &ItemPlayer::ended, this, [this](quint64 epoch, bool progressed) {
        if (epoch == m_epoch)
            entryEnded(progressed);
    });
    connect(m_player, &ItemPlayer::failed, this, &KelvoGstRenderer::playerFailed);
    connect(m_player, &ItemPlayer::troubled, this,
        [this](quint64 epoch, KelvoError::Code code, const QString &message) {
            if (epoch == m_epoch)
                reportError(code, message);
        });
    connect(m_player, &ItemPlayer::fact, this,
        [this](quint64 epoch, const QString &key, const QList<QVariant> &values) {
            if (epoch != m_epoch)
                return;
            // Facts come from media that opens, so the search is over; told first, because the duration takes
            // the place of the search's text on the screen.
            reportScanning(1);
            takeFact(key, values);
        });
    connect(m_player, &ItemPlayer::buffering, this, [this](quint64 epoch, int percent) {
        if (epoch == m_epoch)
            reportBuffering(percent);
    });
    connect(m_player, &ItemPlayer::speedChanged, this, [this](quint64 epoch, double speed) {
        if (epoch == m_epoch)
            setProperty(PropertyPlaybackSpeed, speed);
    });
    connect(m_player, &ItemPlayer::volumeChanged, this,
        [this](int volume) { setProperty(PropertyVolume, uint(volume)); });
    connect(m_player, &ItemPlayer::policyOverridden, this,
        [this](bool overridden) { setProperty(KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, overridden); });
    connect(m_player, &ItemPlayer::colorKeyChanged, this,
        [this](uint color) { setProperty(PropertyColorKey, color); });
    connect(m_player, &ItemPlayer::frameTaken, this, &KelvoGstRenderer::saveFrame);
}

void KelvoGstRenderer::startEngine()
{
    // The first start ever looks through all of GStreamer's plug-ins, which takes seconds, cannot be interrupted and
    // leaves nothing half done.
    m_engine.setLongestEnd(endWhileStarting);
    connect(m_player, &ItemPlayer::initialised, this, [this] { m_engine.setLongestEnd(endOnceStarted); });
    tellPlayer([](ItemPlayer &player) { player.initialise(); });
}

QString KelvoGstRenderer::uuid() const
{
    return QStringLiteral("kelvo-gst-renderer");
}

QString KelvoGstRenderer::name() const
{
    return QStringLiteral("KelvoGstRenderer");
}

void KelvoGstRenderer::later(std::function<void()> call)
{
    QMetaObject::invokeMethod(this, std::move(call), Qt::QueuedConnection);
}

void KelvoGstRenderer::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    tellState(state);
}

void KelvoGstRenderer::tellState(State state)
{
    later([this, state] { Q_EMIT stateChanged(state); });
}

void KelvoGstRenderer::takeFact(const QString &key, const QList<QVariant> &values)
{
    if (m_facts.take(key, values))
        tellFact({key, values});
}

void KelvoGstRenderer::tellFact(const KelvoItemFacts::Fact &fact)
{
    later([this, fact] { Q_EMIT metadataChanged(fact.key, fact.values); });
}

/// For whoever has chosen this renderer only now.
void KelvoGstRenderer::tellAgain()
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
    setProperty(
        KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, m_properties.value(KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE));
}

void KelvoGstRenderer::reportError(KelvoError::Code code, const QString &message)
{
    later([this, problem = KelvoError(code, message)] { Q_EMIT error(problem); });
}

void KelvoGstRenderer::reportBuffering(int percent)
{
    if (percent == m_bufferPercent)
        return;
    m_bufferPercent = percent;
    later([this, percent] { Q_EMIT bufferingInfo(float(percent) / 100); });
}

void KelvoGstRenderer::reportScanning(float fraction)
{
    if (fraction == m_scanned)
        return;
    m_scanned = fraction;
    later([this, fraction] { Q_EMIT scanningInfo(fraction); });
}

void KelvoGstRenderer::getStatus(QObject *receiver, const char *slot)
{
    const KelvoPlaylist *playlist = m_singleInPlay ? nullptr : m_queue.playlist();
    const QString id = playlist ? playlist->uuid() : QString();
    const uint index = playlist ? uint(std::max(0, m_queue.index())) : 0;
    const QString object = playlist ? m_queue.current().uuid() : QString();
    // By way of this object's own event queue, so that it comes after the reports made before.
    later([answer = KelvoAnswer(receiver, slot), id, index, state = int(m_state), object] {
        answer.deliver({id, index, state, object});
    });
}

void KelvoGstRenderer::getPosition(QObject *receiver, const char *slot)
{
    const KelvoAnswer answer(receiver, slot);
    if (m_state == Stopped || !m_loaded)
        later([answer] { answer.deliver({0U}); });
    else
        tellPlayer([answer](ItemPlayer &player) { player.answerPosition(answer); });
}

// SPDX-License-Identifier: MIT
#include "RemotePlayer.h"

#include "KelvoMessageHandler.h"
#include "RemoteUrl.h"
#include "RendererProperties.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
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

RemotePlayer::RemotePlayer(std::unique_ptr<RemoteTransport> transport, const QString &name)
    : m_transport(std::move(transport))
    , m_name(name)
    , m_progress(*m_transport, [this] { return pauseHere(); })
{
    connectTransport();
}

RemotePlayer::~RemotePlayer() = default;

void RemotePlayer::connectTransport()
{
    RemoteTransport *const transport = m_transport.get();
    connect(transport, &RemoteTransport::stateReported, this, &RemotePlayer::followState);
    connect(transport, &RemoteTransport::ended, this, [this](quint64 epoch) {
        if (epoch == m_epoch && m_state != Stopped)
            followEnd();
    });
    connect(
        transport, &RemoteTransport::stopped, this, [this](quint64 epoch, const RemoteTransport::Stop &stop) {
            if (epoch != m_epoch || m_state == Stopped)
                return;
            if (stop.isEnd())
                followEnd();
            else
                stoppedElsewhere();
        });
    connect(transport, &RemoteTransport::failed, this,
        [this](quint64 epoch, KelvoError::Code code, const QString &message) {
            if (epoch == m_epoch && m_state != Stopped)
                Q_EMIT failed(epoch, code, message, m_progress.life().hasProgressed());
        });
    connect(transport, &RemoteTransport::troubled, this, &RemotePlayer::followTrouble);
    connect(transport, &RemoteTransport::positionReported, this, [this](quint64 epoch, double seconds) {
        if (epoch == m_epoch)
            m_progress.takePosition(seconds);
    });
    connect(transport, &RemoteTransport::seeked, this, [this](quint64 epoch, double seconds, int settling) {
        if (epoch == m_epoch)
            m_progress.takeSeek(seconds, settling);
    });
    connect(transport, &RemoteTransport::begun, this, [this](quint64 epoch, double seconds) {
        if (epoch == m_epoch)
            m_progress.takeBeginning(seconds);
    });
    connect(transport, &RemoteTransport::durationReported, this, [this](quint64 epoch, double seconds) {
        if (epoch == m_epoch && m_progress.takeDuration(seconds) && seconds >= 0)
            Q_EMIT fact(epoch, QStringLiteral("duration"), {int(std::lround(seconds))});
    });
    connect(transport, &RemoteTransport::fact, this,
        [this](quint64 epoch, const QString &key, const QList<QVariant> &values) {
            if (epoch == m_epoch && !values.isEmpty())
                m_progress.life().noteFact(key, values.constFirst());
            Q_EMIT fact(epoch, key, values);
        });
    connect(transport, &RemoteTransport::replaced, this, &RemotePlayer::followReplacement);
    connect(transport, &RemoteTransport::volumeReported, this, [this](int volume) {
        if (m_volume.take(uint(volume)))
            Q_EMIT propertyReported(KelvoRenderer::PropertyVolume, uint(volume));
    });
    connect(transport, &RemoteTransport::rateReported, this, &RemotePlayer::followRate);
    connect(transport, &RemoteTransport::nameReported, this, [this](const QString &name) {
        if (std::exchange(m_name, name) != name)
            Q_EMIT nameReported(name);
    });
}

/// What the player has not told is not known, and what it has no use for it does not have.
void RemotePlayer::describe(RendererProperties &properties) const
{
    for (const auto &name : {KelvoRenderer::PropertyVolume, KelvoRenderer::PropertyXid,
             KelvoRenderer::PropertyAutopaint, KelvoRenderer::PropertyRenderRectangle,
             KelvoRenderer::PropertyColorKey, KelvoRenderer::PropertyCurrentFrameOnPause,
             KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE})
        properties.setInitial(name, {});
}

QString RemotePlayer::refusal(const QString &name, const QVariant &value) const
{
    const RemoteTransport::Abilities can = m_transport->abilities();
    const double speed = value.toDouble();
    if (name == KelvoRenderer::PropertyVolume && !can.volume)
        return QStringLiteral("%1 has no volume to set").arg(m_name);
    if (name == KelvoRenderer::PropertyPlaybackSpeed
        && (speed < can.slowestRate || speed > can.fastestRate)) {
        return QStringLiteral("playback-speed %1: %2 plays at %3 to %4")
            .arg(speed)
            .arg(m_name)
            .arg(can.slowestRate)
            .arg(can.fastestRate);
    }
    if (name == KelvoRenderer::PropertyCurrentFrameOnPause)
        return QStringLiteral("%1: %2 shows video in a window of its own").arg(name, m_name);
    return {};
}

/// Everything that is still said about the item so far belongs to the past.
void RemotePlayer::leave(bool isAlive)
{
    m_toldState.reset();
    m_loaded = false;
    m_pauseWanted = false;
    m_pauseSent = false;
    m_loadedPaused = false;
    m_seekWhenLoaded.reset();
    m_progress.begin(isAlive);
}

void RemotePlayer::load(const Item &item)
{
    m_epoch = item.epoch;
    m_foreign = false;
    m_url = item.uri;
    // A picture has no time.
    leave(item.info.mimeType().startsWith(QLatin1String("image/")));
    m_state = Transitioning;
    m_pauseWanted = m_loadedPaused = item.paused;
    m_rate.assume(item.rate);
    m_progress.setRate(item.rate);
    m_transport->load({item.epoch, item.info, item.paused, item.rate});
}

void RemotePlayer::unload()
{
    leave(m_foreign);
    m_epoch = 0;
    // What was stopped stays known as another controller's: it may go on with it.
    m_foreign = m_foreign && m_state != Stopped;
    if (std::exchange(m_state, Stopped) != Stopped)
        m_transport->unload();
}

/// Otherwise that is reported.
bool RemotePlayer::canPause()
{
    const bool can = m_transport->abilities().pause;
    if (!can)
        Q_EMIT troubled(
            KelvoError::NotSupported, QStringLiteral("%1 cannot pause what it plays").arg(m_name));
    return can;
}

void RemotePlayer::pause()
{
    if (m_loaded && !canPause()) {
        Q_EMIT intentChanged(m_epoch, m_pauseWanted);
        return;
    }
    m_pauseWanted = true;
    // What is not yet there to be paused is paused once it is.
    if (m_loaded)
        m_transport->pause();
}

void RemotePlayer::resume()
{
    m_pauseWanted = false;
    const bool wasPausing = std::exchange(m_pauseSent, false);
    if (!m_loaded)
        return;
    m_transport->resume();
    // It has said that it plays, and may go on without ever having been seen paused.
    if (wasPausing && m_state == Transitioning)
        reachedPlaying();
}

/// At the second to pause at, while it plays.
bool RemotePlayer::pauseHere()
{
    if (!canPause())
        return false;
    m_pauseWanted = true;
    Q_EMIT intentChanged(m_epoch, true);
    m_transport->pause();
    return true;
}

void RemotePlayer::setPauseAt(std::optional<uint> seconds)
{
    // Whether a player can pause what it does not play yet, it does not know itself.
    if (!seconds || !m_loaded || canPause())
        m_progress.setPauseAt(seconds);
}

void RemotePlayer::seek(int seconds, KelvoRenderer::SeekMode mode)
{
    const bool isRelative = mode == KelvoRenderer::SeekRelative;
    if (!m_loaded) {
        m_seekWhenLoaded = (isRelative ? m_seekWhenLoaded.value_or(0) : 0) + seconds;
        return;
    }
    if (!m_transport->abilities().seek) {
        Q_EMIT troubled(KelvoError::NotSeekable, m_url.toDisplayString());
        return;
    }
    const double wanted = std::max(0.0, (isRelative ? m_progress.now() : 0.0) + seconds);
    const double duration = m_progress.duration();
    const bool toEnd = duration > 0 && wanted >= duration;
    // Players differ in what they do with a seek to the end, or do nothing: the end is brought about here.
    if (toEnd && !m_foreign && !m_progress.pausesBefore(duration))
        Q_EMIT ended(m_epoch, true);
    else
        seekTo(toEnd ? duration : wanted);
}

void RemotePlayer::seekTo(double seconds)
{
    m_transport->seek(seconds);
    m_progress.beginSeek(seconds);
}

void RemotePlayer::answerPosition(PositionAnswer answer)
{
    m_progress.answer(std::move(answer));
}

bool RemotePlayer::applyProperty(const QString &name, const QVariant &value)
{
    if (name == KelvoRenderer::PropertyVolume) {
        if (!m_volume.ask(value.toUInt()))
            return false;
        m_transport->setVolume(value.toInt());
        return true;
    }
    if (name != KelvoRenderer::PropertyPlaybackSpeed)
        return false;
    if (!m_loaded) {
        m_rate.assume(value.toDouble());
        return false;
    }
    if (!m_rate.ask(value.toDouble()))
        return false;
    m_transport->setRate(value.toDouble());
    return true;
}

void RemotePlayer::followRate(double rate)
{
    if (rate == 0)
        return;
    m_progress.setRate(rate);
    if (m_rate.take(rate))
        Q_EMIT propertyReported(KelvoRenderer::PropertyPlaybackSpeed, rate);
}

void RemotePlayer::followTrouble(KelvoError::Code code, const QString &message)
{
    Q_EMIT troubled(code, message);
    // If that was about a pause, the state that it tells again is an answer.
    m_toldState.reset();
    m_volume.giveUp();
    m_rate.giveUp();
    m_progress.giveUpSeek();
    if (m_pauseSent && m_loaded && m_state == Transitioning) {
        // It plays and would not pause.
        m_pauseWanted = m_pauseSent = false;
        reachedPlaying();
    }
}

void RemotePlayer::reach(State state)
{
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateReached(m_epoch, state);
}

/// Players repeat themselves, and some say for a while that they are where they were before a command. One that was to go
/// on and is to pause after all, before it was seen to go on, has nothing else to say than that it is paused.
bool RemotePlayer::isNews(State state)
{
    const bool isRepeated = std::exchange(m_toldState, state) == state;
    const bool isAwaited = state == Paused && m_pauseWanted && m_state != Paused;
    return !isRepeated || isAwaited;
}

void RemotePlayer::followState(quint64 epoch, State state)
{
    if (epoch != m_epoch)
        return;
    if (epoch == 0 && !m_foreign) {
        // Somebody plays what we know nothing about.
        if (state != Playing && state != Paused)
            return;
        followReplacement({});
    }
    if (!isNews(state))
        return;
    switch (state) {
    case Stopped:
        stoppedElsewhere();
        break;
    case Transitioning:
        m_progress.setMotion(m_loaded ? Motion::Waiting : Motion::None);
        reach(Transitioning);
        break;
    case Playing:
        reachedPlaying();
        break;
    case Paused:
        reachedPaused();
        break;
    }
}

void RemotePlayer::reachedPlaying()
{
    const bool wantsPause = m_pauseWanted && m_state == Transitioning;
    if (wantsPause && canPause()) {
        if (!std::exchange(m_pauseSent, true))
            m_transport->pause();
        m_loaded = true;
        m_progress.setMotion(Motion::Pausing);
        return;
    }
    m_pauseWanted = false;
    Q_EMIT intentChanged(m_epoch, false);
    reach(Playing);
    m_progress.setMotion(Motion::Playing);
    takeLoaded();
}

void RemotePlayer::reachedPaused()
{
    if (std::exchange(m_loadedPaused, false) && !m_pauseWanted && !m_loaded) {
        // Resumed while it was loading.
        m_loaded = true;
        m_progress.setMotion(Motion::Waiting);
        m_transport->resume();
        return;
    }
    m_pauseWanted = true;
    m_pauseSent = false;
    Q_EMIT intentChanged(m_epoch, true);
    reach(Paused);
    m_progress.setMotion(Motion::Paused);
    takeLoaded();
    m_progress.makeSure();
}

/// The player has the item: what waited for that.
void RemotePlayer::takeLoaded()
{
    m_loaded = true;
    if (m_seekWhenLoaded)
        seek(*std::exchange(m_seekWhenLoaded, std::nullopt), KelvoRenderer::SeekAbsolute);
}

/// Not by us, not by an end. The item stays in the player: who goes on with it there is shown.
void RemotePlayer::stoppedElsewhere()
{
    if (m_state == Stopped)
        return;
    leave(m_foreign);
    reach(Stopped);
}

void RemotePlayer::followReplacement(const KelvoMediaInfo &item)
{
    const bool isMedia = item.url().isEmpty() || RemoteUrl::isMedia(item.url());
    if (!isMedia)
        qCDebug(lcKelvo).noquote() << m_name << "names an address that is none of media:"
                                   << item.url().toDisplayString().left(200);
    const bool wasPauseWanted = m_pauseWanted;
    leave(true);
    m_pauseWanted = wasPauseWanted;
    m_epoch = 0;
    m_foreign = true;
    m_url = isMedia ? item.url() : QUrl();
    m_loaded = m_state == Playing || m_state == Paused;
    m_progress.setPauseAt(std::nullopt);
    Q_EMIT replaced(isMedia ? item : withoutUnfitAddress(item));
    if (m_loaded)
        m_progress.setMotion(m_state == Playing ? Motion::Playing : Motion::Paused);
}

void RemotePlayer::followEnd()
{
    SignsOfLife &life = m_progress.life();
    if (!life.hasLived()) {
        Q_EMIT failed(m_epoch, KelvoError::ReadFailed,
            QStringLiteral("%1: %2 was given up without a reason").arg(m_name, m_url.toDisplayString()),
            life.hasProgressed());
        return;
    }
    const bool progressed = !life.isIdle();
    if (!m_loaded && m_state == Transitioning)
        reach(Playing); // Too short for the player to tell of it.
    Q_EMIT ended(m_epoch, progressed);
}

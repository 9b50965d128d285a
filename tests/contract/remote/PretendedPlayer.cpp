// SPDX-License-Identifier: MIT
#include "PretendedPlayer.h"

#include <QUrlQuery>

namespace {
constexpr int way = 3; // milliseconds
} // namespace

PretendedPlayer::PretendedPlayer(QObject *parent)
    : RemoteTransport(parent)
{
    m_end.setSingleShot(true);
    m_end.setTimerType(Qt::PreciseTimer);
    connect(&m_end, &QTimer::timeout, this, &PretendedPlayer::reachEnd);
    onTheWay([this] { Q_EMIT volumeReported(70); });
}

RemoteTransport::Abilities PretendedPlayer::abilities() const
{
    return {m_seekable, true, true, -4.0, 4.0};
}

void PretendedPlayer::onTheWay(std::function<void()> call)
{
    QTimer::singleShot(way, Qt::PreciseTimer, this, std::move(call));
}

void PretendedPlayer::load(const Item &item)
{
    onTheWay([this, item] { begin(item); });
}

void PretendedPlayer::begin(const Item &item)
{
    const QUrlQuery query(item.info.url());
    m_epoch = item.epoch;
    m_end.stop();
    m_position.setRunning(false);
    m_position.moveTo(0);
    m_position.setRate(item.rate);
    m_duration = query.queryItemValue(QStringLiteral("duration")).toDouble();
    m_seekable = query.queryItemValue(QStringLiteral("seekable")) != QLatin1String("0");
    m_state = KelvoRenderer::Transitioning;
    if (query.hasQueryItem(QStringLiteral("fails"))) {
        onTheWay([this, epoch = m_epoch] {
            Q_EMIT failed(epoch, KelvoError::NotFound, QStringLiteral("nothing there"));
        });
        return;
    }
    Q_EMIT durationReported(m_epoch, m_duration);
    Q_EMIT fact(m_epoch, QStringLiteral("title"), {item.info.url().path()});
    // Longer on its way than the commands, so that tests see Transitioning pass.
    QTimer::singleShot(5 * way, this, [this, item] {
        if (item.epoch == m_epoch && m_state == KelvoRenderer::Transitioning)
            enter(item.paused ? KelvoRenderer::Paused : KelvoRenderer::Playing);
    });
}

void PretendedPlayer::enter(KelvoRenderer::State state)
{
    m_state = state;
    m_position.setRunning(state == KelvoRenderer::Playing);
    watchEnds();
    onTheWay([this, state, epoch = m_epoch] { Q_EMIT stateReported(epoch, state); });
}

void PretendedPlayer::unload()
{
    onTheWay([this] {
        m_epoch = 0;
        m_end.stop();
        m_state = KelvoRenderer::Stopped;
    });
}

void PretendedPlayer::pause()
{
    onTheWay([this] {
        if (m_state == KelvoRenderer::Playing)
            enter(KelvoRenderer::Paused);
    });
}

void PretendedPlayer::resume()
{
    onTheWay([this] {
        if (m_state == KelvoRenderer::Paused)
            enter(KelvoRenderer::Playing);
    });
}

void PretendedPlayer::seek(double seconds)
{
    onTheWay([this, seconds] {
        m_position.moveTo(seconds);
        watchEnds();
    });
}

void PretendedPlayer::setVolume(int volume)
{
    onTheWay([this, volume] { onTheWay([this, volume] { Q_EMIT volumeReported(volume); }); });
}

void PretendedPlayer::setRate(double rate)
{
    onTheWay([this, rate] {
        m_position.setRate(rate);
        watchEnds();
        Q_EMIT rateReported(rate);
    });
}

void PretendedPlayer::askPosition()
{
    onTheWay([this] {
        if (m_state == KelvoRenderer::Playing || m_state == KelvoRenderer::Paused)
            Q_EMIT positionReported(m_epoch, m_position.now());
    });
}

void PretendedPlayer::watchEnds()
{
    m_end.stop();
    if (m_state == KelvoRenderer::Playing && m_position.rate() > 0)
        m_end.start(int(std::max(0.0, 1000 * (m_duration - m_position.now()) / m_position.rate())));
}

void PretendedPlayer::reachEnd()
{
    m_state = KelvoRenderer::Stopped;
    onTheWay([this, epoch = m_epoch] { Q_EMIT ended(epoch); });
}

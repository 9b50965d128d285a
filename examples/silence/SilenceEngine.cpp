// SPDX-License-Identifier: MIT
#include "SilenceEngine.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {
/// What a player takes to open a file or a connection. Without it, a long list of items that cannot be played would be
/// over before anybody could stop it.
constexpr auto openingTime = 20ms;

std::chrono::seconds durationOf(const Engine::Item &item)
{
    if (item.info.duration() > 0)
        return std::chrono::seconds(item.info.duration());
    bool isNumber = false;
    const int seconds = item.uri.path().toInt(&isNumber);
    return isNumber ? std::chrono::seconds(std::max(seconds, 0)) : 30s;
}

/// What a user reads: the title that a playlist gives, otherwise the address.
QString titleOf(const Engine::Item &item)
{
    return item.info.title().isEmpty() ? item.uri.toDisplayString() : item.info.title();
}
} // namespace

SilenceEngine::SilenceEngine()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SilenceEngine::wake);
}

QString SilenceEngine::refusal(const QString &property, const QVariant &value) const
{
    if (property == KelvoRenderer::PropertyPlaybackSpeed && value.toDouble() != 1.0)
        return QStringLiteral("silence has one speed only");
    return {};
}

void SilenceEngine::load(const Item &item)
{
    unload();
    m_epoch = item.epoch;
    m_duration = durationOf(item);
    m_pauseWanted = item.paused;
    // Nothing is reported before this has returned, and nothing about an item that is no longer the one.
    QTimer::singleShot(openingTime, this, [this, epoch = item.epoch, title = titleOf(item)] {
        if (epoch == m_epoch)
            open(title);
    });
}

void SilenceEngine::open(const QString &title)
{
    if (m_duration == 0ms) {
        Q_EMIT failed(m_epoch, KelvoError::EmptyMedia, QStringLiteral("no time at all is no silence"), false);
        return;
    }
    Q_EMIT fact(m_epoch, QStringLiteral("title"), {title});
    Q_EMIT fact(m_epoch, QStringLiteral("duration"),
        {int(std::chrono::duration_cast<std::chrono::seconds>(m_duration).count())});
    begin();
}

void SilenceEngine::unload()
{
    run(false);
    m_epoch = 0;
    m_begun = false;
    m_before = 0ms;
}

void SilenceEngine::begin()
{
    m_begun = true;
    if (!pauseWhereWanted())
        Q_EMIT stateReached(m_epoch, m_pauseWanted ? KelvoRenderer::Paused : KelvoRenderer::Playing);
    run(!m_pauseWanted);
}

void SilenceEngine::pause()
{
    m_pauseWanted = true;
    run(false);
    Q_EMIT stateReached(m_epoch, KelvoRenderer::Paused);
}

void SilenceEngine::resume()
{
    m_pauseWanted = false;
    if (m_begun)
        begin();
}

void SilenceEngine::seek(int seconds, KelvoRenderer::SeekMode mode)
{
    const Milliseconds from = mode == KelvoRenderer::SeekRelative ? position() : 0ms;
    m_before = std::clamp<Milliseconds>(from + std::chrono::seconds(seconds), 0ms, m_duration);
    m_sinceStart.start();
    if (m_begun)
        wake();
}

void SilenceEngine::setPauseAt(std::optional<uint> seconds)
{
    m_pauseAt.reset();
    if (seconds)
        m_pauseAt = std::chrono::seconds(*seconds);
    if (m_begun)
        wake();
}

void SilenceEngine::answerPosition(PositionAnswer answer)
{
    const double seconds = std::chrono::duration<double>(position()).count();
    post([answer = std::move(answer), seconds] { answer(seconds); });
}

/// Lets time pass or stops it, and sets the timer.
void SilenceEngine::run(bool running)
{
    m_before = position();
    m_sinceStart.start();
    m_running = running;
    m_timer.stop();
    if (running)
        m_timer.start(std::max(0ms, std::min(m_pauseAt.value_or(m_duration), m_duration) - m_before));
}

/// Something may be due: the time has come, or the position or what is wanted has changed.
void SilenceEngine::wake()
{
    if (pauseWhereWanted())
        return;
    if (position() < m_duration)
        return run(m_running);
    run(false);
    m_begun = false;
    Q_EMIT ended(m_epoch, true);
}

/// Pauses when the position is where pauseAt() wants it, or past that.
bool SilenceEngine::pauseWhereWanted()
{
    if (!m_pauseAt || position() < *m_pauseAt)
        return false;
    m_pauseAt.reset();
    m_pauseWanted = true;
    run(false);
    Q_EMIT intentChanged(m_epoch, true);
    Q_EMIT stateReached(m_epoch, KelvoRenderer::Paused);
    return true;
}

SilenceEngine::Milliseconds SilenceEngine::position() const
{
    const Milliseconds passed = m_running ? Milliseconds(m_sinceStart.elapsed()) : 0ms;
    return std::min(m_before + passed, m_duration);
}

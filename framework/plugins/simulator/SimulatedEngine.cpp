// SPDX-License-Identifier: MIT
#include "SimulatedEngine.h"

#include "RendererProperties.h"
#include "SimulatedClock.h"
#include "SimulatorProperties.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Sim = SimulatorProperties;

namespace {
// Milliseconds that opening an item takes: long enough for testers to see the state pass by in a log.
constexpr int loadingTime = 20;
constexpr int bufferSteps = 10;
/// What fails after this has played. Milliseconds.
constexpr double leastProgress = 1000;
} // namespace

SimulatedEngine::SimulatedEngine(SimulatedClock *clock, const QString &name)
    : m_clock(clock)
    , m_settings(name)
{
}

QString SimulatedEngine::name() const
{
    return m_settings.value(Sim::name).toString();
}

void SimulatedEngine::describe(RendererProperties &properties) const
{
    properties.setInitial(KelvoRenderer::PropertyVolume, 70U);
    properties.makeSettable(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE);
    properties.makeSettable(KelvoRenderer::PropertyColorKey);
    properties.takeTexts();
}

/// An unusable address fails as a medium does.
bool SimulatedEngine::canOpen(const QUrl &) const
{
    return true;
}

quint64 SimulatedEngine::later(qint64 milliseconds, std::function<void()> task)
{
    return m_clock->after(milliseconds, this, std::move(task));
}

void SimulatedEngine::post(std::function<void()> call)
{
    later(0, std::move(call));
}

/// Commands keep their order also when the latency becomes shorter between two of them.
void SimulatedEngine::command(std::function<void()> call)
{
    const qint64 now = m_clock->now();
    m_lastCommandDue = std::max(m_lastCommandDue, now + m_settings.number(Sim::latency));
    later(m_lastCommandDue - now, std::move(call));
}

void SimulatedEngine::reach(State state)
{
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateReached(m_epoch, state);
}

QList<QUrl> SimulatedEngine::knownEntries(const KelvoMediaInfo &item) const
{
    const int count = SimulatedMedium::countOf(item.url());
    return count > 1 ? QList<QUrl>(count, item.url()) : QList<QUrl>();
}

void SimulatedEngine::load(const Item &item)
{
    unload();
    m_epoch = item.epoch;
    m_state = Transitioning;
    m_pauseWanted = item.paused;
    m_position.setSpeed(item.rate, m_clock->now());
    m_medium = SimulatedMedium::of(item.info, item.entry, m_settings.number(Sim::duration));
    m_medium.seekable = m_medium.seekable && m_settings.flag(Sim::seekable);
    m_wake = later(loadingTime, [this] { takeMedium(); });
}

void SimulatedEngine::unload()
{
    m_clock->cancel(m_wake);
    m_epoch = 0;
    m_state = Stopped;
    m_loaded = false;
    m_pauseWanted = false;
    m_bufferStep = -1;
    m_seekWhenLoaded.reset();
    m_position.reset(m_clock->now());
}

/// The item is open, or turns out to be of no use.
void SimulatedEngine::takeMedium()
{
    KelvoError::Code failure = m_medium.failure;
    if (m_itemsToFail > 0) {
        --m_itemsToFail;
        failure = KelvoError::Code(m_settings.number(Sim::failure));
    }
    if (failure != KelvoError::NoError) {
        fail(failure, m_medium.info.url().toDisplayString());
        return;
    }
    m_loaded = true;
    tellFacts();
    if (m_settings.number(Sim::buffering) > 0)
        startBuffering();
    else
        begin();
}

void SimulatedEngine::tellFacts()
{
    const KelvoMediaInfo &info = m_medium.info;
    Q_EMIT fact(m_epoch, QStringLiteral("title"), {info.title()});
    if (!info.artist().isEmpty())
        Q_EMIT fact(m_epoch, QStringLiteral("artist"), {info.artist()});
    if (!info.album().isEmpty())
        Q_EMIT fact(m_epoch, QStringLiteral("album"), {info.album()});
    if (info.duration() > 0)
        Q_EMIT fact(m_epoch, QStringLiteral("duration"), {info.duration()});
}

void SimulatedEngine::startBuffering()
{
    m_clock->cancel(m_wake);
    if (m_state == Playing)
        reach(Transitioning);
    m_bufferStep = 0;
    updateRunning();
    fillBuffer();
}

void SimulatedEngine::fillBuffer()
{
    Q_EMIT buffering(m_epoch, float(m_bufferStep) / bufferSteps);
    if (m_bufferStep++ < bufferSteps) {
        m_wake = later(m_settings.number(Sim::buffering) / bufferSteps, [this] { fillBuffer(); });
        return;
    }
    m_bufferStep = -1;
    begin();
}

/// All is there for the item to play.
void SimulatedEngine::begin()
{
    reach(m_pauseWanted ? Paused : Playing);
    updateRunning();
    if (m_seekWhenLoaded)
        seek(*std::exchange(m_seekWhenLoaded, std::nullopt), KelvoRenderer::SeekAbsolute);
}

void SimulatedEngine::pause()
{
    m_pauseWanted = true;
    reach(Paused);
    updateRunning();
}

void SimulatedEngine::resume()
{
    m_pauseWanted = false;
    reach(m_loaded && !isBuffering() ? Playing : Transitioning);
    updateRunning();
}

void SimulatedEngine::setPauseAt(std::optional<uint> seconds)
{
    m_pauseAt = seconds;
    updateRunning();
}

void SimulatedEngine::seek(int seconds, KelvoRenderer::SeekMode mode)
{
    const bool isRelative = mode == KelvoRenderer::SeekRelative;
    if (!m_loaded) {
        m_seekWhenLoaded = (isRelative ? m_seekWhenLoaded.value_or(0) : 0) + seconds;
        return;
    }
    if (!m_medium.seekable) {
        Q_EMIT troubled(KelvoError::NotSeekable, m_medium.info.url().toDisplayString());
        return;
    }
    const double wanted = (isRelative ? position() : 0) + 1000.0 * seconds;
    m_position.moveTo(std::clamp(wanted, 0.0, duration()), m_clock->now());
    if (wanted >= duration() && !atPausePoint())
        end();
    else
        updateRunning();
}

void SimulatedEngine::updateRunning()
{
    atPausePoint();
    m_position.setRunning(m_state == Playing && !m_settings.flag(Sim::stall), m_clock->now());
    rearm();
}

/// Pauses when the position is at or past the point of pauseAt(). A point that is passed while already paused
/// has done its duty too.
bool SimulatedEngine::atPausePoint()
{
    const bool there = m_loaded && (m_state == Playing || m_state == Paused) && m_pauseAt
        && position() >= 1000.0 * *m_pauseAt;
    if (!there)
        return false;
    m_pauseAt.reset();
    m_pauseWanted = true;
    m_position.setRunning(false, m_clock->now());
    Q_EMIT intentChanged(m_epoch, true);
    reach(Paused);
    return true;
}

/// Wakes at whatever comes first: the pause point, the end of the item, its beginning when playing backwards.
void SimulatedEngine::rearm()
{
    if (isBuffering() || !m_loaded)
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

void SimulatedEngine::checkPosition()
{
    if (atPausePoint())
        return;
    if (m_position.speed() > 0 && position() >= duration())
        end();
    else if (m_position.speed() < 0 && position() <= 0)
        backAtStart();
    else
        rearm();
}

/// Fast rewind has come to the beginning: it plays on from there at normal speed.
void SimulatedEngine::backAtStart()
{
    m_position.reset(m_clock->now());
    setSpeed(1);
    Q_EMIT propertyReported(KelvoRenderer::PropertyPlaybackSpeed, 1.0);
}

void SimulatedEngine::setSpeed(double speed)
{
    m_position.moveTo(position(), m_clock->now());
    m_position.setSpeed(speed, m_clock->now());
    updateRunning();
}

void SimulatedEngine::end()
{
    m_clock->cancel(m_wake);
    // What others play ends as they like it.
    if (m_epoch == 0)
        stopElsewhere();
    else
        Q_EMIT ended(m_epoch, true);
}

/// Not by us.
void SimulatedEngine::stopElsewhere()
{
    if (m_state == Stopped)
        return;
    const quint64 epoch = m_epoch;
    unload();
    Q_EMIT stateReached(epoch, Stopped);
}

void SimulatedEngine::fail(KelvoError::Code code, const QString &message)
{
    m_clock->cancel(m_wake);
    Q_EMIT failed(m_epoch, code, message, position() > leastProgress);
}

void SimulatedEngine::answerPosition(PositionAnswer answer)
{
    post([answer = std::move(answer), seconds = position() / 1000] { answer(seconds); });
}

/// Milliseconds, never outside of the item.
double SimulatedEngine::position() const
{
    return std::clamp(m_position.at(m_clock->now()), 0.0, duration());
}

/// Milliseconds; more than anything when not known.
double SimulatedEngine::duration() const
{
    const int seconds = m_medium.info.duration();
    return seconds > 0 ? 1000.0 * seconds : std::numeric_limits<double>::max();
}

bool SimulatedEngine::applyProperty(const QString &name, const QVariant &value)
{
    if (name == KelvoRenderer::PropertyPlaybackSpeed)
        setSpeed(value.toDouble());
    return false;
}

/// Not held back by the latency.
bool SimulatedEngine::setOwnProperty(const QString &name, const QVariant &value)
{
    if (!name.startsWith(Sim::prefix))
        return false;
    later(0, [this, name, value] { takeSetting(name, value); });
    return true;
}

QVariant SimulatedEngine::ownProperty(const QString &name) const
{
    // One clock for all.
    if (name == Sim::clock)
        return QString(m_clock->isManual() ? Sim::clockManual : Sim::clockReal);
    return m_settings.value(name);
}

void SimulatedEngine::takeSetting(const QString &name, const QVariant &value)
{
    if (!SimulatorSettings::has(name)) {
        Q_EMIT troubled(KelvoError::NotSupported, name);
        return;
    }
    const bool isPointless = name == Sim::advance && !m_clock->isManual();
    if (isPointless || !m_settings.take(name, value)) {
        Q_EMIT troubled(KelvoError::InvalidValue, name + QLatin1String(" = ") + value.toString());
        return;
    }
    if (takeEffect(name, value) == Report::Now)
        Q_EMIT propertyReported(name, ownProperty(name));
}

SimulatedEngine::Report SimulatedEngine::takeEffect(const QString &name, const QVariant &value)
{
    if (name == Sim::failure) {
        m_itemsToFail = SimulatorSettings::itemsToFail(value);
    } else if (name == Sim::error) {
        takeError(value);
    } else if (name == Sim::buffering && m_loaded && !isBuffering()
        && m_settings.number(Sim::buffering) > 0) {
        startBuffering();
    } else if (name == Sim::stall) {
        updateRunning();
    } else if (name == Sim::name) {
        Q_EMIT nameReported(this->name());
    } else if (name == Sim::metadata) {
        tellFacts(value);
    } else if (name == Sim::foreign) {
        takeForeign(value.toString());
    } else if (name == Sim::clock) {
        m_clock->setManual(value == QString(Sim::clockManual));
    } else if (name == Sim::vanish) {
        Q_EMIT propertyReported(name, m_settings.value(name));
        post([this, time = m_settings.number(Sim::vanish)] { Q_EMIT vanishRequested(time); });
        return Report::Later;
    } else if (name == Sim::advance) {
        advance();
        return Report::Later;
    }
    return Report::Now;
}

void SimulatedEngine::takeError(const QVariant &value)
{
    const auto code = KelvoError::Code(m_settings.number(Sim::error));
    const QString text = SimulatorSettings::rest(value);
    if (m_state == Stopped)
        Q_EMIT troubled(code, text);
    else
        fail(code, text);
}

void SimulatedEngine::tellFacts(const QVariant &value)
{
    const QVariantMap facts = SimulatorSettings::facts(value);
    for (auto told = facts.cbegin(); told != facts.cend(); ++told) {
        const bool isList = told->typeId() == QMetaType::QVariantList;
        Q_EMIT fact(m_epoch, told.key(), isList ? told->toList() : QList<QVariant>{*told});
    }
}

void SimulatedEngine::takeForeign(const QString &deed)
{
    if (deed == Sim::foreignStop) {
        stopElsewhere();
    } else if (deed == Sim::foreignPause || deed == Sim::foreignResume) {
        if (m_state == Stopped)
            return;
        const bool isPause = deed == Sim::foreignPause;
        Q_EMIT intentChanged(m_epoch, isPause);
        if (isPause)
            pause();
        else
            resume();
    } else {
        Item item;
        item.uri = QUrl(deed);
        item.info = KelvoMediaInfo(QString(), item.uri);
        load(item);
        Q_EMIT replaced(m_medium.info);
        Q_EMIT stateReached(m_epoch, m_state);
    }
}

/// Reported when the clock has arrived.
void SimulatedEngine::advance()
{
    const int time = m_settings.number(Sim::advance);
    m_clock->advance(time, this, [this, time] { Q_EMIT propertyReported(Sim::advance, time); });
}

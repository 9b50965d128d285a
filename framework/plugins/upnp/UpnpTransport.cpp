// SPDX-License-Identifier: MIT
#include "UpnpTransport.h"

#include "UpnpText.h"

#include <algorithm>

namespace {
constexpr int firstCheck = 20; // milliseconds; doubled each time
} // namespace

UpnpTransport::UpnpTransport(std::unique_ptr<RendererLink> link, Patience patience)
    : m_link(std::move(link))
    , m_patience(patience)
{
    connect(m_link.get(), &RendererLink::reported, this, &UpnpTransport::hear);
    connect(m_link.get(), &RendererLink::renamed, this, &UpnpTransport::nameReported);
    connect(m_link.get(), &RendererLink::limitsKnown, this, [this](const Upnp::RendererLimits &limits) {
        m_limits = limits;
        noteAbilities();
        next();
    });
    m_check.setSingleShot(true);
    connect(&m_check, &QTimer::timeout, this, [this] {
        m_wishes.knowState = true;
        next();
    });
    m_progress.setSingleShot(true);
    connect(&m_progress, &QTimer::timeout, this, &UpnpTransport::checkProgress);
    m_proof.setSingleShot(true);
    connect(&m_proof, &QTimer::timeout, this, &UpnpTransport::askForProof);
    m_wishes.knowState = true;
    m_wishes.knowVolume = true;
    next();
}

UpnpTransport::~UpnpTransport() = default;

RemoteTransport::Abilities UpnpTransport::abilities() const
{
    Abilities able;
    if (m_limits.actions.isEmpty())
        return able;
    able.seek = m_limits.actions.contains("Seek");
    able.pause = m_limits.actions.contains("Pause");
    able.volume = m_limits.actions.contains("SetVolume");
    if (m_state == KelvoRenderer::Playing && !m_allowedActions.isEmpty()) {
        able.seek = able.seek && m_allowedActions.contains(QStringLiteral("seek"));
        able.pause = able.pause && m_allowedActions.contains(QStringLiteral("pause"));
    }
    for (const QString &text : m_limits.speeds) {
        const double speed = UpnpText::parseSpeed(text).value_or(1);
        able.slowestRate = std::min(able.slowestRate, speed);
        able.fastestRate = std::max(able.fastestRate, speed);
    }
    return able;
}

void UpnpTransport::noteAbilities()
{
    const Abilities now = abilities();
    const Abilities &before = m_lastAbilities;
    const bool isSame = now.seek == before.seek && now.pause == before.pause && now.volume == before.volume
        && qFuzzyCompare(now.slowestRate, before.slowestRate)
        && qFuzzyCompare(now.fastestRate, before.fastestRate);
    m_lastAbilities = now;
    if (!isSame)
        tell([this] { Q_EMIT abilitiesChanged(); });
}

void UpnpTransport::load(const Item &item)
{
    m_item = item;
    forgetItem();
    m_wishes.load = true;
    // Some that are given an item while they pause fall back into the pause once it plays.
    m_wishes.stop = m_state == KelvoRenderer::Paused;
    m_isStopTried = m_wishes.stop;
    m_isStopping = false;
    if (item.paused)
        m_wishes.paused = true;
    next();
}

void UpnpTransport::unload()
{
    forgetItem();
    m_epoch.reset();
    m_wishes.stop = true;
    next();
}

/// Everything that was meant for the item before.
void UpnpTransport::forgetItem()
{
    Wishes wishes;
    wishes.volume = m_wishes.volume;
    wishes.knowVolume = m_wishes.knowVolume;
    m_wishes = wishes;
    m_isLoading = false;
    m_isStarting = false;
    m_isDoubted = false;
    m_isAddressGone = false;
    m_early.clear();
    m_started.invalidate();
    m_proof.stop();
    m_playTries = 0;
    m_isRefusalTried = false;
    if (m_duration > 0)
        m_durationBefore = m_duration;
    m_duration = -1;
    m_isDurationUntold = false;
    m_isDurationDoubted = false;
    m_position = 0;
    m_lastPosition = -1;
    m_isPositionDoubted = false;
    m_clock.reset();
    m_seeked.invalidate();
    m_progress.stop();
    m_isProgressJudged = false;
    m_facts.clear();
    m_stoppedEpoch.reset();
    expectationEnds();
}

void UpnpTransport::pause()
{
    m_wishes.paused = true;
    next();
}

void UpnpTransport::resume()
{
    m_wishes.paused = false;
    next();
}

void UpnpTransport::seek(double seconds)
{
    m_wishes.position = seconds;
    next();
}

void UpnpTransport::setVolume(int volume)
{
    m_wishes.volume = volume;
    next();
}

void UpnpTransport::setRate(double rate)
{
    m_item.rate = rate;
    m_wishes.rate = true;
    next();
}

void UpnpTransport::askPosition()
{
    m_wishes.knowPosition = true;
    next();
}

/// Queued, so that whoever hears of it may do anything, also delete this object.
void UpnpTransport::tell(std::function<void()> report)
{
    QMetaObject::invokeMethod(this, std::move(report), Qt::QueuedConnection);
}

void UpnpTransport::trouble(const char *action, const Upnp::Answer &answer)
{
    KelvoError::Code code = KelvoError::CommandRefused;
    if (answer.outcome == Upnp::Answer::TimedOut)
        code = KelvoError::Timeout;
    else if (answer.outcome == Upnp::Answer::Unreachable)
        code = KelvoError::NetworkFailed;
    else if (answer.outcome == Upnp::Answer::Missing)
        code = KelvoError::DeviceGone;
    tell([this, code, text = describe(action, answer)] { Q_EMIT troubled(code, text); });
}

QString UpnpTransport::describe(const char *action, const Upnp::Answer &answer) const
{
    const QString what = QLatin1String(action) + QStringLiteral(": ") + m_link->deviceName();
    switch (answer.outcome) {
    case Upnp::Answer::Refused:
        return QStringLiteral("%1 refused: %2").arg(what, UpnpText::refusalText(answer.code, answer.message));
    case Upnp::Answer::TimedOut:
        return QStringLiteral("%1 did not answer in time").arg(what);
    case Upnp::Answer::Unreachable:
        return QStringLiteral("%1 cannot be reached: %2").arg(what, answer.message);
    case Upnp::Answer::Missing:
    case Upnp::Answer::Done:
        break;
    }
    return QStringLiteral("%1: %2").arg(what, answer.message);
}

void UpnpTransport::expect(State state)
{
    // Told once more, it is the same change.
    if (m_expected != state) {
        m_expectedSince.start();
        m_checkDelay = firstCheck;
        m_changeTries = 1;
    }
    m_expected = state;
    m_wishes.knowState = true;
}

void UpnpTransport::expectationEnds()
{
    m_expected.reset();
    m_check.stop();
}

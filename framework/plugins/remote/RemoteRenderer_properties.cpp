// SPDX-License-Identifier: MIT
#include "KelvoMessageHandler.h"
#include "RemoteRenderer.h"

#include <cmath>
#include <utility>

namespace {
constexpr double MaximumVolume = 99;

std::optional<double> asNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return value.toDouble();
    default:
        return std::nullopt;
    }
}

/// What every renderer is told, whether it has a use for a window or not.
bool isOfTheWindow(const QString &name)
{
    return name == KelvoRenderer::PropertyXid || name == KelvoRenderer::PropertyAutopaint
        || name == KelvoRenderer::PropertyRenderRectangle;
}
} // namespace

void RemoteRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    if (name == PropertyXid)
        tellAgain(); // the window is told as soon as a renderer is chosen
    if (name == PropertyVolume)
        setVolume(value);
    else if (name == PropertyPlaybackSpeed)
        setSpeed(value);
    else if (isOfTheWindow(name))
        qCDebug(lcKelvo).noquote() << m_name << "shows video in a window of its own and has no use for"
                                   << name;
    else if (name == PropertyCurrentFrameOnPause)
        reportError(KelvoError::NotSupported,
            QStringLiteral("%1: %2 shows video in a window of its own").arg(name, m_name));
    else if (name != KELVO_RENDERER_PROPERTY_AUTO_ADVANCE)
        reportError(KelvoError::NotSupported, name);
    else if (value.typeId() != QMetaType::Bool)
        refuseValue(name, value);
    else
        setProperty(name, value);
}

void RemoteRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    const KelvoAnswer answer(receiver, slot);
    if (name == PropertyPosition) {
        answerPosition([answer, name](double position) { answer.deliver({name, position}); });
        return;
    }
    later([answer, name, value = m_properties.value(name)] { answer.deliver({name, value}); });
}

void RemoteRenderer::refuseValue(const QString &name, const QVariant &value)
{
    reportError(KelvoError::InvalidValue, QStringLiteral("%1 = %2").arg(name, value.toString()));
}

void RemoteRenderer::setVolume(const QVariant &value)
{
    const std::optional<double> volume = asNumber(value);
    if (!volume || !(*volume >= 0 && *volume <= MaximumVolume) || *volume != std::floor(*volume)) {
        refuseValue(PropertyVolume, value);
    } else if (!m_transport->abilities().volume) {
        reportError(KelvoError::NotSupported, QStringLiteral("%1 has no volume to set").arg(m_name));
    } else if (!m_volumeAwaited && m_properties.value(PropertyVolume) == uint(*volume)) {
        // The player would have nothing to report.
        setProperty(PropertyVolume, uint(*volume));
    } else {
        m_volumeAwaited = uint(*volume);
        m_transport->setVolume(int(*volume));
    }
}

void RemoteRenderer::volumeReported(int volume)
{
    const bool awaited = m_volumeAwaited == uint(volume);
    if (awaited)
        m_volumeAwaited.reset();
    if (awaited || m_properties.value(PropertyVolume) != uint(volume))
        setProperty(PropertyVolume, uint(volume));
}

void RemoteRenderer::setSpeed(const QVariant &value)
{
    const std::optional<double> number = asNumber(value);
    const double speed = number.value_or(0);
    const RemoteTransport::Abilities can = m_transport->abilities();
    if (!(std::abs(speed) > 0) || std::isinf(speed)) {
        refuseValue(PropertyPlaybackSpeed, value);
    } else if (speed < can.slowestRate || speed > can.fastestRate) {
        reportError(KelvoError::NotSupported,
            QStringLiteral("playback-speed %1: %2 plays at %3 to %4")
                .arg(speed)
                .arg(m_name)
                .arg(can.slowestRate)
                .arg(can.fastestRate));
    } else if (!m_loaded || (!m_rateAwaited && m_properties.value(PropertyPlaybackSpeed) == speed)) {
        // Taken along by the next load().
        setProperty(PropertyPlaybackSpeed, speed);
    } else {
        m_rateAwaited = speed;
        m_transport->setRate(speed);
    }
}

void RemoteRenderer::rateReported(double rate)
{
    if (rate == 0)
        return;
    const bool awaited = m_rateAwaited == rate;
    if (awaited)
        m_rateAwaited.reset();
    m_position.setRate(rate);
    positionMoved();
    if (awaited || m_properties.value(PropertyPlaybackSpeed) != rate)
        setProperty(PropertyPlaybackSpeed, rate);
}

double RemoteRenderer::rateForLoading()
{
    const RemoteTransport::Abilities can = m_transport->abilities();
    const double wanted = m_rateAwaited.value_or(m_properties.value(PropertyPlaybackSpeed).toDouble());
    m_rateAwaited.reset();
    // Backwards from the beginning leads nowhere.
    const double rate = wanted < 0 || wanted < can.slowestRate || wanted > can.fastestRate ? 1.0 : wanted;
    if (rate != m_properties.value(PropertyPlaybackSpeed))
        setProperty(PropertyPlaybackSpeed, rate);
    m_position.setRate(rate);
    return rate;
}

/// Takes the value that holds from now on and reports it.
void RemoteRenderer::setProperty(const QString &name, const QVariant &value)
{
    m_properties.insert(name, value);
    later([this, name, value] { Q_EMIT kelvoPropertyChanged(name, value); });
}

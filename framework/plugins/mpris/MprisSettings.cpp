// SPDX-License-Identifier: MIT
#include "MprisSettings.h"

#include "MprisCalls.h"
#include "MprisSnapshot.h"

#include <utility>

MprisSettings::MprisSettings(MprisCalls *calls, QObject *parent)
    : QObject(parent)
    , m_calls(calls)
{
}

void MprisSettings::setVolume(int volume)
{
    m_nextVolume = volume;
    if (!m_isSettingVolume)
        sendVolume();
}

void MprisSettings::sendVolume()
{
    m_isSettingVolume = true;
    const int volume = std::exchange(m_nextVolume, -1);
    m_calls->setProperty(
        QStringLiteral("Volume"), MprisValues::linearVolume(volume),
        [this] {
            m_isSettingVolume = false;
            if (m_nextVolume >= 0)
                sendVolume();
            else
                Q_EMIT changed();
        },
        [this](KelvoError::Code code, const QString &message) {
            m_isSettingVolume = false;
            Q_EMIT m_calls->troubled(code, message);
        });
}

void MprisSettings::setRate(double rate)
{
    m_calls->setProperty(QStringLiteral("Rate"), rate, [this] {
        m_isRateAwaited = true;
        Q_EMIT changed();
    });
}

void MprisSettings::take(const MprisSnapshot &now)
{
    // While one is being set the player may still have the one of before.
    if (now.volume && !m_isSettingVolume)
        Q_EMIT volumeReported(*now.volume);
    if (now.rate && (*now.rate != m_rate || m_isRateAwaited)) {
        m_rate = *now.rate;
        m_isRateAwaited = false;
        Q_EMIT rateReported(m_rate);
    }
}

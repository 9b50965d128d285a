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
        QStringLiteral("Volume"), MprisValues::shareOfVolume(volume),
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
    m_calls->setProperty(QStringLiteral("Rate"), rate, [this] { Q_EMIT changed(); });
}

void MprisSettings::take(const MprisSnapshot &now)
{
    // While one is being set, and perhaps a newer one after it, the player says what is to be over.
    if (now.volume && !m_isSettingVolume)
        Q_EMIT volumeReported(*now.volume);
    if (now.rate)
        Q_EMIT rateReported(*now.rate);
}

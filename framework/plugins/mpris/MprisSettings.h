// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class MprisCalls;
struct MprisSnapshot;

/// The properties of a player that can be set: Volume and Rate.
class MprisSettings : public QObject
{
    Q_OBJECT
public:
    /// @param calls  lives longer than this
    explicit MprisSettings(MprisCalls *calls, QObject *parent = nullptr);

    /// 0..99. Of many in a row, as a slider gives them, the last one counts.
    void setVolume(int volume);
    void setRate(double rate);
    void take(const MprisSnapshot &now);

Q_SIGNALS:
    void volumeReported(int volume);
    void rateReported(double rate);
    /// The player has taken a value: what it is now has to be asked.
    void changed();

private:
    void sendVolume();

    MprisCalls *const m_calls;
    int m_nextVolume = -1; ///< below 0: none is to be set next
    bool m_isSettingVolume = false;
};

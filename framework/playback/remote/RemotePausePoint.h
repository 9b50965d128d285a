// SPDX-License-Identifier: MIT
#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <optional>
#include <utility>

class ItemProgress;

/// The second to pause at, of pauseAt(). It is reached by the player's own words: what is sent to a sound device is heard
/// later, and a player that waits for that is behind the time that has passed.
class RemotePausePoint : public QObject
{
    Q_OBJECT
public:
    RemotePausePoint();

    void set(std::optional<uint> seconds);
    bool isSet() const { return m_second.has_value(); }
    bool isBefore(double seconds) const { return m_second && *m_second <= seconds; }

    enum class Step {
        Wait,
        Ask, ///< the player, where it is
        Pause,
    };
    /// What follows from where the item is; due() tells when to look again. With Pause the point is done with.
    Step look(const ItemProgress &item, bool isPaused) { return judge(item, isPaused, false); }
    /// The same, when that is due.
    Step lookAgain(const ItemProgress &item) { return judge(item, false, true); }
    /// The item does not move, or is moved elsewhere.
    void rest();

    /// The item was paused at that second, if it is paused now.
    std::optional<uint> takePaused() { return std::exchange(m_paused, std::nullopt); }

Q_SIGNALS:
    void due();

private:
    Step judge(const ItemProgress &item, bool isPaused, bool isDue);
    void waitFor(double seconds);

    std::optional<uint> m_second;
    std::optional<uint> m_paused; ///< the one done with
    bool m_isAsked = false; ///< and not answered
    QDeadlineTimer m_expected{QDeadlineTimer::Forever}; ///< to be reached, at the earliest
    QTimer m_timer;
};

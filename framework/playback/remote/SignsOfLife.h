// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QVariant>

/// Whether an item has really played. Many players tell of no errors: what they cannot open just stops, as at an end.
class SignsOfLife
{
public:
    /// Of another item. `isAlive`: whatever the player tells, for instance a picture, which has no time.
    void begin(bool isAlive)
    {
        *this = SignsOfLife();
        m_isAlive = isAlive;
    }

    void notePlaying()
    {
        if (!m_playingSince.isValid())
            m_playingSince.start();
    }
    /// It falls back: what has not played for a while did not play yet.
    void noteFallingBack()
    {
        if (!hasProgressed())
            m_playingSince.invalidate();
    }
    void notePosition(double seconds)
    {
        m_positionTold = true;
        m_moved = m_moved || seconds > 0;
    }
    void noteDuration(double seconds) { m_hasDuration = seconds > 0; }
    /// Of streams some players tell neither position nor duration: a fact that changes shows that they are read.
    void noteFact(const QString &key, const QVariant &value)
    {
        const QVariant before = m_facts.value(key, value);
        m_hasFactChanged = m_hasFactChanged || before != value;
        m_facts.insert(key, value);
    }

    bool hasProgressed() const { return m_playingSince.isValid() && m_playingSince.elapsed() >= FalseStart; }
    /// It ended where it began.
    bool isIdle() const { return !m_playingSince.isValid() || m_playingSince.elapsed() < NoPlaying; }
    /// Whether there was anything to play. A player that never tells where it is must be believed after a while.
    bool hasLived() const
    {
        return m_isAlive || m_hasDuration || m_moved || m_hasFactChanged
            || (!m_positionTold && hasProgressed());
    }
    /// Whether the player has to be asked so that an end can be told from a failure.
    bool isUnknown() const { return !m_isAlive && m_playingSince.isValid() && !m_hasDuration && !m_moved; }
    bool hasBegun() const { return m_playingSince.isValid(); }
    /// Milliseconds since it began to play, if it has.
    qint64 age() const { return m_playingSince.elapsed(); }

private:
    // Milliseconds. What fails earlier than the one, or ends earlier than the other, did not play, whatever state the
    // player passed through.
    static constexpr qint64 FalseStart = 1000;
    static constexpr qint64 NoPlaying = 100;

    bool m_isAlive = false;
    QElapsedTimer m_playingSince;
    bool m_positionTold = false;
    bool m_moved = false; ///< the player has told of a position behind the item's beginning
    bool m_hasDuration = false;
    QHash<QString, QVariant> m_facts; ///< told last
    bool m_hasFactChanged = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>

/// Where an item ought to be now, going by where it was last known to be.
class PlayClock
{
public:
    void set(double seconds)
    {
        m_base = seconds;
        m_since.start();
    }
    void run(bool isRunning)
    {
        set(position());
        m_isRunning = isRunning;
    }
    void setRate(double rate)
    {
        set(position());
        m_rate = rate;
    }
    double position() const
    {
        return m_isRunning ? m_base + m_rate * double(m_since.elapsed()) / 1000 : m_base;
    }
    void reset() { *this = {}; }

private:
    double m_base = 0;
    double m_rate = 1;
    bool m_isRunning = false;
    QElapsedTimer m_since;
};

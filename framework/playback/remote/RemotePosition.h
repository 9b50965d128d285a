// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>

#include <algorithm>

/// Where the item in play is, by what the player said last and the time that has passed since. Seconds.
class RemotePosition
{
public:
    RemotePosition() { m_since.start(); }

    double now() const
    {
        const double passed = double(m_since.nsecsElapsed()) / 1e9;
        return std::max(0.0, m_base + (m_running ? passed * m_rate : 0));
    }
    void moveTo(double seconds)
    {
        m_base = seconds;
        m_since.start();
    }
    void setRunning(bool running)
    {
        moveTo(now());
        m_running = running;
    }
    bool isRunning() const { return m_running; }
    void setRate(double rate)
    {
        moveTo(now());
        m_rate = rate;
    }
    double rate() const { return m_rate; }

private:
    QElapsedTimer m_since;
    double m_base = 0;
    double m_rate = 1;
    bool m_running = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "Measurement.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>

/// An application that measures how long events keep its loop.
template <typename Base> class WatchedApplication : public Base
{
public:
    using Base::Base;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_isInEvent || this->thread() != QThread::currentThread())
            return Base::notify(receiver, event);
        m_isInEvent = true;
        QElapsedTimer timer;
        timer.start();
        const double busy = Measurement::workOfThread();
        const bool isDone = Base::notify(receiver, event);
        m_longest = std::max(m_longest, timer.nsecsElapsed());
        m_busiest = std::max(m_busiest, Measurement::workOfThread() - busy);
        m_isInEvent = false;
        return isDone;
    }
    void forget()
    {
        m_longest = 0;
        m_busiest = 0;
    }
    double longestMilliseconds() const { return double(m_longest) / 1e6; }
    /// Without the time that other programs took the processor away.
    double busiestMilliseconds() const { return m_busiest; }

private:
    bool m_isInEvent = false;
    qint64 m_longest = 0;
    double m_busiest = 0;
};

// SPDX-License-Identifier: MIT
#include "SimulatedClock.h"

#include <algorithm>

SimulatedClock::SimulatedClock(QObject *parent)
    : QObject(parent)
{
    m_elapsed.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SimulatedClock::runNext);
}

qint64 SimulatedClock::now() const
{
    return m_manual ? m_now : m_offset + m_elapsed.elapsed();
}

void SimulatedClock::setManual(bool manual)
{
    if (manual == m_manual)
        return;
    const qint64 time = now();
    m_manual = manual;
    m_now = m_target = time;
    m_offset = time - m_elapsed.elapsed();
    schedule();
}

quint64 SimulatedClock::after(qint64 milliseconds, QObject *context, Task task)
{
    const quint64 id = ++m_lastId;
    m_tasks.insert({{now() + std::max<qint64>(0, milliseconds), id}, {context, std::move(task)}});
    schedule();
    return id;
}

void SimulatedClock::cancel(quint64 id)
{
    std::erase_if(m_tasks, [id](const auto &task) { return task.first.second == id; });
}

void SimulatedClock::advance(qint64 milliseconds, QObject *context, Task arrived)
{
    m_target += std::max<qint64>(0, milliseconds);
    m_arrivals.push_back({context, std::move(arrived)});
    schedule();
}

/// Tasks that fall due up to here may run.
qint64 SimulatedClock::limit() const
{
    return m_manual ? m_target : now();
}

void SimulatedClock::schedule()
{
    const bool isTaskDue = !m_tasks.empty() && m_tasks.begin()->first.first <= limit();
    if (isTaskDue || !m_arrivals.empty())
        m_timer.start(0);
    else if (!m_tasks.empty() && !m_manual)
        m_timer.start(int(std::min<qint64>(m_tasks.begin()->first.first - now(), 60'000)));
    else
        m_timer.stop();
}

void SimulatedClock::runNext()
{
    if (m_tasks.empty() || m_tasks.begin()->first.first > limit()) {
        arrive();
        return;
    }
    auto node = m_tasks.extract(m_tasks.begin());
    m_now = std::max(m_now, node.key().first);
    // Before the task: afterwards this clock may be gone.
    schedule();
    if (node.mapped().context)
        node.mapped().task();
}

void SimulatedClock::arrive()
{
    m_now = m_target;
    const std::vector<Entry> arrivals = std::exchange(m_arrivals, {});
    schedule();
    for (const Entry &arrival : arrivals) {
        if (arrival.context)
            arrival.task();
    }
}

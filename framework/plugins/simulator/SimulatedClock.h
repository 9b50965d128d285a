// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <map>
#include <utility>
#include <vector>

/// The time of the simulation, in milliseconds since the clock was made.
///
/// It runs by itself or, when manual, only as far as advance() moves it. Tasks run from the event loop, one
/// per pass, in the order in which they fall due; those that fall due together in the order in which they
/// were given. A task may destroy the clock. GUI thread.
class SimulatedClock : public QObject
{
    Q_OBJECT
public:
    using Task = std::function<void()>;

    explicit SimulatedClock(QObject *parent = nullptr);

    qint64 now() const;
    bool isManual() const { return m_manual; }
    /// The time goes on from where it is.
    void setManual(bool manual);

    /// Runs the task when the given time has passed (0: in the next pass of the event loop, also when the
    /// clock is manual), unless the context is gone by then. Returns a number for cancel(), never 0.
    quint64 after(qint64 milliseconds, QObject *context, Task task);
    /// Unknown numbers and 0 are ignored.
    void cancel(quint64 id);

    /// Moves a manual clock and then runs the task `arrived`, after all that fell due on the way.
    void advance(qint64 milliseconds, QObject *context, Task arrived);

private:
    struct Entry
    {
        QPointer<QObject> context;
        Task task;
    };

    qint64 limit() const;
    void schedule();
    void runNext();
    void arrive();

    std::map<std::pair<qint64, quint64>, Entry> m_tasks; ///< by due time and number
    std::vector<Entry> m_arrivals;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
    qint64 m_offset = 0; ///< added to m_elapsed while time passes by itself
    qint64 m_now = 0; ///< manual time
    qint64 m_target = 0; ///< where the manual time is moved to
    quint64 m_lastId = 0;
    bool m_manual = false;
};

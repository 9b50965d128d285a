// SPDX-License-Identifier: MIT
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

/// Says in the log afterwards that the window answered nobody for a while, as when the X server stands still, which
/// toolkits wait for without a limit. GUI thread.
class StandstillLog : public QObject
{
public:
    StandstillLog();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    QBasicTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_busyAtTick = 0; ///< processor time of the thread, in milliseconds
};

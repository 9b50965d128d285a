// SPDX-License-Identifier: MIT
#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

/// Says in the log afterwards that the window answered nobody for a while, as when the X server stands still, which
/// toolkits wait for without a limit. Looks once a second as long as there are events; where nothing happens it does not
/// wake the program up. GUI thread.
class StandstillLog : public QObject
{
public:
    StandstillLog();

protected:
    void timerEvent(QTimerEvent *event) override;
    bool eventFilter(QObject *receiver, QEvent *event) override;

private:
    void begin();

    QBasicTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_busyAtTick = 0; ///< processor time of the thread, in milliseconds
    bool m_hasEvents = false; ///< since the last tick
};

// SPDX-License-Identifier: MIT
#include "StandstillLog.h"

#include "KelvoMessageHandler.h"

#include <QCoreApplication>

#include <ctime>
#include <utility>

namespace {
constexpr qint64 tick = 1000; // milliseconds
constexpr qint64 worthTelling = 1000;

qint64 processorTime()
{
    timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}
} // namespace

StandstillLog::StandstillLog()
{
    QCoreApplication::instance()->installEventFilter(this);
    begin();
}

void StandstillLog::begin()
{
    m_timer.start(int(tick), this);
    m_sinceTick.start();
    m_busyAtTick = processorTime();
}

bool StandstillLog::eventFilter(QObject *receiver, QEvent *)
{
    if (receiver == this)
        return false;
    m_hasEvents = true;
    if (!m_timer.isActive())
        begin();
    return false;
}

void StandstillLog::timerEvent(QTimerEvent *)
{
    const qint64 late = m_sinceTick.restart() - tick;
    const qint64 now = processorTime();
    const qint64 busy = now - m_busyAtTick;
    m_busyAtTick = now;
    if (!std::exchange(m_hasEvents, false))
        m_timer.stop();
    if (late < worthTelling)
        return;
    qCWarning(lcKelvo).noquote().nospace()
        << "The window stood still for " << double(late) / 1000 << " s: " << double(busy) / 1000
        << " s of work, the rest waiting for the X server or the machine";
}

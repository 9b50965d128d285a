// SPDX-License-Identifier: MIT
#include "QueryState.h"

#include <utility>

namespace {
// Blocks that may wait for the GUI thread; more would only cost memory.
constexpr int blocksInFlight = 3;

StoreError storeClosed()
{
    return {StoreError::Closed, QStringLiteral("The tracker store was closed")};
}
} // namespace

QueryState::Rest QueryState::demandRest()
{
    const std::lock_guard lock(m_mutex);
    switch (m_phase) {
    case Running:
    case Waiting:
        m_demanded = true;
        m_changed.notify_all();
        return Rest::Comes;
    case Kept:
        m_demanded = true;
        m_phase = Running;
        return Rest::IsKept;
    case Completed:
        return Rest::WasComplete;
    case Lost:
    case Failed:
        break;
    }
    return Rest::CannotCome;
}

QString QueryState::failure()
{
    const std::lock_guard lock(m_mutex);
    return m_phase == Lost ? storeClosed().message : m_failure;
}

void QueryState::noteTaken()
{
    const std::lock_guard lock(m_mutex);
    --m_waitingBlocks;
    m_changed.notify_all();
}

QString QueryState::takeNotice()
{
    const std::lock_guard lock(m_mutex);
    return m_cancelled ? QString() : std::exchange(m_notice, {});
}

QString QueryState::cancel()
{
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    m_cancellation.cancel();
    m_changed.notify_all();
    return std::exchange(m_notice, {});
}

bool QueryState::isCancelled()
{
    const std::lock_guard lock(m_mutex);
    return m_cancelled;
}

bool QueryState::hasLostItsStore()
{
    const std::lock_guard lock(m_mutex);
    return m_phase == Lost;
}

void QueryState::interrupt()
{
    const std::lock_guard lock(m_mutex);
    m_interrupted = true;
    m_cancellation.cancel();
    m_changed.notify_all();
}

void QueryState::setNotice(const QString &notice)
{
    const std::lock_guard lock(m_mutex);
    m_notice = notice;
}

bool QueryState::isStopped()
{
    const std::lock_guard lock(m_mutex);
    return mustStop();
}

bool QueryState::waitForRoom()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return mustStop() || m_waitingBlocks < blocksInFlight; });
    if (mustStop())
        return false;
    ++m_waitingBlocks;
    return true;
}

QueryState::Demand QueryState::waitForDemand(std::chrono::milliseconds idleTime)
{
    std::unique_lock lock(m_mutex);
    m_phase = Waiting;
    m_changed.wait_for(lock, idleTime, [this] { return mustStop() || m_demanded; });
    if (mustStop())
        return Demand::Never;
    if (!m_demanded)
        return Demand::Later;
    m_phase = Running;
    return Demand::Now;
}

bool QueryState::park()
{
    const std::lock_guard lock(m_mutex);
    m_interrupted = false;
    m_phase = m_demanded ? Running : Kept;
    return m_demanded;
}

QueryState::End QueryState::end(Outcome outcome, const StoreError &error)
{
    const std::lock_guard lock(m_mutex);
    if (m_cancelled)
        return {};
    const StoreError why = error.kind == StoreError::Cancelled ? storeClosed() : error;
    const bool isAwaited = m_phase != Waiting || m_demanded;
    if (!isAwaited && why.kind == StoreError::Closed)
        m_phase = Lost;
    else
        m_phase = outcome == Outcome::Completed ? Completed : Failed;
    m_failure = why.message;
    return {isAwaited || outcome == Outcome::Completed, why};
}

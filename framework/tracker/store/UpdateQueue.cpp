// SPDX-License-Identifier: MIT
#include "UpdateQueue.h"

#include "KelvoMessageHandler.h"
#include "StoreSession.h"

namespace {
// More than is played in a month; what waits longer has no disk that will come back.
constexpr size_t maximumWaiting = 10'000;
} // namespace

void UpdateQueue::run(const std::shared_ptr<StoreSession> &session, Update update)
{
    runWaiting(session);
    if (isEmpty() && tryUpdate(session, update) != Refused)
        return;
    if (isEmpty())
        qCWarning(lcKelvo).noquote() << "The tracker store was not updated, and will be later:" << m_reason;
    if (m_waiting.size() < maximumWaiting)
        m_waiting.push_back(std::move(update));
}

void UpdateQueue::runWaiting(const std::shared_ptr<StoreSession> &session)
{
    const size_t before = m_waiting.size();
    while (!isEmpty() && tryUpdate(session, m_waiting.front()) == Done)
        m_waiting.pop_front();
    if (before > 0 && isEmpty())
        qCInfo(lcKelvo) << "The tracker store is up to date again, updates made up for:" << before;
}

void UpdateQueue::discard()
{
    if (!isEmpty())
        qCWarning(lcKelvo).noquote() << "Updates of the tracker store are lost:" << m_waiting.size() << '-'
                                     << m_reason;
    m_waiting.clear();
}

UpdateQueue::Outcome UpdateQueue::tryUpdate(
    const std::shared_ptr<StoreSession> &session, const Update &update)
{
    StoreError error;
    StoreSession::Entry entry = session->enter([] {}, &error);
    if (entry)
        update(entry.connection(), &error);
    entry.leave();
    if (!error)
        return Done;
    if (error.kind == StoreError::Closed)
        return Closed;
    error = session->report(error);
    m_reason = error.message;
    // A store that seems damaged is looked at, and opened or made anew.
    if (error.mayPass() || error.kind == StoreError::Damaged)
        return Refused;
    qCWarning(lcKelvo).noquote() << "The tracker store was not updated:" << error.message;
    return Done;
}

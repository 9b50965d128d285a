// SPDX-License-Identifier: MIT
#include "StoreSession.h"

void StoreSession::Entry::leave()
{
    if (!m_session)
        return;
    // Declared before the lock, so that the session outlives it even when this was its last user.
    const std::shared_ptr<StoreSession> session = std::move(m_session);
    m_connection.reset();
    const std::lock_guard lock(session->m_mutex);
    session->m_inside.erase(m_interrupt);
    session->m_changed.notify_all();
}

StoreSession::Entry StoreSession::enter(std::function<void()> interrupt, StoreError *error)
{
    Entry entry;
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_state != Opening; });
    if (m_state == Open) {
        entry.m_session = shared_from_this();
        entry.m_connection = m_connection;
        entry.m_interrupt = m_inside.insert(m_inside.end(), std::move(interrupt));
    } else if (m_state == Failed) {
        *error = m_error;
    } else {
        *error = {StoreError::Closed, QStringLiteral("The tracker store is closed")};
    }
    return entry;
}

StoreError StoreSession::judge(const StoreError &error) const
{
    QString folder;
    {
        const std::lock_guard lock(m_mutex);
        folder = m_folder;
    }
    const StoreError disk
        = error.kind == StoreError::Damaged && !folder.isEmpty() ? StoreFolder::probe(folder) : StoreError();
    return disk ? disk : error;
}

StoreError StoreSession::report(const StoreError &error)
{
    StoreError found = judge(error);
    std::function<void(StoreError)> handler;
    {
        const std::lock_guard lock(m_mutex);
        if (found.needsRebuilding())
            handler = std::exchange(m_damageHandler, nullptr); // once is enough
    }
    if (handler)
        handler(found);
    return found;
}

StoreError StoreSession::checkFiles() const
{
    const std::lock_guard lock(m_mutex);
    if (m_state != Open || !StoreFolder::canBeListed(m_folder)
        || StoreFolder::identity(m_folder) == m_identity)
        return {};
    return {StoreError::Gone,
        QStringLiteral(
            "The files of the tracker store were deleted while it was in use; it is being rebuilt")};
}

void StoreSession::opened(const QString &folder, std::shared_ptr<StoreConnection> connection,
    std::unique_ptr<StoreFolder::Lock> ownerLock)
{
    const std::lock_guard lock(m_mutex);
    m_folder = folder;
    m_identity = StoreFolder::identity(folder);
    m_lock = std::move(ownerLock);
    m_connection = std::move(connection);
    m_state = Open;
    m_changed.notify_all();
}

void StoreSession::failed(const StoreError &error)
{
    const std::lock_guard lock(m_mutex);
    m_error = error;
    m_state = Failed;
    m_changed.notify_all();
}

void StoreSession::close()
{
    std::unique_lock lock(m_mutex);
    m_state = Closed;
    m_damageHandler = nullptr;
    m_changed.notify_all();
    // Called with the lock held, so that none of them can leave, and be destroyed, in the middle of its call.
    for (const auto &interrupt : m_inside)
        interrupt();
    m_changed.wait(lock, [this] { return m_inside.empty(); });
    const std::unique_ptr<StoreFolder::Lock> ownerLock = std::move(m_lock);
    std::shared_ptr<StoreConnection> connection = std::move(m_connection);
    lock.unlock();
    connection.reset();
}

void StoreSession::setDamageHandler(std::function<void(StoreError)> handler)
{
    const std::lock_guard lock(m_mutex);
    m_damageHandler = std::move(handler);
}

void StoreSession::setNotice(const QString &text)
{
    const std::lock_guard lock(m_mutex);
    m_notice = text;
}

QString StoreSession::takeNotice()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_notice, QString());
}

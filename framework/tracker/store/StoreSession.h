// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "StoreConnection.h"
#include "StoreError.h"
#include "StoreFolder.h"

#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>

/// One opening of the store, shared by everything that reads or writes it. Any thread.
///
/// Work enters the session and leaves it; closing calls off what is inside, waits until all have left, and then
/// closes the connection.
class KELVO_TRACKER_EXPORT StoreSession : public std::enable_shared_from_this<StoreSession>
{
public:
    /// Held by work for as long as it uses the connection.
    class KELVO_TRACKER_EXPORT Entry
    {
    public:
        Entry() = default;
        Entry(Entry &&) noexcept = default;
        Entry &operator=(Entry &&) = delete;
        ~Entry() { leave(); }

        explicit operator bool() const { return m_session != nullptr; }
        StoreConnection *operator->() const { return m_connection.get(); }
        StoreConnection &connection() const { return *m_connection; }
        void leave();

    private:
        friend class StoreSession;
        std::shared_ptr<StoreSession> m_session;
        std::shared_ptr<StoreConnection> m_connection;
        std::list<std::function<void()>>::iterator m_interrupt;
    };

    /// Waits while the store is being opened. `interrupt` is called, from another thread, when the session is
    /// closed: the work must then leave soon. An empty entry and *error when the store is not open.
    Entry enter(std::function<void()> interrupt, StoreError *error);

    /// Whether the store's files are still those that were opened; Gone when they were deleted or replaced.
    StoreError checkFiles() const;

    /// What an error is found to be: what the library reads of a disk that fails looks like damage to it. Tries the
    /// disk when damage is told, so not for the GUI thread.
    StoreError judge(const StoreError &error) const;
    /// Reports what an operation failed with, and returns what it is found to be; damage found in passing leads to a
    /// new store.
    StoreError report(const StoreError &error);

    // For the owner:
    /// The lock is null for a store that belongs to another process; it is given free after the connection.
    void opened(const QString &folder, std::shared_ptr<StoreConnection> connection,
        std::unique_ptr<StoreFolder::Lock> lock);
    void failed(const StoreError &error);
    /// Blocks until all work has left.
    void close();
    void setDamageHandler(std::function<void(StoreError)> handler);

    /// A text that the next query shows, once: what became of a damaged store.
    void setNotice(const QString &text);
    QString takeNotice();

private:
    enum State { Opening, Open, Failed, Closed };

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = Opening;
    StoreError m_error;
    QString m_folder;
    QByteArray m_identity;
    std::unique_ptr<StoreFolder::Lock> m_lock;
    std::shared_ptr<StoreConnection> m_connection;
    std::list<std::function<void()>> m_inside;
    std::function<void(StoreError)> m_damageHandler;
    QString m_notice;
};

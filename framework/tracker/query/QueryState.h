// SPDX-License-Identifier: MIT
#pragma once

#include "../store/StoreConnection.h"
#include "../store/StoreError.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <mutex>

/// How far a query has come, and what its two threads want of each other: the GUI thread, which asks for rows and takes
/// them, and the worker thread, which reads them.
///
/// All of it is under one lock. Each function takes it for itself and gives it back before it returns; nothing of others
/// is called with it held but StoreCancellation::cancel(). Only the functions of the worker thread wait.
class QueryState
{
public:
    /// What becomes of fetchRest().
    enum class Rest {
        Comes, ///< the worker has been told
        IsKept, ///< it is in memory, to be handed over now
        WasComplete, ///< nothing remains
        CannotCome, ///< see failure()
    };
    enum class Demand { Now, Later, Never };
    enum class Outcome { Completed, Failed };

    // GUI thread
    Rest demandRest();
    /// Why the query failed, or its rest cannot come any more.
    QString failure();
    /// A block was taken over: there is room for another one.
    void noteTaken();
    /// The text that follows the rows, once; empty when the query was cancelled meanwhile.
    QString takeNotice();
    /// The query is to end, and nothing is told any more. The notice that was not told.
    QString cancel();
    bool isCancelled();
    /// The store was closed before the rest was asked for.
    bool hasLostItsStore();

    // Any thread
    /// The store is being closed: the query is to end.
    void interrupt();

    // Worker thread
    const StoreCancellation &cancellation() const { return m_cancellation; }
    void setNotice(const QString &notice);
    bool isStopped();
    /// Waits until another block may be handed over, and counts it; false when stopped.
    bool waitForRoom();
    /// After the first block: waits for fetchRest(), with the cursor open. Later: nobody has asked in this time.
    Demand waitForDemand(std::chrono::milliseconds idleTime);
    /// The rest is in memory, so that what becomes of the store does not matter any more. True when it is to be handed over
    /// at once, otherwise demandRest() says when.
    bool park();

    /// What is told at the end.
    struct End
    {
        bool isTold = false; ///< by the worker, otherwise by fetchRest() or not at all
        StoreError error;
    };
    /// What was called off counts as a store that was closed.
    End end(Outcome outcome, const StoreError &error);

private:
    enum Phase {
        Running,
        Waiting, ///< for fetchRest(); with an open cursor, at first
        Kept, ///< the same, with the rest in memory
        Lost, ///< the same, with the store closed
        Completed,
        Failed,
    };

    bool mustStop() const { return m_cancelled || m_interrupted; }

    StoreCancellation m_cancellation; // has a lock of its own
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Phase m_phase = Running;
    QString m_failure;
    QString m_notice;
    bool m_demanded = false;
    bool m_cancelled = false; // by cancel()
    bool m_interrupted = false; // by the session's end
    int m_waitingBlocks = 0;
};

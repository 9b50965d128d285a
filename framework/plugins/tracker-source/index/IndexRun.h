// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerStore.h"
#include "store/StoreConnection.h"
#include "store/StoreIndexing.h"

#include <atomic>
#include <memory>

class StoreSession;

/// One run of the indexer, from its start until it is stopped or fails: how it is told to end, and how it tells what
/// became of it. The indexer's thread, where nothing else is said.
class IndexRun
{
public:
    IndexRun(std::shared_ptr<StoreSession> session, StoreIndexing::Report report);

    StoreSession &session() const { return *m_session; }

    /// Any thread; for good. Also calls off a query that runs with the cancellation.
    void stop();
    /// Any thread.
    bool isStopped() const { return m_stopped; }
    const StoreCancellation &cancellation() const { return m_cancellation; }

    /// After each pass.
    void report(const KelvoIndexReport &pass) const { m_report(pass); }
    /// The store cannot be written, or not be read: goes into the log, and damage leads to a new store. Always false.
    bool fail(const StoreError &error) const;
    /// False, and reported, when the store's files have gone: nothing that is written would last.
    bool hasItsStore() const;

private:
    const std::shared_ptr<StoreSession> m_session;
    const StoreIndexing::Report m_report;
    std::atomic<bool> m_stopped{false};
    StoreCancellation m_cancellation;
};

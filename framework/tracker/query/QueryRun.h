// SPDX-License-Identifier: MIT
#pragma once

#include "../store/StoreSession.h"
#include "GuiMailbox.h"
#include "KelvoTrackerGlobal.h"
#include "RowBlock.h"

#include <QByteArray>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

/// What a query asks and how its rows come.
struct QueryPlan
{
    QByteArray text;
    /// Types of the columns; empty: as many as the query has, of any type.
    std::vector<CellType> columns;
    /// The query has a place "~uri" for the resource with the given id; there is none for ids below 1.
    bool hasSubject = false;
    int id = 0;
    /// Rows that come by themselves, and rows of each later block. 0 (or less): no limit.
    int firstBlock = 0;
    int streamBlock = 0;
};

/// A query that runs on a thread of its own with one open cursor, and hands its rows to an object of the GUI
/// thread: the first block by itself, the rest after fetchRest().
///
/// No more than a few blocks wait to be taken over. A cursor that nobody wants rows of is closed after a while
/// (it keeps old pages of the store in use); fetchRest() then runs the query again and skips what was handed over.
class QueryRun : public std::enable_shared_from_this<QueryRun>
{
public:
    /// Called on the GUI thread.
    struct Client
    {
        std::function<void(std::shared_ptr<const RowBlock>)> rows;
        std::function<void()> completed;
        std::function<void(const QString &)> failed;
    };

    /// GUI thread. `receiver` is what the calls belong to; it calls cancel() before it is destroyed.
    static std::shared_ptr<QueryRun> start(
        std::shared_ptr<StoreSession> session, QueryPlan plan, QObject *receiver, Client client);
    /// GUI thread. Ends with completed() or failed(), also when everything is there already.
    void fetchRest();
    /// GUI thread. Returns at once; nothing is called afterwards.
    void cancel();

    /// How long an open cursor waits for fetchRest().
    KELVO_TRACKER_EXPORT static void setIdleTimeout(int milliseconds);

private:
    enum State { Running, Waiting, Parked, Completed, Failed };

    QueryRun(std::shared_ptr<StoreSession> session, QueryPlan plan, QObject *receiver, Client client);

    // Worker thread
    void launch();
    void run();
    void stream(StoreSession::Entry &entry);
    StoreCursor open(const StoreConnection &connection, bool *empty);
    bool readBlocks(StoreCursor &cursor, int limit, int pieces, bool *more);
    bool handOver(std::shared_ptr<RowBlock> block);
    bool waitForDemand();
    void end(State state, const StoreError &error = {});
    void interrupt();
    bool isStopped();

    // GUI thread
    void taken(const std::shared_ptr<const RowBlock> &block);

    const std::shared_ptr<StoreSession> m_session;
    const QueryPlan m_plan;
    const Client m_client;
    GuiMailbox m_mailbox;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::shared_ptr<StoreCancellation> m_cancellation;
    State m_state = Running;
    QString m_failure;
    bool m_demanded = false;
    bool m_cancelled = false; // by cancel()
    bool m_interrupted = false; // by the session's end
    bool m_noticed = false;
    int m_waitingBlocks = 0;
    qint64 m_handedOver = 0;
};

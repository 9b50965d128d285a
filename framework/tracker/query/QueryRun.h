// SPDX-License-Identifier: MIT
#pragma once

#include "../remote/RemoteAnswers.h"
#include "../remote/RemoteCursor.h"
#include "../store/StoreSession.h"
#include "Mailbox.h"
#include "QueryState.h"
#include "RowBlock.h"
#include "RowReader.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

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
    /// How long an open cursor waits for fetchRest().
    std::chrono::milliseconds idleTime = std::chrono::seconds(30);
    /// Told after the rows; what the session has to tell comes in its place.
    QString notice;
    /// A shorter way to the same rows, where what they show is kept in the store; tried first. Empty: there is none.
    struct Shortcut
    {
        QByteArray text;
        std::vector<CellSource> sources = {}; ///< for each of the columns
    };
    Shortcut shortcut = {};
    /// Asked the same; their rows follow.
    RemoteLibraries libraries = {};
    RemoteLimits limits = {};
};

/// A query that runs on a thread of its own with one open cursor, and hands its rows to an object of the GUI
/// thread: the first block by itself, the rest after fetchRest(). All rows are those of the moment at which it began.
///
/// No more than a few blocks wait to be taken over. A cursor that nobody wants rows of is closed after a while, because
/// it keeps old pages of the store in use: the rest is read into memory before, since a later query may have others.
///
/// Libraries on other machines are asked at the same time, and their rows come behind those of the store. What one of them
/// fails with is told when all rows are there. A resource of theirs is known to them alone, and nobody else is asked.
class QueryRun : public std::enable_shared_from_this<QueryRun>
{
public:
    ~QueryRun();
    Q_DISABLE_COPY_MOVE(QueryRun)

    /// Called on the GUI thread; the last call is completed() or failed(). What became of a damaged store, and what
    /// libraries on other machines failed with, is told by failed() after completed().
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
    /// GUI thread. Returns at once; nothing is called afterwards. News that were not told are left to the next query.
    void cancel();
    /// The store was closed before the rest was asked for, so that fetchRest() can only fail.
    bool hasLostItsStore();

private:
    QueryRun(std::shared_ptr<StoreSession> session, QueryPlan plan, QObject *receiver, Client client);

    // Worker thread
    void launch();
    void run();
    void askLibraries();
    void stream(StoreSession::Entry &entry);
    StoreCursor open(const StoreConnection &connection, bool *more);
    StoreCursor openShortcut(const StoreConnection &connection, const StoreConnection::Bindings &bindings,
        bool *more, StoreError *error);
    bool readBlocks(RowCursor &cursor, int pieces, bool *more);
    void finish();
    bool readLibraries();
    bool handOver(std::shared_ptr<RowBlock> block);
    bool keep(std::shared_ptr<RowBlock> block);
    void handOverKept();
    void complete();
    // Both return false.
    bool fail(const StoreError &error);
    bool failStopped();

    template <class Function> void tell(Function function);

    // GUI thread
    void taken(const std::shared_ptr<const RowBlock> &block);
    void tellCompletion();

    const std::shared_ptr<StoreSession> m_session;
    const QueryPlan m_plan;
    const Client m_client;
    Mailbox m_mailbox;
    QueryState m_state;
    // Of the worker thread
    bool m_tookShortcut = false;
    // The rest that was read before somebody wanted it.
    bool m_keeps = false;
    std::vector<std::shared_ptr<RowBlock>> m_kept;
    int m_quota; ///< rows that still come by themselves; below 0: all
    std::mutex m_answersMutex; ///< the worker thread sets the pointer once, the GUI thread reads it
    /// Of the libraries on other machines; null: none is asked.
    std::shared_ptr<RemoteAnswers> m_answers;
    std::unique_ptr<RemoteCursor> m_remote;
    bool m_isAtRemoteRow = false;
    QString m_remoteFailure; ///< written before its end is told, then of the GUI thread
};

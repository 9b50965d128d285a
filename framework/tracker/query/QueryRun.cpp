// SPDX-License-Identifier: MIT
#include "QueryRun.h"

#include "../store/TrackerThreads.h"
#include "KelvoMessageHandler.h"

namespace {
// Without a limit the rows still come in pieces that the GUI thread takes over without a visible pause.
constexpr int pieceSize = 2000;
} // namespace

QueryRun::QueryRun(std::shared_ptr<StoreSession> session, QueryPlan plan, QObject *receiver, Client client)
    : m_session(std::move(session))
    , m_plan(std::move(plan))
    , m_client(std::move(client))
    , m_mailbox(receiver)
{
}

std::shared_ptr<QueryRun> QueryRun::start(
    std::shared_ptr<StoreSession> session, QueryPlan plan, QObject *receiver, Client client)
{
    std::shared_ptr<QueryRun> query(
        new QueryRun(std::move(session), std::move(plan), receiver, std::move(client)));
    query->launch();
    return query;
}

void QueryRun::launch()
{
    TrackerThreads::run([self = shared_from_this()] { self->run(); });
}

template <class Function> void QueryRun::tell(Function function)
{
    m_mailbox.post([self = shared_from_this(), function = std::move(function)] {
        if (!self->m_state.isCancelled()) // posted before, delivered after it
            function();
    });
}

void QueryRun::fetchRest()
{
    switch (m_state.demandRest()) {
    case QueryState::Rest::Comes:
        break;
    case QueryState::Rest::IsKept:
        TrackerThreads::run([self = shared_from_this()] { self->handOverKept(); });
        break;
    case QueryState::Rest::WasComplete:
        tell([this] { tellCompletion(); });
        break;
    case QueryState::Rest::CannotCome:
        tell([this] { m_client.failed(m_state.failure()); });
        break;
    }
}

void QueryRun::cancel()
{
    m_mailbox.close();
    const QString untold = m_state.cancel();
    if (!untold.isEmpty() && untold != m_plan.notice)
        m_session->setNotice(untold);
}

bool QueryRun::hasLostItsStore()
{
    return m_state.hasLostItsStore();
}

void QueryRun::run()
{
    StoreError error;
    StoreSession::Entry entry = m_session->enter([this] { m_state.interrupt(); }, &error);
    if (!entry || (error = m_session->checkFiles()))
        fail(error);
    else if (m_state.isStopped())
        failStopped();
    else
        stream(entry);
}

void QueryRun::stream(StoreSession::Entry &entry)
{
    const QString news = m_session->takeNotice();
    m_state.setNotice(news.isEmpty() ? m_plan.notice : news);
    bool more = false;
    StoreCursor cursor = open(entry.connection(), &more);
    if (!cursor)
        return;
    const int first = m_plan.firstBlock;
    if (!readBlocks(cursor, first, first > 0 ? first : pieceSize, &more))
        return;
    if (more) {
        const auto demand = m_state.waitForDemand(m_plan.idleTime);
        if (demand == QueryState::Demand::Never) {
            failStopped();
            return;
        }
        m_keeps = demand == QueryState::Demand::Later;
        const int block = m_plan.streamBlock > 0 ? m_plan.streamBlock : pieceSize;
        if (!readBlocks(cursor, 0, block, &more))
            return; // the cursor closes before the entry is left
    }
    cursor = {};
    entry.leave();
    if (!m_keeps)
        complete();
    else if (m_state.park())
        handOverKept();
    else
        qCDebug(lcKelvo) << "The rest of a query waits in memory, its cursor is closed";
}

// Opens the cursor and goes to the first row; *more: there is one.
StoreCursor QueryRun::open(const StoreConnection &connection, bool *more)
{
    StoreError error;
    StoreConnection::Bindings bindings;
    *more = false;
    if (m_plan.hasSubject) {
        QByteArray uri;
        if (m_plan.id > 0)
            uri = connection.selectOne(
                "SELECT tracker:uri(" + QByteArray::number(m_plan.id) + ") {}", &error);
        if (error || uri.isEmpty()) {
            // No such resource, or no longer: a result without rows.
            if (error)
                fail(error);
            else
                complete();
            return {};
        }
        bindings.emplace_back("uri", uri);
    }
    StoreCursor cursor = connection.select(m_plan.text, bindings, &m_state.cancellation(), &error);
    *more = cursor && cursor.next(&error);
    if (error) {
        fail(error);
        return {};
    }
    return cursor;
}

// From the row that the cursor stands on: up to `limit` rows (0: all) in blocks of `pieces`. False when it was
// called off or failed; *more: the cursor stands on a further row.
bool QueryRun::readBlocks(StoreCursor &cursor, int limit, int pieces, bool *more)
{
    std::vector<CellType> columns = m_plan.columns;
    QStringList names;
    if (columns.empty()) {
        columns.assign(size_t(cursor.columnCount()), CellType::Any);
        for (int column = 0; column < cursor.columnCount(); ++column)
            names.append(QString::fromUtf8(cursor.name(column)));
    }
    StoreError error;
    int rows = 0;
    while (*more && (limit <= 0 || rows < limit)) {
        auto block = std::make_shared<RowBlock>(columns);
        block->setNames(names);
        do {
            block->append(cursor);
            ++rows;
            *more = cursor.next(&error);
        } while (*more && block->rowCount() < pieces && (limit <= 0 || rows < limit));
        if (!handOver(std::move(block)))
            return false;
    }
    return !error || fail(error);
}

bool QueryRun::handOver(std::shared_ptr<RowBlock> block)
{
    block->finish();
    if (m_keeps)
        return keep(std::move(block));
    if (!m_state.waitForRoom())
        return failStopped();
    tell([this, block = std::move(block)] { taken(block); });
    return true;
}

void QueryRun::taken(const std::shared_ptr<const RowBlock> &block)
{
    m_state.noteTaken();
    m_client.rows(block);
}

bool QueryRun::keep(std::shared_ptr<RowBlock> block)
{
    if (m_state.isStopped())
        return failStopped();
    m_kept.push_back(std::move(block));
    return true;
}

void QueryRun::handOverKept()
{
    m_keeps = false;
    for (std::shared_ptr<RowBlock> &block : std::exchange(m_kept, {})) {
        if (!handOver(std::move(block)))
            return;
    }
    complete();
}

void QueryRun::complete()
{
    if (m_state.end(QueryState::Outcome::Completed, {}).isTold)
        tell([this] { tellCompletion(); });
}

bool QueryRun::fail(const StoreError &error)
{
    m_kept.clear();
    const QueryState::End end = m_state.end(QueryState::Outcome::Failed, error);
    m_session->report(end.error);
    if (end.isTold)
        tell([this] { m_client.failed(m_state.failure()); });
    return false;
}

bool QueryRun::failStopped()
{
    return fail({StoreError::Cancelled, {}});
}

void QueryRun::tellCompletion()
{
    m_client.completed();
    // What was completed may be gone by now.
    const QString notice = m_state.takeNotice();
    if (!notice.isEmpty())
        m_client.failed(notice);
}

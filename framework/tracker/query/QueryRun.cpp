// SPDX-License-Identifier: MIT
#include "QueryRun.h"

#include "../store/TrackerThreads.h"

#include <atomic>
#include <chrono>

namespace {
// Blocks that may wait for the GUI thread; more would only cost memory.
constexpr int blocksInFlight = 3;
// Without a limit the rows still come in pieces that the GUI thread takes over without a visible pause.
constexpr int pieceSize = 2000;

std::atomic<int> idleTimeout{30'000};

StoreError storeClosed()
{
    return {StoreError::Closed, QStringLiteral("The tracker store was closed")};
}
} // namespace

void QueryRun::setIdleTimeout(int milliseconds)
{
    idleTimeout = milliseconds;
}

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
    const std::shared_ptr<QueryRun> query(
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
        if (!self->isCancelled()) // posted before, delivered after it
            function();
    });
}

void QueryRun::fetchRest()
{
    const std::lock_guard lock(m_mutex);
    switch (m_state) {
    case Running:
        m_demanded = true;
        break;
    case Waiting:
        m_demanded = true;
        m_changed.notify_all();
        break;
    case Kept:
        m_demanded = true;
        m_state = Running;
        TrackerThreads::run([self = shared_from_this()] { self->handOverKept(); });
        break;
    case Lost:
        tell([this] { m_client.failed(storeClosed().message); });
        break;
    case Completed:
        tell([this] { tellCompletion(); });
        break;
    case Failed:
        tell([this] { m_client.failed(m_failure); });
        break;
    }
}

void QueryRun::cancel()
{
    m_mailbox.close();
    QString untold;
    {
        const std::lock_guard lock(m_mutex);
        m_cancelled = true;
        untold = std::exchange(m_notice, {});
        if (m_cancellation)
            m_cancellation->cancel();
        m_changed.notify_all();
    }
    if (!untold.isEmpty() && untold != m_plan.notice)
        m_session->setNotice(untold);
}

bool QueryRun::hasLostItsStore()
{
    const std::lock_guard lock(m_mutex);
    return m_state == Lost;
}

void QueryRun::interrupt()
{
    const std::lock_guard lock(m_mutex);
    m_interrupted = true;
    if (m_cancellation)
        m_cancellation->cancel();
    m_changed.notify_all();
}

bool QueryRun::isCancelled()
{
    const std::lock_guard lock(m_mutex);
    return m_cancelled;
}

bool QueryRun::isStopped()
{
    const std::lock_guard lock(m_mutex);
    return m_cancelled || m_interrupted;
}

void QueryRun::run()
{
    const auto cancellation = std::make_shared<StoreCancellation>();
    {
        const std::lock_guard lock(m_mutex);
        m_cancellation = cancellation;
    }
    StoreError error;
    StoreSession::Entry entry = m_session->enter([this] { interrupt(); }, &error);
    if (!entry) {
        end(Failed, error);
        return;
    }
    if ((error = m_session->checkFiles()))
        end(Failed, error);
    else if (isStopped())
        end(Failed, {StoreError::Closed, QStringLiteral("The tracker store was closed")});
    else
        stream(entry);
}

void QueryRun::stream(StoreSession::Entry &entry)
{
    const QString news = m_session->takeNotice();
    {
        const std::lock_guard lock(m_mutex);
        m_notice = news.isEmpty() ? m_plan.notice : news;
    }
    bool more = false;
    StoreCursor cursor = open(entry.connection(), &more);
    if (!cursor)
        return;
    const int first = m_plan.firstBlock;
    if (!readBlocks(cursor, first, first > 0 ? first : pieceSize, &more))
        return;
    if (more) {
        const Demand demand = waitForDemand();
        m_keeps = demand == Demand::Later;
        const int block = m_plan.streamBlock > 0 ? m_plan.streamBlock : pieceSize;
        if (demand == Demand::Never || !readBlocks(cursor, 0, block, &more))
            return; // the cursor closes before the entry is left
    }
    cursor = {};
    entry.leave();
    if (m_keeps)
        park();
    else
        end(Completed);
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
            end(error ? Failed : Completed, error);
            return {};
        }
        bindings.emplace_back("uri", uri);
    }
    StoreCursor cursor = connection.select(m_plan.text, bindings, m_cancellation.get(), &error);
    *more = cursor && cursor.next(&error);
    if (error) {
        end(Failed, error);
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
    if (error)
        end(Failed, error);
    return !error;
}

bool QueryRun::handOver(std::shared_ptr<RowBlock> block)
{
    block->finish();
    if (m_keeps)
        return keep(std::move(block));
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_cancelled || m_interrupted || m_waitingBlocks < blocksInFlight; });
    if (m_cancelled)
        return false;
    if (m_interrupted) {
        lock.unlock();
        end(Failed, storeClosed());
        return false;
    }
    ++m_waitingBlocks;
    tell([this, block = std::move(block)] { taken(block); });
    return true;
}

void QueryRun::taken(const std::shared_ptr<const RowBlock> &block)
{
    {
        const std::lock_guard lock(m_mutex);
        --m_waitingBlocks;
        m_changed.notify_all();
    }
    m_client.rows(block);
}

QueryRun::Demand QueryRun::waitForDemand()
{
    std::unique_lock lock(m_mutex);
    m_state = Waiting;
    const auto wanted = [this] {
        return m_cancelled || m_interrupted || m_demanded;
    };
    m_changed.wait_for(lock, std::chrono::milliseconds(idleTimeout), wanted);
    if (m_cancelled || m_interrupted) {
        lock.unlock();
        end(Failed, storeClosed());
        return Demand::Never;
    }
    if (!m_demanded)
        return Demand::Later;
    m_state = Running;
    return Demand::Now;
}

bool QueryRun::keep(std::shared_ptr<RowBlock> block)
{
    if (isStopped()) {
        end(Failed, storeClosed());
        return false;
    }
    m_kept.push_back(std::move(block));
    return true;
}

void QueryRun::park()
{
    {
        const std::lock_guard lock(m_mutex);
        m_interrupted = false; // everything is there: what becomes of the store does not matter any more
        m_state = m_demanded ? Running : Kept;
        if (!m_demanded)
            return;
    }
    handOverKept();
}

void QueryRun::handOverKept()
{
    m_keeps = false;
    for (std::shared_ptr<RowBlock> &block : std::exchange(m_kept, {})) {
        if (!handOver(std::move(block)))
            return;
    }
    end(Completed);
}

void QueryRun::end(State state, const StoreError &error)
{
    StoreError told = error;
    bool isAwaited = true;
    {
        const std::lock_guard lock(m_mutex);
        if (m_cancelled)
            return;
        if (told.kind == StoreError::Cancelled)
            told = storeClosed();
        isAwaited = m_state != Waiting || m_demanded;
        m_state = !isAwaited && told.kind == StoreError::Closed ? Lost : state;
        m_failure = told.message;
        m_kept.clear();
    }
    if (state == Failed) {
        m_session->report(told);
        if (isAwaited) // otherwise fetchRest() says it
            tell([this] { m_client.failed(m_failure); });
    } else {
        tell([this] { tellCompletion(); });
    }
}

void QueryRun::tellCompletion()
{
    m_client.completed();
    QString notice;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_cancelled) // what was completed may be gone by now
            notice = std::exchange(m_notice, {});
    }
    if (!notice.isEmpty())
        m_client.failed(notice);
}

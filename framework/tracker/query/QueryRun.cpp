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
    case Parked:
        m_demanded = true;
        m_state = Running;
        launch();
        break;
    case Completed:
        m_mailbox.post([self = shared_from_this()] { self->m_client.completed(); });
        break;
    case Failed:
        m_mailbox.post([self = shared_from_this()] { self->m_client.failed(self->m_failure); });
        break;
    }
}

void QueryRun::cancel()
{
    m_mailbox.close();
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    if (m_cancellation)
        m_cancellation->cancel();
    m_changed.notify_all();
}

void QueryRun::interrupt()
{
    const std::lock_guard lock(m_mutex);
    m_interrupted = true;
    if (m_cancellation)
        m_cancellation->cancel();
    m_changed.notify_all();
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
    const QString notice = m_noticed ? QString() : m_session->takeNotice();
    m_noticed = true;
    if (!notice.isEmpty())
        m_mailbox.post([self = shared_from_this(), notice] { self->m_client.failed(notice); });

    bool more = false;
    StoreCursor cursor = open(entry.connection(), &more);
    if (!cursor)
        return;
    if (m_handedOver == 0 && more) {
        const int first = m_plan.firstBlock;
        if (!readBlocks(cursor, first, first > 0 ? first : pieceSize, &more))
            return;
    }
    if (more && !waitForDemand())
        return; // the cursor closes before the entry is left
    if (more) {
        const int block = m_plan.streamBlock > 0 ? m_plan.streamBlock : pieceSize;
        if (!readBlocks(cursor, 0, block, &more))
            return;
    }
    end(Completed);
}

// Opens the cursor and goes to the first row that has not been handed over; *more: there is one.
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
    for (qint64 row = -1; cursor && row < m_handedOver; ++row) {
        *more = cursor.next(&error);
        if (!*more)
            break;
    }
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
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_cancelled || m_interrupted || m_waitingBlocks < blocksInFlight; });
    if (m_cancelled)
        return false;
    if (m_interrupted) {
        lock.unlock();
        end(Failed, {StoreError::Closed, QStringLiteral("The tracker store was closed")});
        return false;
    }
    ++m_waitingBlocks;
    m_handedOver += block->rowCount();
    m_mailbox.post([self = shared_from_this(), block = std::move(block)] { self->taken(block); });
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

bool QueryRun::waitForDemand()
{
    std::unique_lock lock(m_mutex);
    if (!m_demanded) {
        m_state = Waiting;
        const auto wanted = [this] {
            return m_cancelled || m_interrupted || m_demanded;
        };
        m_changed.wait_for(lock, std::chrono::milliseconds(idleTimeout), wanted);
    }
    const bool goOn = m_demanded && !m_cancelled && !m_interrupted;
    m_state = goOn ? Running : Parked;
    if (!goOn && m_demanded && m_interrupted) {
        lock.unlock();
        end(Failed, {StoreError::Closed, QStringLiteral("The tracker store was closed")});
    }
    return goOn;
}

void QueryRun::end(State state, const StoreError &error)
{
    StoreError told = error;
    {
        const std::lock_guard lock(m_mutex);
        if (m_cancelled)
            return;
        if (told.kind == StoreError::Cancelled)
            told = {StoreError::Closed, QStringLiteral("The tracker store was closed")};
        m_state = state;
        m_failure = told.message;
    }
    if (state == Failed) {
        m_session->report(told);
        m_mailbox.post([self = shared_from_this()] { self->m_client.failed(self->m_failure); });
    } else {
        m_mailbox.post([self = shared_from_this()] { self->m_client.completed(); });
    }
}

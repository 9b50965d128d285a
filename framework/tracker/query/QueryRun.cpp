// SPDX-License-Identifier: MIT
#include "QueryRun.h"

#include "../remote/RemoteIds.h"
#include "../store/KeptRows.h"
#include "../store/TrackerThreads.h"
#include "KelvoMessageHandler.h"

#include <algorithm>

namespace {
// Without a limit the rows still come in pieces that the GUI thread takes over without a visible pause.
constexpr int pieceSize = 2000;
constexpr int unlimited = -1;

int laterPieces(const QueryPlan &plan)
{
    return plan.streamBlock > 0 ? plan.streamBlock : pieceSize;
}
} // namespace

QueryRun::QueryRun(std::shared_ptr<StoreSession> session, QueryPlan plan, QObject *receiver, Client client)
    : m_session(std::move(session))
    , m_plan(std::move(plan))
    , m_client(std::move(client))
    , m_mailbox(receiver)
    , m_quota(m_plan.firstBlock > 0 ? m_plan.firstBlock : unlimited)
{
}

QueryRun::~QueryRun()
{
    if (m_answers)
        m_answers->cancel();
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
    const std::lock_guard lock(m_answersMutex);
    if (m_answers)
        m_answers->cancel();
}

bool QueryRun::hasLostItsStore()
{
    return m_state.hasLostItsStore();
}

// At the same time as the store. Not on the GUI thread: the library for the network takes its time at first.
void QueryRun::askLibraries()
{
    RemoteLibraries libraries = m_plan.libraries;
    QByteArray subject;
    if (m_plan.hasSubject) {
        const auto resource = RemoteIds::find(m_plan.id);
        if (!resource)
            return;
        subject = resource->iri;
        libraries = {{resource->library}, {}};
    }
    if (libraries.isEmpty())
        return;
    // One more than come by themselves shows whether there are more.
    const int page = m_plan.limits.firstPage;
    const int rows = m_plan.firstBlock > 0 ? std::min(m_plan.firstBlock, page) + 1 : page;
    const auto answers = std::make_shared<RemoteAnswers>(
        libraries, PortableQuery(m_plan.text, subject), rows, m_plan.limits, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->m_state.interrupt();
        });
    m_remote = std::make_unique<RemoteCursor>(answers);
    {
        const std::lock_guard lock(m_answersMutex);
        m_answers = answers;
    }
    if (m_state.isStopped())
        answers->cancel();
    answers->start();
}

void QueryRun::run()
{
    askLibraries();
    if (m_answers && m_plan.hasSubject) {
        finish();
        return;
    }
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
    if (!readBlocks(cursor, first > 0 ? first : pieceSize, &more))
        return;
    if (more) {
        const auto demand = m_state.waitForDemand(m_plan.idleTime);
        if (demand == QueryState::Demand::Never) {
            failStopped();
            return;
        }
        m_keeps = demand == QueryState::Demand::Later;
        m_quota = unlimited;
        if (!readBlocks(cursor, laterPieces(m_plan), &more))
            return; // the cursor closes before the entry is left
    }
    cursor = {};
    entry.leave();
    if (!m_keeps)
        finish();
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
    StoreCursor cursor = openShortcut(connection, bindings, more, &error);
    if (!cursor && !error) {
        cursor = connection.select(m_plan.text, bindings, &m_state.cancellation(), &error);
        *more = cursor && cursor.next(&error);
    }
    if (error) {
        fail(error);
        return {};
    }
    return cursor;
}

// The same, none when the store does not keep what the shortcut reads.
StoreCursor QueryRun::openShortcut(const StoreConnection &connection,
    const StoreConnection::Bindings &bindings, bool *more, StoreError *error)
{
    if (m_plan.shortcut.text.isEmpty())
        return {};
    const QByteArray before = connection.selectOne(KeptRows::tidyState(), error);
    if (*error)
        return {};
    StoreCursor cursor = connection.select(m_plan.shortcut.text, bindings, &m_state.cancellation(), error);
    *more = cursor && cursor.next(error);
    if (*error)
        return {};
    // No rows: there are none, or they were not kept at that moment, which is in between when both states are the same.
    m_tookShortcut
        = *more || (!before.isEmpty() && before == connection.selectOne(KeptRows::tidyState(), error));
    return m_tookShortcut && !*error ? std::move(cursor) : StoreCursor();
}

// The store's rows are there: those of other libraries follow.
void QueryRun::finish()
{
    m_tookShortcut = false; // is the store's alone
    if (!m_remote || readLibraries())
        complete();
}

// False when it was called off, or waits for fetchRest() without a thread.
bool QueryRun::readLibraries()
{
    StoreError error;
    if (!m_isAtRemoteRow)
        m_isAtRemoteRow = m_remote->next(&error);
    if (error)
        return fail(error);
    if (!readBlocks(*m_remote, m_quota > 0 ? m_quota : laterPieces(m_plan), &m_isAtRemoteRow))
        return false;
    if (m_isAtRemoteRow) {
        const auto demand = m_state.waitForDemand(m_plan.idleTime);
        if (demand == QueryState::Demand::Never)
            return failStopped();
        m_quota = unlimited;
        // Nothing is read ahead: what other machines have is not kept here, and nothing of theirs is in use.
        if (demand == QueryState::Demand::Later && !m_state.park())
            return false;
        if (!readBlocks(*m_remote, laterPieces(m_plan), &m_isAtRemoteRow))
            return false;
    }
    m_remoteFailure = m_answers->failures();
    return true;
}

// From the row that the cursor stands on: up to the quota, in blocks of `pieces`. False when it was
// called off or failed; *more: the cursor stands on a further row.
bool QueryRun::readBlocks(RowCursor &cursor, int pieces, bool *more)
{
    std::vector<CellType> columns = m_plan.columns;
    QStringList names;
    if (columns.empty()) {
        columns.assign(size_t(cursor.columnCount()), CellType::Any);
        for (int column = 0; column < cursor.columnCount(); ++column)
            names.append(QString::fromUtf8(cursor.name(column)));
    }
    RowReader reader(cursor, m_tookShortcut ? m_plan.shortcut.sources : std::vector<CellSource>());
    const auto emptyBlock = [&] {
        auto block = std::make_shared<RowBlock>(columns);
        block->setNames(names);
        return block;
    };
    StoreError error;
    while (*more && m_quota != 0) {
        std::shared_ptr<RowBlock> block = emptyBlock();
        do {
            reader.readRow();
            block->append(reader);
            if (m_quota > 0)
                --m_quota;
            if (cursor.wouldWait() && !handOver(std::exchange(block, emptyBlock())))
                return false;
            *more = cursor.next(&error);
        } while (*more && block->rowCount() < pieces && m_quota != 0);
        if (block->rowCount() > 0 && !handOver(std::move(block)))
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
    finish();
}

void QueryRun::complete()
{
    if (m_state.end(QueryState::Outcome::Completed, {}).isTold)
        tell([this] { tellCompletion(); });
}

bool QueryRun::fail(const StoreError &error)
{
    m_kept.clear();
    if (m_answers)
        m_answers->cancel();
    const QueryState::End end = m_state.end(QueryState::Outcome::Failed, m_session->judge(error));
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
    if (m_state.isCancelled())
        return;
    QStringList news{m_state.takeNotice(), std::exchange(m_remoteFailure, {})};
    news.removeAll(QString());
    if (!news.isEmpty())
        m_client.failed(news.join(QStringLiteral("; ")));
}

// SPDX-License-Identifier: MIT
#include "StoreConnection.h"

#include "GlibHandles.h"

#include <QFile>

#include <libtracker-sparql/tracker-sparql.h>

struct StoreCancellation::Private
{
    GlibHandles::Object<GCancellable> handle{g_cancellable_new()};
};

struct StoreCursor::Private
{
    GlibHandles::Object<TrackerSparqlStatement> statement; // outlives its cursor
    GlibHandles::Object<TrackerSparqlCursor> handle;
    GCancellable *cancellable = nullptr;
};

struct StoreConnection::Private
{
    GlibHandles::Object<TrackerSparqlConnection> handle;
};

namespace {
// The library reports damage and a full disk found by SQLite under general codes, with SQLite's own words.
StoreError::Kind kindOfMessage(const QString &message)
{
    static const struct
    {
        const char *words;
        StoreError::Kind kind;
    } table[] = {
        {"malformed", StoreError::Damaged},
        {"not a database", StoreError::Damaged},
        {"disk is full", StoreError::NoSpace},
        {"disk I/O error", StoreError::Other},
        {"no such table", StoreError::Damaged},
    };
    for (const auto &entry : table) {
        if (message.contains(QLatin1String(entry.words)))
            return entry.kind;
    }
    return StoreError::Other;
}

StoreError::Kind kindOfCode(int code)
{
    switch (code) {
    case TRACKER_SPARQL_ERROR_NO_SPACE:
        return StoreError::NoSpace;
    case TRACKER_SPARQL_ERROR_OPEN_ERROR:
        return StoreError::Damaged;
    case TRACKER_SPARQL_ERROR_CONSTRAINT:
    case TRACKER_SPARQL_ERROR_PARSE:
    case TRACKER_SPARQL_ERROR_TYPE:
    case TRACKER_SPARQL_ERROR_UNKNOWN_CLASS:
    case TRACKER_SPARQL_ERROR_UNKNOWN_GRAPH:
    case TRACKER_SPARQL_ERROR_UNKNOWN_PROPERTY:
    case TRACKER_SPARQL_ERROR_UNSUPPORTED:
        return StoreError::Query;
    default:
        return StoreError::Other;
    }
}

StoreError errorOf(const GlibHandles::Error &error, GCancellable *cancellable)
{
    // The library reports a cancelled query as an internal error.
    if (cancellable && g_cancellable_is_cancelled(cancellable))
        return {StoreError::Cancelled, QStringLiteral("Cancelled")};
    if (!error)
        return {StoreError::Other, QStringLiteral("The tracker store failed without a reason")};
    QString message = QString::fromUtf8(error.get()->message);
    StoreError::Kind kind = kindOfMessage(message);
    if (kind == StoreError::Other && error.get()->domain == TRACKER_SPARQL_ERROR)
        kind = kindOfCode(error.get()->code);
    if (kind == StoreError::Damaged)
        message = QStringLiteral("The tracker store is damaged: %1").arg(message);
    return {kind, message};
}
} // namespace

StoreCancellation::StoreCancellation()
    : d(std::make_unique<Private>())
{
}

StoreCancellation::~StoreCancellation() = default;

void StoreCancellation::cancel()
{
    g_cancellable_cancel(d->handle.get());
}

StoreCursor::StoreCursor() = default;
StoreCursor::StoreCursor(StoreCursor &&other) noexcept = default;
StoreCursor &StoreCursor::operator=(StoreCursor &&other) noexcept = default;

StoreCursor::~StoreCursor()
{
    if (d && d->handle)
        tracker_sparql_cursor_close(d->handle.get());
}

StoreCursor::operator bool() const
{
    return d != nullptr;
}

bool StoreCursor::next(StoreError *error)
{
    GlibHandles::Error failure;
    if (tracker_sparql_cursor_next(d->handle.get(), d->cancellable, failure.out()))
        return true;
    const bool cancelled = d->cancellable && g_cancellable_is_cancelled(d->cancellable);
    if (failure || cancelled)
        *error = errorOf(failure, d->cancellable);
    return false;
}

int StoreCursor::columnCount() const
{
    return tracker_sparql_cursor_get_n_columns(d->handle.get());
}

StoreCursor::Type StoreCursor::type(int column) const
{
    return Type(tracker_sparql_cursor_get_value_type(d->handle.get(), column));
}

const char *StoreCursor::text(int column) const
{
    return tracker_sparql_cursor_get_string(d->handle.get(), column, nullptr);
}

qint64 StoreCursor::integer(int column) const
{
    return tracker_sparql_cursor_get_integer(d->handle.get(), column);
}

QByteArray StoreCursor::name(int column) const
{
    const QByteArray name = tracker_sparql_cursor_get_variable_name(d->handle.get(), column);
    // A variable of SELECT * that holds a resource comes wrapped: SparqlPrintIRI("v_name" ).
    const QByteArray wrapping("(\"v_");
    const qsizetype start = name.indexOf(wrapping);
    if (start < 0 || name.count('"') != 2)
        return name;
    return name.mid(start + wrapping.size(), name.lastIndexOf('"') - start - wrapping.size());
}

StoreConnection::StoreConnection(std::unique_ptr<Private> data, bool readOnly)
    : d(std::move(data))
    , m_readOnly(readOnly)
{
}

StoreConnection::~StoreConnection()
{
    tracker_sparql_connection_close(d->handle.get());
}

std::shared_ptr<StoreConnection> StoreConnection::open(
    const QString &folder, bool readOnly, StoreError *error)
{
    const GlibHandles::Object<GFile> path(g_file_new_for_path(QFile::encodeName(folder).constData()));
    const GlibHandles::Object<GFile> ontology(tracker_sparql_get_ontology_nepomuk());
    GlibHandles::Error failure;
    auto data = std::make_unique<Private>();
    data->handle.reset(tracker_sparql_connection_new(
        readOnly ? TRACKER_SPARQL_CONNECTION_FLAGS_READONLY : TRACKER_SPARQL_CONNECTION_FLAGS_NONE,
        path.get(), ontology.get(), nullptr, failure.out()));
    if (!data->handle) {
        *error = errorOf(failure, nullptr);
        return nullptr;
    }
    return std::shared_ptr<StoreConnection>(new StoreConnection(std::move(data), readOnly));
}

std::shared_ptr<StoreConnection> StoreConnection::openDesktopIndex(StoreError *error)
{
    GlibHandles::Error failure;
    auto data = std::make_unique<Private>();
    data->handle.reset(tracker_sparql_connection_bus_new(
        "org.freedesktop.Tracker3.Miner.Files", nullptr, nullptr, failure.out()));
    if (!data->handle) {
        *error = errorOf(failure, nullptr);
        return nullptr;
    }
    return std::shared_ptr<StoreConnection>(new StoreConnection(std::move(data), true));
}

StoreCursor StoreConnection::select(const QByteArray &text, const Bindings &bindings,
    const StoreCancellation *cancellation, StoreError *error) const
{
    GlibHandles::Error failure;
    StoreCursor cursor;
    auto data = std::make_unique<StoreCursor::Private>();
    data->cancellable = cancellation ? cancellation->d->handle.get() : nullptr;
    data->statement.reset(tracker_sparql_connection_query_statement(
        d->handle.get(), text.constData(), data->cancellable, failure.out()));
    if (data->statement) {
        for (const auto &[name, value] : bindings)
            tracker_sparql_statement_bind_string(data->statement.get(), name.constData(), value.constData());
        data->handle.reset(
            tracker_sparql_statement_execute(data->statement.get(), data->cancellable, failure.out()));
    }
    if (data->handle)
        cursor.d = std::move(data);
    else
        *error = errorOf(failure, data->cancellable);
    return cursor;
}

QByteArray StoreConnection::selectOne(const QByteArray &text, StoreError *error) const
{
    StoreCursor cursor = select(text, {}, nullptr, error);
    if (!cursor || !cursor.next(error))
        return {};
    return cursor.text(0);
}

bool StoreConnection::update(const std::vector<QByteArray> &texts, StoreError *error)
{
    // The library itself accepts an update of a read-only store and forgets it.
    if (m_readOnly) {
        *error = {StoreError::ReadOnly, QStringLiteral("The tracker store belongs to another process")};
        return false;
    }
    const std::lock_guard lock(m_updates);
    GlibHandles::Error failure;
    const GlibHandles::Object<TrackerBatch> batch(tracker_sparql_connection_create_batch(d->handle.get()));
    for (const QByteArray &text : texts)
        tracker_batch_add_sparql(batch.get(), text.constData());
    if (tracker_batch_execute(batch.get(), nullptr, failure.out()))
        return true;
    *error = errorOf(failure, nullptr);
    return false;
}

// SPDX-License-Identifier: MIT
#include "StoreConnection.h"

#include "GlibHandles.h"
#include "SparqlLibrary.h"

#include <QFile>

/// Knows that it is cancelled by itself: that may come before the library is loaded, whose handle it has for the first query
/// that runs with it.
struct StoreCancellation::Private
{
    GCancellable *handleFor(const SparqlLibrary &functions)
    {
        const std::lock_guard lock(mutex);
        if (!handle) {
            library = &functions;
            handle.reset(library->newCancellable());
            if (isCancelled)
                library->cancel(handle.get());
        }
        return handle.get();
    }

    std::mutex mutex;
    bool isCancelled = false;
    const SparqlLibrary *library = nullptr;
    GlibHandles::Object<GCancellable> handle;
};

struct StoreCursor::Private
{
    explicit Private(const SparqlLibrary &functions)
        : library(functions)
    {
    }

    bool isCancelled() const { return cancellable && library.isCancelled(cancellable); }

    const SparqlLibrary &library;
    GlibHandles::Object<TrackerSparqlStatement> statement; // outlives its cursor
    GlibHandles::Object<TrackerSparqlCursor> handle;
    GCancellable *cancellable = nullptr;
};

struct StoreConnection::Private
{
    explicit Private(const SparqlLibrary &functions)
        : library(functions)
    {
    }

    const SparqlLibrary &library;
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
        {"disk I/O error", StoreError::NoAccess},
        {"unable to open database file", StoreError::NoAccess},
        {"readonly database", StoreError::NoAccess},
        {"out of memory", StoreError::NoAccess},
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

StoreError errorOf(const SparqlLibrary &library, const GlibHandles::Error &error)
{
    if (!error)
        return {StoreError::Other, QStringLiteral("The tracker store failed without a reason")};
    QString message = QString::fromUtf8(error.get()->message);
    StoreError::Kind kind = kindOfMessage(message);
    if (kind == StoreError::Other && error.get()->domain == library.errorDomain())
        kind = kindOfCode(error.get()->code);
    if (kind == StoreError::Damaged)
        message = QStringLiteral("The tracker store is damaged: %1").arg(message);
    return {kind, message};
}
// The library reports a cancelled query as an internal error.
StoreError cancelledError()
{
    return {StoreError::Cancelled, QStringLiteral("Cancelled")};
}
} // namespace

StoreCancellation::StoreCancellation()
    : d(std::make_unique<Private>())
{
}

StoreCancellation::~StoreCancellation() = default;

void StoreCancellation::cancel()
{
    const std::lock_guard lock(d->mutex);
    d->isCancelled = true;
    if (d->handle)
        d->library->cancel(d->handle.get());
}

StoreCursor::StoreCursor() = default;
StoreCursor::StoreCursor(StoreCursor &&other) noexcept = default;
StoreCursor &StoreCursor::operator=(StoreCursor &&other) noexcept = default;

StoreCursor::~StoreCursor()
{
    if (d && d->handle)
        d->library.closeCursor(d->handle.get());
}

StoreCursor::operator bool() const
{
    return d != nullptr;
}

bool StoreCursor::next(StoreError *error)
{
    GlibHandles::Error failure;
    if (d->library.next(d->handle.get(), d->cancellable, failure.out()))
        return true;
    if (d->isCancelled())
        *error = cancelledError();
    else if (failure)
        *error = errorOf(d->library, failure);
    return false;
}

int StoreCursor::columnCount() const
{
    return d->library.columnCount(d->handle.get());
}

StoreCursor::Type StoreCursor::type(int column) const
{
    return Type(d->library.type(d->handle.get(), column));
}

const char *StoreCursor::text(int column) const
{
    return d->library.text(d->handle.get(), column, nullptr);
}

qint64 StoreCursor::integer(int column) const
{
    return d->library.integer(d->handle.get(), column);
}

QByteArray StoreCursor::name(int column) const
{
    QByteArray name = d->library.variable(d->handle.get(), column);
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
    d->library.closeConnection(d->handle.get());
}

std::shared_ptr<StoreConnection> StoreConnection::open(
    const QString &folder, bool readOnly, StoreError *error)
{
    const SparqlLibrary *library = SparqlLibrary::load(error);
    if (!library)
        return nullptr;
    const GlibHandles::Object<GFile> path(library->newFile(QFile::encodeName(folder).constData()));
    const GlibHandles::Object<GFile> ontology(library->ontology());
    GlibHandles::Error failure;
    auto data = std::make_unique<Private>(*library);
    data->handle.reset(library->newConnection(
        readOnly ? TRACKER_SPARQL_CONNECTION_FLAGS_READONLY : TRACKER_SPARQL_CONNECTION_FLAGS_NONE,
        path.get(), ontology.get(), nullptr, failure.out()));
    if (!data->handle) {
        *error = errorOf(*library, failure);
        // What the library says of any damage that it meets here: the words with it are about versions.
        if (error->kind == StoreError::Other && failure
            && g_error_matches(failure.get(), library->errorDomain(), TRACKER_SPARQL_ERROR_OPEN_ERROR))
            *error = {
                StoreError::Damaged, QStringLiteral("The tracker store is damaged: %1").arg(error->message)};
        return nullptr;
    }
    return std::shared_ptr<StoreConnection>(new StoreConnection(std::move(data), readOnly));
}

std::shared_ptr<StoreConnection> StoreConnection::openDesktopIndex(StoreError *error)
{
    const SparqlLibrary *library = SparqlLibrary::load(error);
    if (!library)
        return nullptr;
    GlibHandles::Error failure;
    auto data = std::make_unique<Private>(*library);
    data->handle.reset(
        library->newBusConnection("org.freedesktop.Tracker3.Miner.Files", nullptr, nullptr, failure.out()));
    if (!data->handle) {
        *error = errorOf(*library, failure);
        return nullptr;
    }
    return std::shared_ptr<StoreConnection>(new StoreConnection(std::move(data), true));
}

StoreCursor StoreConnection::select(const QByteArray &text, const Bindings &bindings,
    const StoreCancellation *cancellation, StoreError *error) const
{
    const SparqlLibrary &library = d->library;
    GlibHandles::Error failure;
    StoreCursor cursor;
    auto data = std::make_unique<StoreCursor::Private>(library);
    data->cancellable = cancellation ? cancellation->d->handleFor(library) : nullptr;
    data->statement.reset(
        library.newStatement(d->handle.get(), text.constData(), data->cancellable, failure.out()));
    if (data->statement) {
        for (const auto &[name, value] : bindings)
            library.bindText(data->statement.get(), name.constData(), value.constData());
        data->handle.reset(library.runStatement(data->statement.get(), data->cancellable, failure.out()));
    }
    if (data->handle)
        cursor.d = std::move(data);
    else
        *error = data->isCancelled() ? cancelledError() : errorOf(library, failure);
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
    const GlibHandles::Object<TrackerBatch> batch(d->library.newBatch(d->handle.get()));
    for (const QByteArray &text : texts)
        d->library.addToBatch(batch.get(), text.constData());
    if (d->library.runBatch(batch.get(), nullptr, failure.out()))
        return true;
    *error = errorOf(d->library, failure);
    return false;
}

// SPDX-License-Identifier: MIT
#include "KelvoTrackerModel.h"

#include "KelvoTrackerStore.h"
#include "query/QueryCatalog.h"
#include "query/QueryRun.h"
#include "query/RowBlock.h"

struct KelvoTrackerModel::Private
{
    explicit Private(const std::vector<CatalogQuery::Column> &sharedColumns)
        : columns(sharedColumns)
    {
    }

    QString placeholderFor(CatalogQuery::Placeholder placeholder) const
    {
        return placeholder == CatalogQuery::AlbumName ? unknownAlbum : unknownArtist;
    }

    QueryPlan plan;
    const std::vector<CatalogQuery::Column> &columns;
    QString unknownAlbum;
    QString unknownArtist;
    RowTable rows;
    std::shared_ptr<QueryRun> query;
};

KelvoTrackerModel::KelvoTrackerModel(QueryType type, int firstBlock, int streamBlock, int id,
    const QString &unknownAlbum, const QString &unknownArtist, std::chrono::milliseconds idleTime)
    : d(std::make_unique<Private>(CatalogQuery::find(type).columns))
{
    const CatalogQuery &entry = CatalogQuery::find(type);
    d->unknownAlbum = unknownAlbum;
    d->unknownArtist = unknownArtist;
    std::shared_ptr<StoreSession> session = KelvoTrackerStore::instance()->session();
    if (entry.columns.empty()) {
        // A session of its own, that can answer nothing.
        session = std::make_shared<StoreSession>();
        session->failed(
            {StoreError::Query, QStringLiteral("There is no tracker query of type %1").arg(int(type))});
    }
    d->plan = {entry.text, entry.types(), entry.hasSubject, id, firstBlock, streamBlock, idleTime, {},
        {entry.shortcut, entry.sources()}};
    if (!entry.columns.empty())
        d->plan.libraries = RemoteLibraries::fromEnvironment();
    startQuery(std::move(session));
}

void KelvoTrackerModel::startQuery(std::shared_ptr<StoreSession> session)
{
    const QueryRun::Client client{
        [this](std::shared_ptr<const RowBlock> block) {
            const int first = d->rows.rowCount();
            beginInsertRows({}, first, first + block->rowCount() - 1);
            d->rows.append(std::move(block));
            endInsertRows();
        },
        [this] { Q_EMIT completed(); },
        [this](const QString &message) { Q_EMIT error(message); },
    };
    d->query = QueryRun::start(std::move(session), d->plan, this, client);
}

KelvoTrackerModel::~KelvoTrackerModel()
{
    d->query->cancel();
}

void KelvoTrackerModel::fetchRest()
{
    const KelvoTrackerStore::State state = KelvoTrackerStore::instance()->state();
    const bool isThere = state == KelvoTrackerStore::Open || state == KelvoTrackerStore::Opening;
    // The id of a subject is another one's in another store.
    if (isThere && d->query->hasLostItsStore() && !d->plan.hasSubject)
        queryAnew();
    else
        d->query->fetchRest();
}

void KelvoTrackerModel::queryAnew()
{
    d->query->cancel();
    if (d->rows.rowCount() > 0) {
        beginRemoveRows({}, 0, d->rows.rowCount() - 1);
        d->rows.clear();
        endRemoveRows();
    }
    d->plan.firstBlock = 0;
    d->plan.notice = QStringLiteral("The library has changed and was queried anew");
    startQuery(KelvoTrackerStore::instance()->session());
}

int KelvoTrackerModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->rows.rowCount();
}

int KelvoTrackerModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(d->columns.size());
}

QVariant KelvoTrackerModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    QVariant value = d->rows.value(index.row(), index.column());
    const auto placeholder = d->columns[size_t(index.column())].placeholder;
    if (placeholder != CatalogQuery::NoPlaceholder && value.toString().isEmpty())
        return d->placeholderFor(placeholder);
    return value;
}

QVariant KelvoTrackerModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal && section >= 0
        && section < int(d->columns.size()))
        return QString::fromLatin1(d->columns[size_t(section)].key);
    return QAbstractTableModel::headerData(section, orientation, role);
}

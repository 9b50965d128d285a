// SPDX-License-Identifier: MIT
#include "QSparqlQueryModel.h"

#include "KelvoTrackerStore.h"
#include "QSparqlConnection.h"
#include "query/QueryRun.h"
#include "query/RowBlock.h"

struct QSparqlQueryModel::Private
{
    QSparqlQuery query;
    QStringList names;
    RowTable rows;
    std::shared_ptr<QueryRun> run;
};

namespace {
std::shared_ptr<StoreSession> sessionOf(const QSparqlConnection &connection)
{
    if (connection.isValid())
        return KelvoTrackerStore::instance()->session();
    auto none = std::make_shared<StoreSession>();
    none->failed(
        {StoreError::Other, QStringLiteral("There is no SPARQL driver \"%1\"").arg(connection.driverName())});
    return none;
}
} // namespace

QSparqlQueryModel::QSparqlQueryModel(QObject *parent)
    : QAbstractTableModel(parent)
    , d(std::make_unique<Private>())
{
}

QSparqlQueryModel::~QSparqlQueryModel()
{
    if (d->run)
        d->run->cancel();
}

void QSparqlQueryModel::setQuery(const QSparqlQuery &query, QSparqlConnection &connection)
{
    beginResetModel();
    if (d->run)
        d->run->cancel();
    d->rows.clear();
    d->query = query;
    d->names = query.columnNames();
    endResetModel();
    QueryPlan plan;
    plan.text = query.query().toUtf8();
    plan.columns.assign(size_t(d->names.size()), CellType::Any);
    const QueryRun::Client client{
        [this](std::shared_ptr<const RowBlock> block) { append(std::move(block)); },
        [this] { Q_EMIT finished(); },
        [this](const QString &message) { Q_EMIT error(message); },
    };
    d->run = QueryRun::start(sessionOf(connection), plan, this, client);
}

void QSparqlQueryModel::append(std::shared_ptr<const RowBlock> block)
{
    // SELECT *: the names come with the first rows.
    if (d->names.isEmpty() && !block->names().isEmpty()) {
        beginInsertColumns({}, 0, int(block->names().size()) - 1);
        d->names = block->names();
        endInsertColumns();
    }
    const int first = d->rows.rowCount();
    beginInsertRows({}, first, first + block->rowCount() - 1);
    d->rows.append(std::move(block));
    endInsertRows();
}

QSparqlQuery QSparqlQueryModel::query() const
{
    return d->query;
}

int QSparqlQueryModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : d->rows.rowCount();
}

int QSparqlQueryModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(d->names.size());
}

QVariant QSparqlQueryModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::DisplayRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return d->rows.value(index.row(), index.column());
}

QVariant QSparqlQueryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal && section >= 0 && section < d->names.size())
        return d->names.at(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

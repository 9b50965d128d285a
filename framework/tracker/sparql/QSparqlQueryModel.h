// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "QSparqlQuery.h"

#include <QAbstractTableModel>

#include <memory>

class QSparqlConnection;

/// The result of a SPARQL SELECT as an item model: one column for each variable, one row for each solution.
///
/// All rows come by themselves, from the event loop, in pieces; then finished() or error(). Header texts are the
/// query's column names. Values are numbers, truth values and texts by their SPARQL types; unbound ones are invalid.
/// GUI thread. Destroying the model, or another setQuery(), calls the query off.
class KELVO_TRACKER_EXPORT QSparqlQueryModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit QSparqlQueryModel(QObject *parent = nullptr);
    ~QSparqlQueryModel() override;

    /// Forgets the earlier result and starts the query. The connection is used during this call only.
    void setQuery(const QSparqlQuery &query, QSparqlConnection &connection);
    QSparqlQuery query() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// All rows are there.
    void finished();
    /// The query failed; a text for the user. Rows that are there stay.
    void error(QString message);

private:
    void append(std::shared_ptr<const class RowBlock> block);

    struct Private;
    std::unique_ptr<Private> d;
};

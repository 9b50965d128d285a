// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "QSparqlConnectionOptions.h"

#include <QObject>
#include <QString>

/// A connection on which SPARQL queries run. There is one driver, "QTRACKER": the tracker store of this process, which
/// the connection holds open for as long as it lives. GUI thread.
class KELVO_TRACKER_EXPORT QSparqlConnection : public QObject
{
    Q_OBJECT
public:
    explicit QSparqlConnection(const QString &driver,
        const QSparqlConnectionOptions &options = QSparqlConnectionOptions(), QObject *parent = nullptr);
    ~QSparqlConnection() override;

    QString driverName() const { return m_driver; }
    /// False when there is no such driver; queries then end with an error.
    bool isValid() const;

private:
    const QString m_driver;
};

// SPDX-License-Identifier: MIT
#include "QSparqlConnection.h"

#include "KelvoMessageHandler.h"
#include "KelvoTrackerStore.h"

QSparqlConnection::QSparqlConnection(
    const QString &driver, const QSparqlConnectionOptions & /*options*/, QObject *parent)
    : QObject(parent)
    , m_driver(driver)
{
    if (isValid())
        KelvoTrackerStore::instance()->hold(this);
    else
        qCWarning(lcKelvo) << "There is no SPARQL driver" << driver;
}

QSparqlConnection::~QSparqlConnection()
{
    KelvoTrackerStore::instance()->release(this);
}

bool QSparqlConnection::isValid() const
{
    return m_driver == QLatin1String("QTRACKER");
}

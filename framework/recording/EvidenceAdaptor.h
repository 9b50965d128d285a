// SPDX-License-Identifier: MIT
#pragma once

#include "EvidenceService.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>

/// org.kelvo.Evidence1; data/org.kelvo.Evidence1.xml describes it.
class EvidenceAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kelvo.Evidence1")
public:
    EvidenceAdaptor(EvidenceService *service, const QDBusConnection &connection)
        : QDBusAbstractAdaptor(service)
        , m_service(service)
        , m_connection(connection)
    {
    }

public Q_SLOTS:
    /// Answers once everything is saved.
    QString SaveEvidence(const QDBusMessage &request)
    {
        request.setDelayedReply(true);
        const bool isBegun = m_service->save(
            [connection = m_connection, request](const QString &folder, const QString &problem) {
                connection.send(problem.isEmpty() ? request.createReply(folder)
                                                  : request.createErrorReply(QDBusError::Failed, problem));
            });
        if (!isBegun)
            m_connection.send(request.createErrorReply(
                QDBusError::LimitsExceeded, QStringLiteral("Evidence is being saved already")));
        return {};
    }

private:
    EvidenceService *const m_service;
    const QDBusConnection m_connection;
};

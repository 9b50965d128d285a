// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoSource.h"

#include <QHash>
#include <QStringList>

/// A source without content, for the properties of sources: it can be signed in and out.
///
/// "signIn" (bool) tells that it can; setting it to true or false signs in or out, which shows in "signedIn".
/// The descriptive keys are fixed texts.
class SimulatedSource : public KelvoSource
{
    Q_OBJECT
public:
    /// @param refused  descriptive keys that this source does not know
    SimulatedSource(
        const QString &uuid, const QString &name, const QStringList &refused, QObject *parent = nullptr);

    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    void setKelvoProperty(const QString &key, const QVariant &value) override;
    bool kelvoProperty(const QString &key, QObject *receiver, const char *slot) override;

private:
    const QString m_uuid;
    const QString m_name;
    QHash<QString, QVariant> m_properties;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoSource.h"

#include <QHash>

/// The tracker store as a source of content. Its properties are those of the program that keeps the store.
class TrackerSource : public KelvoSource
{
    Q_OBJECT
public:
    explicit TrackerSource(QObject *parent = nullptr);

    QString uuid() const override;
    QString name() const override;
    void setKelvoProperty(const QString &key, const QVariant &value) override;
    bool kelvoProperty(const QString &key, QObject *receiver, const char *slot) override;

private:
    const QHash<QString, QVariant> m_properties;
};

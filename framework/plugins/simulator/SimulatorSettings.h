// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <QVariant>

/// The values of the properties in SimulatorProperties.h that begin with "sim-", but for the clock's, which all share.
class SimulatorSettings
{
public:
    explicit SimulatorSettings(const QString &name);

    static bool has(const QString &name);
    /// False, and nothing changed, for a value that the property cannot have.
    bool take(const QString &name, const QVariant &value);
    /// Invalid for names that there are none of.
    QVariant value(const QString &name) const { return m_values.value(name); }
    int number(QLatin1String name) const { return m_values.value(name).toInt(); }
    bool flag(QLatin1String name) const { return m_values.value(name).toBool(); }

    /// Of a value of "sim-failure" that was taken.
    static int itemsToFail(const QVariant &value);
    /// What follows the first comma.
    static QString rest(const QVariant &value);
    /// Of a value of "sim-metadata"; none where it holds none.
    static QVariantMap facts(const QVariant &value);

private:
    QHash<QString, QVariant> m_values;
};

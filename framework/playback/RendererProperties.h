// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QVariant>

#include <optional>

/// The properties that every renderer has: what values they take, what they are at start, and what they are now.
class RendererProperties
{
public:
    static constexpr int MaximumVolume = 99; ///< on the scale of KelvoRenderer::PropertyVolume
    static constexpr double MaximumSpeed = 64; ///< in either direction

    RendererProperties();

    /// For engines, at first: the value at start; invalid: not known, or it has no such thing.
    void setInitial(const QString &name, const QVariant &value) { m_values.insert(name, value); }
    /// The same: one that other renderers only report.
    void makeSettable(const QString &name) { m_madeSettable.insert(name); }
    /// The same: values may also be texts, such as "true" and "42".
    void takeTexts() { m_takesTexts = true; }

    /// False also for names that there are none of.
    bool isSettable(const QString &name) const;
    /// Whether it is about the window that video goes to.
    static bool isOfWindow(const QString &name);
    /// The value as it is reported; nothing for one that the property cannot have.
    std::optional<QVariant> accepted(const QString &name, const QVariant &value) const;

    /// Invalid for names that there are none of.
    QVariant value(const QString &name) const { return m_values.value(name); }
    /// The value from now on; it is awaited no longer.
    void set(const QString &name, const QVariant &value);
    /// The engine was told and has not reported yet.
    void await(const QString &name, const QVariant &value) { m_awaited.insert(name, value); }
    /// What was awaited will not come.
    void awaitNothing() { m_awaited.clear(); }
    /// The value as it will be.
    QVariant wanted(const QString &name) const { return m_awaited.value(name, value(name)); }

private:
    QHash<QString, QVariant> m_values;
    QHash<QString, QVariant> m_awaited;
    QSet<QString> m_madeSettable;
    bool m_takesTexts = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSet>
#include <QTimer>
#include <QVariantMap>

class RendererWatch;

/// Asks a renderer for properties before a run, and gives those that the run has changed their values back after it.
class PropertyKeeper : public QObject
{
    Q_OBJECT
public:
    /// @param watch  not owned; outlives this
    PropertyKeeper(RendererWatch *watch, QSet<QString> names, QObject *parent = nullptr);

    /// Ends with known(), at the latest after two seconds.
    void ask();
    bool isKnown() const { return m_open.isEmpty(); }
    /// Whether the renderer has it: it answered with a value.
    bool has(const QString &name) const { return m_values.contains(name); }
    void restore();

Q_SIGNALS:
    /// Once, from the event loop.
    void known();

private:
    void take(const QString &name, const QVariant &value);

    RendererWatch *const m_watch;
    const QSet<QString> m_names;
    QSet<QString> m_open; ///< not answered yet
    QVariantMap m_values;
    QTimer m_patience;
};

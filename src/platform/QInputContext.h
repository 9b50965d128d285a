// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QtPlugin>

class QWidget;

/// A platform input method that serves single text-entry widgets, for instance with an on-screen keyboard.
/// Implemented by plug-ins; see QInputContextFactory. GUI thread only.
///
/// Without a meta-object of its own, so that a plug-in needs this header and no library of the console.
class QInputContext : public QObject
{
public:
    using QObject::QObject;

    /// Makes this context serve the widget from now on. Neither owns the other; several widgets may share one
    /// context, and either may be destroyed first.
    virtual void attach(QWidget *textEntry) = 0;
};

/// What an input-method plug-in's root object implements. Its JSON metadata lists the keys it can create:
///     { "Keys": ["..."] }
class QInputContextPlugin
{
public:
    virtual ~QInputContextPlugin() = default;
    /// A new context without parent, or null when the key cannot be served.
    virtual QInputContext *create(const QString &key) = 0;
};

#define QInputContextPlugin_iid "org.kelvo.InputContextPlugin/1.0"
Q_DECLARE_INTERFACE(QInputContextPlugin, QInputContextPlugin_iid)

/// Finds input-method plug-ins in the "inputmethods" folders below QCoreApplication::libraryPaths().
class QInputContextFactory
{
public:
    /// A new context, child of `parent`; null when no plug-in offers the key or the one that does fails.
    static QInputContext *create(const QString &key, QObject *parent);
};

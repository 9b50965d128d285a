// SPDX-License-Identifier: MIT
#pragma once

#include "SignalTap.h"

#include <QHash>
#include <QObject>

#include <memory>
#include <unordered_map>

class EventWriter;
class KelvoRegistry;

/// Writes down what comes to the registry and what goes, and what all of it reports. GUI thread.
///
/// Made before whoever else listens to the registry, so that what is reported is written down before what follows from
/// it.
class RegistryTap : public QObject
{
    Q_OBJECT
public:
    /// What is there already appears now. Neither is owned; the writer must outlive this object.
    RegistryTap(KelvoRegistry *registry, const EventWriter &writer);

private:
    /// By uuid.
    using Taps = std::unordered_map<QString, std::unique_ptr<SignalTap>>;
    using Notify = void (KelvoRegistry::*)(const QString &, const QString &);

    template <typename Object>
    void follow(const char *what, const QList<Object *> &present,
        Object *(KelvoRegistry::*find)(const QString &) const, Notify added, Notify removed, Taps &taps);
    void appear(const char *what, const QObject *object, const QMetaObject &scope, const QString &uuid,
        const QString &name, Taps &taps);

    KelvoRegistry *const m_registry;
    const EventWriter &m_writer;
    Taps m_renderers;
    Taps m_sources;
    Taps m_playlists;
    SignalTap m_plugins;
};

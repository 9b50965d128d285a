// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QDBusAbstractAdaptor>

#include <functional>

/// org.freedesktop.DBus.ObjectManager (D-Bus Specification, "Standard Interfaces"), which Qt does not bring.
class ObjectManagerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.DBus.ObjectManager")
public:
    using Lister = std::function<SharedObjects()>;

    ObjectManagerAdaptor(QObject *object, Lister lister)
        : QDBusAbstractAdaptor(object)
        , m_lister(std::move(lister))
    {
    }

public Q_SLOTS:
    SharedObjects GetManagedObjects() { return m_lister(); }

Q_SIGNALS:
    void InterfacesAdded(const QDBusObjectPath &path, const SharedInterfaces &interfaces);
    void InterfacesRemoved(const QDBusObjectPath &path, const QStringList &interfaces);

private:
    Lister m_lister;
};

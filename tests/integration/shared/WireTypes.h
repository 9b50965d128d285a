// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QVariantMap>

/// The types of the bus interface as the tests know them, apart from those of the product.
struct WireItem
{
    QString id;
    QString title;
    QString url;
    QString mimeType;
    qlonglong duration = -1;
    bool operator==(const WireItem &) const = default;
};
using WireItems = QList<WireItem>;
using WireInterfaces = QMap<QString, QVariantMap>;
using WireObjects = QMap<QDBusObjectPath, WireInterfaces>;

Q_DECLARE_METATYPE(WireItem)
Q_DECLARE_METATYPE(WireItems)

inline QDBusArgument &operator<<(QDBusArgument &argument, const WireItem &item)
{
    argument.beginStructure();
    argument << item.id << item.title << item.url << item.mimeType << item.duration;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument &operator>>(const QDBusArgument &argument, WireItem &item)
{
    argument.beginStructure();
    argument >> item.id >> item.title >> item.url >> item.mimeType >> item.duration;
    argument.endStructure();
    return argument;
}

inline void registerWireTypes()
{
    qRegisterMetaType<QDBusObjectPath>();
    qDBusRegisterMetaType<WireItem>();
    qDBusRegisterMetaType<WireItems>();
    qDBusRegisterMetaType<WireInterfaces>();
    qDBusRegisterMetaType<WireObjects>();
}

// SPDX-License-Identifier: MIT
#include "PlaylistProtocol.h"

#include <QDBusMetaType>

QDBusArgument &operator<<(QDBusArgument &argument, const SharedItem &item)
{
    argument.beginStructure();
    argument << item.id << item.title << item.url << item.mimeType << item.duration;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, SharedItem &item)
{
    argument.beginStructure();
    argument >> item.id >> item.title >> item.url >> item.mimeType >> item.duration;
    argument.endStructure();
    return argument;
}

void PlaylistProtocol::registerTypes()
{
    // Without this, slots and exported signals with an object path are silently left out by QtDBus 6.4.
    qRegisterMetaType<QDBusObjectPath>();
    // By name too: an equal type of another library may have been registered first, under its own name only,
    // and signals are exported by the names of their argument types.
    qRegisterMetaType<SharedItems>("SharedItems");
    qRegisterMetaType<SharedInterfaces>("SharedInterfaces");
    qRegisterMetaType<SharedObjects>("SharedObjects");
    qDBusRegisterMetaType<SharedItem>();
    qDBusRegisterMetaType<SharedItems>();
    qDBusRegisterMetaType<SharedInterfaces>();
    qDBusRegisterMetaType<SharedObjects>();
}

bool PlaylistProtocol::isAnswerOf(const QDBusMessage &reply, const QString &owner)
{
    if (reply.service() == owner)
        return true;
    // Errors of the connection itself have no sender.
    return reply.type() == QDBusMessage::ErrorMessage
        && (reply.service().isEmpty() || reply.service() == busService);
}

SharedItems PlaylistProtocol::readItems(const QDBusArgument &argument, uint limit, bool *more)
{
    SharedItems items;
    argument.beginArray();
    while (!argument.atEnd() && items.size() < qsizetype(limit)) {
        SharedItem item;
        argument >> item;
        items.append(std::move(item));
    }
    *more = !argument.atEnd();
    argument.endArray();
    return items;
}

SharedObjects PlaylistProtocol::readObjects(const QDBusArgument &argument, qsizetype limit, bool *more)
{
    SharedObjects objects;
    argument.beginMap();
    while (!argument.atEnd() && objects.size() < limit) {
        QDBusObjectPath path;
        SharedInterfaces interfaces;
        argument.beginMapEntry();
        argument >> path >> interfaces;
        argument.endMapEntry();
        objects.insert(path, interfaces);
    }
    *more = !argument.atEnd();
    argument.endMap();
    return objects;
}

// SPDX-License-Identifier: MIT
#include "RoguePeer.h"

#include "RogueFiles.h"

#include <QTest>

namespace {
int connections = 0;

QDBusConnection connectAgain()
{
    return QDBusConnection::connectToBus(
        QDBusConnection::SessionBus, QStringLiteral("rogue-%1").arg(++connections));
}
} // namespace

RoguePeer::RoguePeer(const QString &label)
    : m_connection(connectAgain())
    , m_service(QStringLiteral("org.kelvo.Playlists.") + label)
{
    registerWireTypes();
    if (!m_connection.registerVirtualObject(Root, this, QDBusConnection::SubPath))
        qFatal("The rogue has no place on the bus");
}

RoguePeer::~RoguePeer()
{
    const QString name = m_connection.name();
    m_connection.unregisterObject(Root, QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(name);
}

WireItems RoguePeer::numbered(int count)
{
    WireItems list;
    for (int row = 0; row < count; ++row) {
        const QString number = QString::number(row);
        list.append({"id " + number, "Song " + number, "http://h/" + number, "audio/mpeg", row});
    }
    return list;
}

WireInterfaces RoguePeer::description(const QString &id, const QString &name, uint count, uint atRevision)
{
    return {{Interface,
        {{"Id", id}, {"Name", name}, {"ItemCount", count}, {"Revision", atRevision}, {"Writable", false}}}};
}

void RoguePeer::appear()
{
    if (!m_connection.registerService(m_service))
        qFatal("The rogue gets no name");
}

void RoguePeer::vanish()
{
    m_connection.unregisterService(m_service);
}

void RoguePeer::offer(int number, const QString &id, const QString &name, uint count)
{
    const WireInterfaces interfaces = description(id, name, count, revision);
    objects.insert(QDBusObjectPath(path(number)), interfaces);
    announce(path(number), QVariant::fromValue(interfaces));
}

void RoguePeer::announce(const QString &objectPath, const QVariant &interfaces)
{
    signal(Root, ObjectManager, "InterfacesAdded",
        {QVariant::fromValue(QDBusObjectPath(objectPath)), interfaces});
}

void RoguePeer::withdraw(int number)
{
    objects.remove(QDBusObjectPath(path(number)));
    signal(Root, ObjectManager, "InterfacesRemoved",
        {QVariant::fromValue(QDBusObjectPath(path(number))), QStringList(Interface)});
}

void RoguePeer::change(int number, uint toRevision)
{
    revision = toRevision;
    signal(path(number), Interface, "Changed", {toRevision});
}

void RoguePeer::reply(const QDBusMessage &call, const QVariantList &arguments)
{
    m_connection.send(call.createReply(arguments));
}

void RoguePeer::refuse(const QDBusMessage &call, const QString &text, QDBusError::ErrorType type)
{
    m_connection.send(call.createErrorReply(type, text));
}

void RoguePeer::fail(const QDBusMessage &call, const QString &errorName)
{
    m_connection.send(call.createErrorReply(errorName, QStringLiteral("Not now")));
}

void RoguePeer::replyPage(const QDBusMessage &call, const WireItems &page, uint pageRevision)
{
    reply(call, {QVariant::fromValue(page), pageRevision});
}

void RoguePeer::replyFile(const QDBusMessage &call, const WireItems &list, uint listRevision)
{
    const QDBusUnixFileDescriptor file = RogueFiles::inMemory(RogueFiles::packed(list));
    reply(call, {QVariant::fromValue(file), uint(list.size()), listRevision});
}

void RoguePeer::signal(
    const QString &objectPath, const QString &interface, const QString &member, const QVariantList &arguments)
{
    auto message = QDBusMessage::createSignal(objectPath, interface, member);
    message.setArguments(arguments);
    m_connection.send(message);
}

bool RoguePeer::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.member() == u"GetManagedObjects") {
        ++lists;
        if (onList)
            onList(message);
        else
            reply(message, {QVariant::fromValue(objects)});
        return true;
    }
    if (message.member() == u"OpenItems") {
        ++files;
        if (onFile)
            onFile(message);
        else
            refuse(message, QStringLiteral("No such method"), QDBusError::UnknownMethod);
        return true;
    }
    if (message.member() != u"GetItems")
        return false;
    ++pages;
    if (onPage) {
        onPage(message);
        return true;
    }
    const uint start = message.arguments().at(0).toUInt();
    const uint count = message.arguments().at(1).toUInt();
    replyPage(message, items.mid(qsizetype(start), qsizetype(std::min(count, 1000U))), revision);
    return true;
}

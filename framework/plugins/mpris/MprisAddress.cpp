// SPDX-License-Identifier: MIT
#include "MprisAddress.h"

#include <QDBusError>

QDBusMessage MprisAddress::call(
    QLatin1String interface, const QString &method, const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(owner, Mpris::path, interface, method);
    message.setArguments(arguments);
    // A player that has gone is not to be started again by a question.
    message.setAutoStartService(false);
    return message;
}

QDBusMessage MprisAddress::getAll(QLatin1String interface) const
{
    return call(Mpris::propertiesInterface, QStringLiteral("GetAll"), {QString(interface)});
}

bool MprisAddress::isAnswer(const QDBusMessage &reply) const
{
    if (reply.service() == owner)
        return true;
    // Errors of the connection itself have no sender.
    return reply.type() == QDBusMessage::ErrorMessage
        && (reply.service().isEmpty() || reply.service() == Mpris::busService);
}

bool Mpris::isSilence(const QDBusError &error)
{
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout
        || error.type() == QDBusError::TimedOut;
}

bool Mpris::isAbsence(const QDBusError &error)
{
    return error.type() == QDBusError::ServiceUnknown || error.type() == QDBusError::Disconnected
        || error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

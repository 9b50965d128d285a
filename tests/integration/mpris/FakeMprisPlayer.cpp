// SPDX-License-Identifier: MIT
#include "FakeMprisPlayer.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace {
const QString path = QStringLiteral("/org/mpris/MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString prefix = QStringLiteral("org.mpris.MediaPlayer2.");
int connections = 0;
} // namespace

FakeMprisPlayer::FakeMprisPlayer(const QString &label)
    : m_connection(QDBusConnection::connectToBus(
        QDBusConnection::SessionBus, QStringLiteral("fake-player-%1").arg(++connections)))
    , m_label(label)
{
    qDBusRegisterMetaType<QList<QVariantMap>>();
    player = {{"PlaybackStatus", "Stopped"}, {"Metadata", QVariantMap()}, {"Position", qlonglong(0)},
        {"Rate", 1.0}, {"MinimumRate", 0.5}, {"MaximumRate", 2.0}, {"Volume", 1.0}, {"CanSeek", true},
        {"CanPause", true}, {"CanControl", true}};
    if (!m_connection.registerVirtualObject(path, this))
        qFatal("The player has no place on the bus");
}

FakeMprisPlayer::~FakeMprisPlayer()
{
    vanish();
}

QVariantMap FakeMprisPlayer::metadata(const QString &url, double seconds, const QString &title)
{
    QVariantMap map{{"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/track/1"))}, {"xesam:url", url},
        {"mpris:length", qlonglong(seconds * 1e6)}};
    if (!title.isEmpty())
        map.insert("xesam:title", title);
    return map;
}

void FakeMprisPlayer::appear()
{
    appearAs(m_label);
}

void FakeMprisPlayer::appearAs(const QString &label)
{
    if (!m_connection.registerService(prefix + label))
        qFatal("The player gets no name");
}

void FakeMprisPlayer::vanish()
{
    const QString name = m_connection.name();
    m_connection.unregisterObject(path);
    m_connection = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(name);
}

void FakeMprisPlayer::change()
{
    auto message = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    message.setArguments({playerInterface, QVariantMap(), QStringList{"PlaybackStatus", "Metadata"}});
    m_connection.send(message);
}

void FakeMprisPlayer::rename(const QString &identity)
{
    root["Identity"] = identity;
    auto message = QDBusMessage::createSignal(
        path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    message.setArguments(
        {QStringLiteral("org.mpris.MediaPlayer2"), QVariantMap{{"Identity", identity}}, QStringList()});
    m_connection.send(message);
}

void FakeMprisPlayer::seekTo(qlonglong microseconds)
{
    player["Position"] = microseconds;
    tellSeek(microseconds);
}

void FakeMprisPlayer::tellSeek(qlonglong microseconds)
{
    auto message = QDBusMessage::createSignal(path, playerInterface, QStringLiteral("Seeked"));
    message.setArguments({microseconds});
    m_connection.send(message);
}

void FakeMprisPlayer::reply(const QDBusMessage &call, const QVariantList &arguments)
{
    m_connection.send(call.createReply(arguments));
}

void FakeMprisPlayer::refuse(const QDBusMessage &call, const QString &text, QDBusError::ErrorType type)
{
    m_connection.send(call.createErrorReply(type, text));
}

bool FakeMprisPlayer::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (onCall && onCall(message))
        return true;
    const QVariantList arguments = message.arguments();
    if (message.member() == u"GetAll") {
        const bool ofPlayer = arguments.constFirst() == playerInterface;
        if (ofPlayer && player.value("PlaybackStatus") == "Playing"
            && player.value("Position").typeId() == QMetaType::LongLong)
            player["Position"] = player.value("Position").toLongLong() + 20'000;
        reply(message, {ofPlayer ? player : root});
        return true;
    }
    if (message.member() == u"Set") {
        const QString name = arguments.at(1).toString();
        player[name] = arguments.at(2).value<QDBusVariant>().variant();
        calls.append(name + QLatin1Char(' ') + player.value(name).toString());
    } else if (message.member() == u"GetTracksMetadata") {
        reply(message, {QVariant::fromValue(QList<QVariantMap>{trackList})});
        return true;
    } else {
        perform(message);
    }
    reply(message);
    change();
    return true;
}

void FakeMprisPlayer::perform(const QDBusMessage &call)
{
    QStringList words{call.member()};
    for (const QVariant &argument : call.arguments())
        words.append(argument.typeId() == qMetaTypeId<QDBusObjectPath>()
                ? argument.value<QDBusObjectPath>().path()
                : argument.toString());
    calls.append(words.join(QLatin1Char(' ')));
    if (call.member() == u"OpenUri") {
        player["Metadata"] = metadata(call.arguments().constFirst().toString());
        player["Position"] = qlonglong(0);
        player["PlaybackStatus"] = "Playing";
    } else if (call.member() == u"Pause") {
        player["PlaybackStatus"] = "Paused";
    } else if (call.member() == u"Play") {
        player["PlaybackStatus"] = "Playing";
    } else if (call.member() == u"Stop") {
        player["PlaybackStatus"] = "Stopped";
    } else if (call.member() == u"SetPosition") {
        player["Position"] = call.arguments().at(1);
    }
}

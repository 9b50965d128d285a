// SPDX-License-Identifier: MIT
#include "MprisCalls.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>

MprisCalls::MprisCalls(MprisAddress address, QObject *parent)
    : QObject(parent)
    , m_address(std::move(address))
{
}

void MprisCalls::command(const QString &method, const QVariantList &arguments, Done done, Failed failed)
{
    send(m_address.call(Mpris::playerInterface, method, arguments), method, std::move(done),
        std::move(failed));
}

void MprisCalls::setProperty(const QString &name, const QVariant &value, Done done, Failed failed)
{
    send(m_address.call(Mpris::propertiesInterface, QStringLiteral("Set"),
             {QString(Mpris::playerInterface), name, QVariant::fromValue(QDBusVariant(value))}),
        name, std::move(done), std::move(failed));
}

void MprisCalls::send(const QDBusMessage &message, const QString &what, Done done, Failed failed)
{
    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(message, m_address.commandTimeout()), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this, watcher, what, done = std::move(done), failed = std::move(failed)] {
            watcher->deleteLater();
            if (!watcher->isError()) {
                if (done && m_address.isAnswer(watcher->reply()))
                    done();
                return;
            }
            const QDBusError error = watcher->error();
            const bool silent = Mpris::isSilence(error);
            const bool absent = Mpris::isAbsence(error);
            const auto code = silent ? KelvoError::Timeout
                : absent             ? KelvoError::DeviceGone
                                     : KelvoError::CommandRefused;
            const QString words = silent
                ? QStringLiteral("no answer within %1 s").arg(m_address.commandTimeout() / 1000.0)
                : error.message().left(500);
            const QString text = QStringLiteral("%1 of %2: %3").arg(what, m_address.label, words);
            if (failed)
                failed(code, text);
            else
                Q_EMIT troubled(code, text);
        });
}

void MprisCalls::ask(
    const QDBusMessage &message, std::function<void(const QDBusMessage &reply, bool isError)> handler)
{
    auto *watcher
        = new QDBusPendingCallWatcher(m_address.connection.asyncCall(message, m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, handler = std::move(handler)] {
        watcher->deleteLater();
        handler(watcher->reply(), watcher->isError() || !m_address.isAnswer(watcher->reply()));
    });
}

void MprisCalls::getProperties(Properties handler)
{
    ask(m_address.getAll(Mpris::playerInterface),
        [handler = std::move(handler)](const QDBusMessage &message, bool isError) {
            const QDBusPendingReply<QVariantMap> reply(message);
            handler(isError || reply.isError() ? std::nullopt : std::optional<QVariantMap>(reply.value()));
        });
}

void MprisCalls::getTrackMetadata(const QString &trackId, std::function<void(const QVariantMap &)> handler)
{
    const QDBusMessage message
        = m_address.call(Mpris::trackListInterface, QStringLiteral("GetTracksMetadata"),
            {QVariant::fromValue(QList<QDBusObjectPath>{QDBusObjectPath(trackId)})});
    ask(message, [handler = std::move(handler)](const QDBusMessage &reply, bool isError) {
        if (isError || reply.signature() != u"aa{sv}")
            return;
        const auto tracks = qdbus_cast<QList<QVariantMap>>(reply.arguments().constFirst());
        if (!tracks.isEmpty())
            handler(tracks.constFirst());
    });
}

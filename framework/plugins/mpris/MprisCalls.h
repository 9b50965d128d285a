// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "MprisAddress.h"

#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>

/// Commands and questions to one player, all asynchronous. Nothing is answered any more once this object is destroyed.
class MprisCalls : public QObject
{
    Q_OBJECT
public:
    using Done = std::function<void()>;
    using Failed = std::function<void(KelvoError::Code code, const QString &message)>;
    /// Nothing: the player has not answered, or not with properties.
    using Properties = std::function<void(const std::optional<QVariantMap> &properties)>;

    explicit MprisCalls(MprisAddress address, QObject *parent = nullptr);

    /// Names the player in messages.
    QString label() const { return m_address.label; }
    void setLabel(const QString &label) { m_address.label = label; }

    /// A method of the player's interface. Without a handler of its own a failure is troubled().
    void command(
        const QString &method, const QVariantList &arguments = {}, Done done = {}, Failed failed = {});
    /// A property of the player's interface.
    void setProperty(const QString &name, const QVariant &value, Done done, Failed failed = {});
    /// All properties of the player's interface.
    void getProperties(Properties handler);
    /// What the list of tracks says of a track; without any answer there is none.
    void getTrackMetadata(const QString &trackId, std::function<void(const QVariantMap &)> handler);

Q_SIGNALS:
    /// A command was refused or not answered, with the player's own words.
    void troubled(KelvoError::Code code, const QString &message);

private:
    void send(const QDBusMessage &message, const QString &what, Done done, Failed failed);
    void ask(
        const QDBusMessage &message, std::function<void(const QDBusMessage &reply, bool isError)> handler);

    MprisAddress m_address;
};

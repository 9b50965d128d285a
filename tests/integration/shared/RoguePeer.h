// SPDX-License-Identifier: MIT
#pragma once

#include "WireTypes.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <functional>

/// Another owner of playlists on the bus, on a connection of its own, that says and does whatever a test wants.
/// As made it behaves well. Goes off the bus with this object.
class RoguePeer : public QDBusVirtualObject
{
public:
    /// @param label  what stands behind "org.kelvo.Playlists." in its name
    explicit RoguePeer(const QString &label = QStringLiteral("rogue"));
    ~RoguePeer() override;

    static inline const QString Interface = QStringLiteral("org.kelvo.Playlist1");
    static inline const QString ObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
    static inline const QString Root = QStringLiteral("/org/kelvo/Playlists");
    static QString path(int number) { return Root + QStringLiteral("/p%1").arg(number); }
    static WireItems numbered(int count);
    static WireInterfaces description(const QString &id, const QString &name, uint count, uint revision = 1);

    /// Its unique name.
    QString owner() const { return m_connection.baseService(); }

    /// What it lists and gives.
    WireObjects objects;
    WireItems items;
    uint revision = 1;
    /// Called instead of answering from the above, if set.
    using Handler = std::function<void(const QDBusMessage &call)>;
    Handler onList;
    Handler onPage;
    /// Without this it knows no files, and is asked for pages.
    Handler onFile;
    int lists = 0;
    int pages = 0;
    int files = 0;

    /// Takes the name, so that others find it.
    void appear();
    void vanish();
    /// Adds to `objects`, with or without the signal.
    void offer(int number, const QString &id, const QString &name, uint count);
    void announce(const QString &path, const QVariant &interfaces);
    void withdraw(int number);
    void change(int number, uint toRevision);

    void reply(const QDBusMessage &call, const QVariantList &arguments);
    void refuse(
        const QDBusMessage &call, const QString &text, QDBusError::ErrorType type = QDBusError::Failed);
    void fail(const QDBusMessage &call, const QString &errorName);
    void replyPage(const QDBusMessage &call, const WireItems &page, uint pageRevision);
    void replyFile(const QDBusMessage &call, const WireItems &list, uint listRevision);
    void signal(
        const QString &path, const QString &interface, const QString &member, const QVariantList &arguments);

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QDBusConnection m_connection;
    const QString m_service;
};

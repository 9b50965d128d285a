// SPDX-License-Identifier: MIT
#pragma once

#include "MprisAddress.h"
#include "MprisPings.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QVariantMap>

#include <functional>
#include <memory>

class ItemRenderer;
class KelvoRegistry;
class MprisTransport;

/// One player on the bus: its renderer is in the registry for as long as the player answers.
class MprisPlayer : public QObject
{
    Q_OBJECT
public:
    /// Makes a display name unique among the players, from the one that the player has.
    using Namer = std::function<QString(const QString &name)>;

    /// @param service  well-known bus name
    /// @param address  its label is not used
    MprisPlayer(KelvoRegistry *registry, MprisAddress address, QString service, Namer namer,
        QObject *parent = nullptr);
    ~MprisPlayer() override;

    /// Display name; empty before the player has told of itself.
    QString name() const { return m_name; }
    QString service() const { return m_service; }
    /// It has gone: takes the renderer out at once and deletes this object from the event loop.
    void leave();
    /// One of its signals has come.
    void noteSignal(const QDBusMessage &message);
    /// It may have another name now.
    void noteNewIdentity();

private:
    void ask();
    QVariantMap rootProperties(const QDBusMessage &reply, bool isError) const;
    QString nameFrom(const QVariantMap &rootProperties) const;
    void askName();
    void takeIdentity(const QDBusMessage &reply, bool isError);
    void takePlayer(const QDBusMessage &reply, const QString &error, bool silent);
    void takeRefusal(const QString &reason);
    void create(const QVariantMap &properties);
    void publish();
    void withdraw();
    void watch();

    QPointer<KelvoRegistry> m_registry;
    MprisAddress m_address;
    const QString m_service;
    const Namer m_namer;
    QString m_name;
    bool m_hasTrackList = false;
    bool m_asking = false;
    bool m_isNamed = false; ///< it has told of itself
    /// In a row, and when it is asked again.
    struct Refusals
    {
        int count = 0;
        QTimer next;
    } m_refusals;
    MprisPings m_pings;
    QTimer m_watch;
    QTimer m_nextName; ///< to be asked for
    QElapsedTimer m_lastName; ///< asked for
    std::unique_ptr<ItemRenderer> m_renderer;
    MprisTransport *m_transport = nullptr; ///< of m_renderer
};

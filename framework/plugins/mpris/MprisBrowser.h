// SPDX-License-Identifier: MIT
#pragma once

#include "BusBrowser.h"

#include <QHash>
#include <QPointer>

class KelvoRegistry;
class MprisPlayer;
class QDBusMessage;

/// Finds the players on the session bus as they come and go. GUI thread; never waits for the bus or for a player.
/// Destroying it takes all their renderers out of the registry.
class MprisBrowser : public BusBrowser
{
    Q_OBJECT
public:
    /// @param timeout  milliseconds that a question to a player may take
    MprisBrowser(
        KelvoRegistry *registry, const QDBusConnection &connection, int timeout, QObject *parent = nullptr);
    ~MprisBrowser() override;

protected:
    void add(const QString &owner, const QString &name) override;
    void drop(const QString &owner) override;

private Q_SLOTS:
    // Slots that take the message get it whatever its arguments are, so that wrong ones do no harm.
    void handlePlayerSignal(const QDBusMessage &message);
    void handleRootSignal(const QDBusMessage &message);

private:
    QString uniqueName(const QString &name, const QString &service) const;

    QPointer<KelvoRegistry> m_registry;
    QHash<QString, MprisPlayer *> m_players; ///< by unique names
};

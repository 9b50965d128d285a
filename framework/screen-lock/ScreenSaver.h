// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class BusConnector;
class BusNames;
class QDBusConnection;
class QDBusMessage;

/// The desktop's screen saver, org.freedesktop.ScreenSaver on the session bus (Idle Inhibition Service, freedesktop.org).
/// GUI thread; never waits for the bus or for the service.
///
/// What was asked for holds for each service that comes, so for one that was started anew, too. Where there is no bus, no
/// service, or one that refuses, nothing happens.
class ScreenSaver : public QObject
{
    Q_OBJECT
public:
    explicit ScreenSaver(QObject *parent = nullptr);
    /// Gives back what was asked for.
    ~ScreenSaver() override;

    /// Whether it is to leave the screen alone; false at first.
    void setInhibited(bool inhibited);

private:
    void connectToBus();
    void leaveBus();
    void findServices(const QDBusConnection &connection);
    void takeService(const QString &service);
    void forgetService();
    void ask();
    void takeCookie(uint cookie);
    void giveBack();
    QDBusMessage call(const QString &method) const;

    std::unique_ptr<BusConnector> m_connector;
    std::unique_ptr<BusNames> m_names;
    QString m_service; ///< unique name; empty while there is none
    std::unique_ptr<QObject> m_request; ///< receives the answer that is awaited
    std::optional<uint> m_cookie; ///< what the service knows the inhibition by
    bool m_isInhibited = false;
};

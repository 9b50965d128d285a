// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>

/// The desktop's screen saver on a connection of its own to the session bus, so another process as far as the bus can
/// tell; it goes with this object.
class FakeScreenSaver : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    enum Manner { Answers, Refuses, AnswersWhenTold };

    explicit FakeScreenSaver(const QString &connectionName, Manner manner = Answers);
    ~FakeScreenSaver() override;

    /// What was asked, in order: "Inhibit(org.kelvo.TestGui)", "UnInhibit(1)".
    const QStringList &asked() const { return m_asked; }
    /// Answers the oldest request that was not answered yet.
    void answer();
    /// Cookies that were given out and not given back.
    const QList<uint> &held() const { return m_held; }
    QString uniqueName() const { return m_connection.baseService(); }

public Q_SLOTS:
    uint Inhibit(const QString &application, const QString &reason);
    void UnInhibit(uint cookie);

private:
    uint makeCookie();

    QDBusConnection m_connection;
    const QString m_connectionName;
    const Manner m_manner;
    QStringList m_asked;
    QList<uint> m_held;
    QList<QDBusMessage> m_waiting;
    uint m_lastCookie = 0;
};

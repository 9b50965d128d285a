// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

/// A player on the bus, on a connection of its own, that says and does whatever a test wants. As made it behaves well:
/// while it plays, its position moves on with each question. Goes off the bus with this object.
class FakeMprisPlayer : public QDBusVirtualObject
{
public:
    /// @param label  what stands behind "org.mpris.MediaPlayer2." in its name
    explicit FakeMprisPlayer(const QString &label = QStringLiteral("fake"));
    ~FakeMprisPlayer() override;

    QVariantMap root{{QStringLiteral("Identity"), QStringLiteral("Fake")}};
    QVariantMap player;
    QVariantMap trackList; ///< metadata of the current track in its list
    /// The commands it got, with their arguments.
    QStringList calls;
    /// Asked first; true: it has seen to the call.
    std::function<bool(const QDBusMessage &call)> onCall;

    static QVariantMap metadata(
        const QString &url, double seconds = 60, const QString &title = QStringLiteral("Song"));

    void appear();
    void appearAs(const QString &label);
    /// Off the bus, as a crash.
    void vanish();
    /// Signals that its properties have changed.
    void change();
    /// Signals another name.
    void rename(const QString &identity);
    void seekTo(qlonglong microseconds);
    /// Signals a seek, whatever its position is.
    void tellSeek(qlonglong microseconds);
    void reply(const QDBusMessage &call, const QVariantList &arguments = {});
    void refuse(
        const QDBusMessage &call, const QString &text, QDBusError::ErrorType type = QDBusError::Failed);
    bool hasCall(const QString &call) const { return calls.contains(call); }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void perform(const QDBusMessage &call);

    QDBusConnection m_connection;
    const QString m_label;
};

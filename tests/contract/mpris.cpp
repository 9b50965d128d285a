// SPDX-License-Identifier: MIT
// A real player: mpv with its MPRIS script, on a session bus of its own.
#include "ContractSuite.h"
#include "KelvoRegistry.h"
#include "PrivateBus.h"
#include "Subject.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QDir>
#include <QStandardPaths>
#include <QTest>
#include <QThread>

#include <cstdio>
#include <memory>

namespace {
constexpr char pluginScript[] = "/usr/lib/mpv-mpris/mpris.so";
// What CTest takes for a skipped test.
constexpr int skippedCode = 77;

class MprisSubject : public Subject
{
public:
    MprisSubject()
    {
        refuses(Ability::VideoProperties, QStringLiteral("the player shows video in a window of its own"));
        refuses(Ability::Rewind, QStringLiteral("mpv plays no slower than at 0.01, never backwards"));
        cannotTry(Ability::TellUnseekable, QStringLiteral("mpv says CanSeek of everything"));
    }
    ~MprisSubject() override
    {
        m_player.kill();
        m_player.waitForFinished();
    }

    QString pluginFile() const override
    {
        // Asked for whenever the plug-in is loaded: the player is there then and plays nothing.
        const_cast<MprisSubject *>(this)->bringToRest();
        return QStringLiteral("mpris.so");
    }
    KelvoRenderer *findIn(const KelvoRegistry &registry) const override
    {
        return registry.findRendererByUuid(QStringLiteral("mpris:mpv"));
    }
    QList<QUrl> shortItems() const override { return {file("blip.wav"), file("blip.ogg"), file("blip.mp3")}; }
    QUrl longItem() const override { return file("long.flac"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return file("missing.ogg"); }
    int quietTime() const override { return 200; }

private:
    static QUrl file(const char *name)
    {
        return QUrl::fromLocalFile(QDir(QStringLiteral(KELVO_TEST_MEDIA)).filePath(QLatin1String(name)));
    }
    void bringToRest()
    {
        if (!m_bus)
            start();
        if (isAtRest())
            return;
        call(QStringLiteral("org.mpris.MediaPlayer2.Player"), QStringLiteral("Stop"), {});
        // Without the event loop, in which a test would hear of it.
        QDeadlineTimer limit(20'000);
        while (!isAtRest()) {
            if (limit.hasExpired())
                qFatal("mpv does not stop");
            QThread::msleep(2);
        }
    }
    bool isAtRest() { return trackId() == QLatin1String("/noplaylist"); }
    void start()
    {
        m_bus = std::make_unique<PrivateBus>();
        m_player.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_player.start(QStringLiteral("mpv"),
            {QStringLiteral("--no-config"), QStringLiteral("--script=") + QLatin1String(pluginScript),
                QStringLiteral("--ao=null"), QStringLiteral("--vo=null"), QStringLiteral("--idle=yes"),
                QStringLiteral("--no-terminal")});
        if (!QTest::qWaitFor([this] { return !trackId().isEmpty(); }, 20'000))
            qFatal("mpv does not appear on the bus");
    }
    QVariant property(const QString &name)
    {
        const QDBusReply<QVariant> reply = call(QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("Get"), {QStringLiteral("org.mpris.MediaPlayer2.Player"), name});
        return reply.value();
    }
    QString trackId()
    {
        const auto metadata = qdbus_cast<QVariantMap>(property(QStringLiteral("Metadata")));
        return metadata.value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>().path();
    }
    QDBusMessage call(const QString &interface, const QString &method, const QVariantList &arguments)
    {
        auto message = QDBusMessage::createMethodCall(QStringLiteral("org.mpris.MediaPlayer2.mpv"),
            QStringLiteral("/org/mpris/MediaPlayer2"), interface, method);
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message);
    }

    std::unique_ptr<PrivateBus> m_bus;
    QProcess m_player;
};
} // namespace

int main(int argc, char **argv)
{
    if (QStandardPaths::findExecutable(QStringLiteral("mpv")).isEmpty()
        || !QFile::exists(QLatin1String(pluginScript))) {
        std::puts("Skipped: mpv or its script for MPRIS (packages mpv and mpv-mpris) is not installed.");
        return skippedCode;
    }
    MprisSubject subject;
    // mpv plays into nothing, which costs little.
    return runRendererContract(subject, argc, argv, 8);
}

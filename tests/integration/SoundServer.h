// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

/// A sound server of the test's own, with one output that nobody hears. While it runs it is the one that PULSE_SERVER
/// names. A telephone call takes the sound away from everybody else.
class SoundServer
{
public:
    SoundServer()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        start();
    }
    void start()
    {
        const QString socket = m_folder.filePath(QStringLiteral("socket"));
        QFile::remove(socket); // left behind by one that was killed
        m_process.start(QStringLiteral("pulseaudio"),
            {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--use-pid-file=no"),
                QStringLiteral("--disable-shm=yes"), QStringLiteral("--exit-idle-time=-1"),
                QStringLiteral("--log-level=error"), QStringLiteral("-L"),
                QStringLiteral("module-null-sink sink_name=silence"), QStringLiteral("-L"),
                QStringLiteral("module-role-cork trigger_roles=phone cork_roles=no_role"),
                QStringLiteral("-L"),
                QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + socket});
        qputenv("PULSE_SERVER", QFile::encodeName(QStringLiteral("unix:") + socket));
        m_isRunning = QTest::qWaitFor([&socket] { return QFile::exists(socket); }, 10000);
    }
    ~SoundServer()
    {
        end();
        qunsetenv("PULSE_SERVER");
    }
    Q_DISABLE_COPY_MOVE(SoundServer)

    bool isRunning() const { return m_isRunning; }
    void end()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }

    /// What the mixer prints; it runs on the server as other programs of the desktop do.
    static QString mixer(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral("pactl"), arguments);
        process.waitForFinished(5000);
        return QString::fromUtf8(process.readAllStandardOutput());
    }
    /// The streams that are connected, as the mixer lists them.
    static QString streams() { return mixer({QStringLiteral("list"), QStringLiteral("sink-inputs")}); }
    static void setVolume(const QString &percent)
    {
        const QRegularExpression number(QStringLiteral("Sink Input #(\\d+)"));
        mixer({QStringLiteral("set-sink-input-volume"), number.match(streams()).captured(1), percent});
    }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    bool m_isRunning = false;
};

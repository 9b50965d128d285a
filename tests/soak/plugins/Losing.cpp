// SPDX-License-Identifier: MIT
#include "KelvoPlugin.h"

#include <QDBusConnection>
#include <QObject>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <array>
#include <utility>

#include <fcntl.h>

/// A back end for the proof that the soak sees what is lost: every moment it forgets some of everything.
class Losing : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "losing.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *, QString *) override
    {
        connect(&m_timer, &QTimer::timeout, this, &Losing::lose);
        m_timer.start(Pause);
        return true;
    }
    /// What was lost stays so until the process ends, but threads must have ended before.
    void stop() override
    {
        m_timer.stop();
        for (QThread *thread : std::as_const(m_threads)) {
            thread->quit();
            thread->wait();
        }
        qDeleteAll(std::exchange(m_threads, {}));
    }

private:
    static constexpr int Pause = 200; // milliseconds
    static constexpr size_t BlockSize = 256 * 1024;

    void lose()
    {
        using Block = std::array<char, BlockSize>;
        auto *block = new Block;
        block->fill('x'); // what nobody has written to is no memory yet
        m_lost.append(block);
        m_descriptors.append(open("/dev/null", O_RDONLY | O_CLOEXEC));
        m_threads.append(new QThread);
        m_threads.constLast()->start();
        QDBusConnection::connectToBus(
            QDBusConnection::SessionBus, QStringLiteral("lost %1").arg(m_lost.size()));
        m_windows.append(new QWindow);
        m_windows.constLast()->create();
    }

    QTimer m_timer;
    QList<void *> m_lost;
    QList<int> m_descriptors;
    QList<QThread *> m_threads;
    QList<QWindow *> m_windows;
};

#include "Losing.moc"

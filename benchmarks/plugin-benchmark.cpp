// SPDX-License-Identifier: MIT
// plugin-benchmark FOLDER [CYCLES]
// Every plug-in of the folder is loaded and unloaded again and again. What is measured is what one more round would
// leave behind: memory, threads, open files, connections to the session bus. Wants a session bus and a home of its own.
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"
#include "Measurement.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <malloc.h>

namespace {
constexpr int settling = 5; // the first of so many parts of the rounds: all that is made once is made then
constexpr int longestWait = 10'000; // milliseconds
constexpr int firstWait = 2'000; // milliseconds for a plug-in to bring something

void discardDebugLines(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

template <typename Condition> bool waitUntil(Condition isTrue, int milliseconds = longestWait)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!isTrue()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::usleep(200);
    }
    return true;
}

qsizetype entriesOf(const char *folder)
{
    return QDir(QLatin1String(folder))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

qsizetype namesOnTheBus()
{
    const QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
    return bus ? bus->registeredServiceNames().value().size() : 0;
}

double residentKilobytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    const qsizetype at = status.indexOf("VmRSS:") + 6;
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toDouble();
}

struct Usage
{
    double memory = residentKilobytes();
    qsizetype threads = entriesOf("/proc/self/task");
    qsizetype files = entriesOf("/proc/self/fd");
    qsizetype names = namesOnTheBus();
};

/// What goes on by itself after an unloading has come to its end: nothing has changed for a while.
Usage settledUsage()
{
    Usage last;
    QElapsedTimer still;
    still.start();
    const QDeadlineTimer deadline(longestWait);
    while (still.elapsed() < 300 && !deadline.hasExpired()) {
        waitUntil([] { return false; }, 20);
        const Usage now;
        if (now.threads != last.threads || now.files != last.files || now.names != last.names)
            still.restart();
        last = now;
    }
    return last;
}

class Cycles
{
public:
    explicit Cycles(QString fileName)
        : m_fileName(std::move(fileName))
    {
    }

    bool run(int count)
    {
        for (int i = 0; i < count; ++i) {
            QElapsedTimer timer;
            timer.start();
            if (!runOnce())
                return false;
            m_milliseconds.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        return true;
    }

    double median() const { return Measurement::median(m_milliseconds); }

private:
    qsizetype brought() const { return m_registry.renderers().size() + m_registry.sources().size(); }

    bool runOnce()
    {
        m_registry.loadPlugin(m_fileName);
        if (!waitUntil([this] { return m_registry.loadedPlugins().contains(m_fileName); }))
            return false;
        if (m_brings < 0) {
            waitUntil([this] { return brought() > 0; }, firstWait);
            m_brings = brought();
        }
        // What it brings may come by and by; some bring nothing for lack of anything outside.
        if (!waitUntil([this] { return brought() >= m_brings; }))
            return false;
        m_registry.unloadPlugin(m_fileName);
        return waitUntil([this] { return brought() == 0 && m_registry.loadedPlugins().isEmpty(); });
    }

    KelvoRegistry m_registry;
    QString m_fileName;
    qsizetype m_brings = -1;
    std::vector<double> m_milliseconds;
};

bool measure(const QString &fileName, int cycles)
{
    const std::string name = QFileInfo(fileName).completeBaseName().toStdString();
    Cycles run(fileName);
    const bool started = run.run(cycles / settling);
    const Usage before = settledUsage();
    const bool done = started && run.run(cycles - cycles / settling);
    const Usage after = settledUsage();
    const std::string rounds = std::to_string(cycles) + " times loaded and unloaded";
    const std::string reference = "after " + std::to_string(cycles / settling);
    using Measurement::row;
    if (!done) {
        std::fprintf(stderr, "%s cannot be loaded or does not end\n", name.c_str());
        return false;
    }
    row(name + " " + rounds + ": memory", after.memory, "kB", reference, before.memory, "flat");
    row("- threads", double(after.threads), "", reference, double(before.threads), "1");
    row("- open files", double(after.files), "", reference, double(before.files), "1");
    row("- names on the session bus", double(after.names), "", reference, double(before.names), "1");
    row("- one round, median", run.median(), "ms");
    return true;
}
} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(discardDebugLines);
    if (argc < 2)
        return 2;
    qputenv("KELVO_PLUGIN_PATH", argv[1]);
    const QCoreApplication application(argc, argv);
    const int cycles = argc > 2 ? QByteArray(argv[2]).toInt() : 1000;
    const QStringList files
        = QDir(QString::fromLocal8Bit(argv[1])).entryList({QStringLiteral("*.so")}, QDir::Files);
    int failures = 0;
    for (const QString &file : files)
        failures += measure(file, cycles) ? 0 : 1;
    return failures ? 1 : 0;
}

// SPDX-License-Identifier: MIT
#include "EvidenceService.h"

#include "BusAddress.h"
#include "BusConnector.h"
#include "Evidence.h"
#include "EvidenceAdaptor.h"
#include "KelvoMessageHandler.h"

#include <QCoreApplication>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {
constexpr int busTimeout = 5000; // milliseconds
constexpr int mostSaving = 4; // bundles at a time
const auto busName = QStringLiteral("kelvo-evidence");
const auto objectPath = QStringLiteral("/org/kelvo/Evidence");

// A handler may do next to nothing; writing into a pipe is among it.
int pipeEnds[2] = {-1, -1};

void wakeUp(int)
{
    const int error = errno;
    const char byte = 0;
    // A full pipe is as good: it will be read.
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
    errno = error;
}

/// The end to be read from. The handler and its pipe stay until the process ends.
int catchSignal()
{
    if (pipeEnds[0] < 0 && ::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    struct sigaction action = {};
    action.sa_handler = wakeUp;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGUSR1, &action, nullptr);
    return pipeEnds[0];
}
} // namespace

EvidenceService::EvidenceService(Collect collect)
    : m_collect(std::move(collect))
    , m_signals(catchSignal(), QSocketNotifier::Read)
{
    connect(&m_signals, &QSocketNotifier::activated, this, &EvidenceService::saveForSignal);
    connectToBus();
}

EvidenceService::~EvidenceService()
{
    m_mailbox.close();
    m_connector.reset();
    if (m_isOffered)
        QDBusConnection(busName).unregisterObject(objectPath);
    QDBusConnection::disconnectFromBus(busName);
}

bool EvidenceService::save(Saved saved)
{
    if (m_saving >= mostSaving)
        return false;
    ++m_saving;
    m_disk.start([this, evidence = m_collect(), saved = std::move(saved)] {
        const QString problem = evidence.save();
        m_mailbox.post([this, saved, folder = evidence.folder, problem] {
            --m_saving;
            saved(folder, problem);
        });
    });
    return true;
}

void EvidenceService::saveForSignal()
{
    char bytes[64];
    while (::read(pipeEnds[0], bytes, sizeof bytes) > 0) { }
    save([](const QString &folder, const QString &problem) {
        if (problem.isEmpty())
            qCInfo(lcKelvo).noquote() << "Evidence is saved in" << folder;
        else
            qCWarning(lcKelvo).noquote() << "Evidence cannot be saved:" << problem;
    });
}

void EvidenceService::connectToBus()
{
    const QString address = BusAddress::ofSession();
    if (!BusAddress::mayListen(address))
        return;
    m_connector = std::make_unique<BusConnector>(address, busName, busTimeout);
    // Where there is no bus nobody asks by it, either: nothing to be said.
    connect(m_connector.get(), &BusConnector::connected, this, &EvidenceService::offer);
    m_connector->start();
}

void EvidenceService::offer(const QDBusConnection &connection)
{
    auto usable = connection;
    new EvidenceAdaptor(this, connection);
    m_isOffered = usable.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
    // Last: who sees the name finds the object.
    constexpr uint doNotQueue = 4; // DBUS_NAME_FLAG_DO_NOT_QUEUE
    auto request = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("RequestName"));
    request << QStringLiteral("org.kelvo.Evidence.pid%1").arg(QCoreApplication::applicationPid())
            << doNotQueue;
    usable.send(request);
}

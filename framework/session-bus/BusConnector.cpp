// SPDX-License-Identifier: MIT
#include "BusConnector.h"

#include "BusAddress.h"
#include "HandOver.h"
#include "ThreadEnd.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QThread>

#include <sys/eventfd.h>
#include <unistd.h>

class BusConnector::Thread : public QThread
{
public:
    Thread(const QString &address, const QString &connectionName, int timeout)
        : m_address(address)
        , m_connectionName(connectionName)
        , m_timeout(timeout)
        , m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
    }
    ~Thread() override { ::close(m_wakeUp); }

    void callOff() { ::eventfd_write(m_wakeUp, 1); }
    QString connectionName() const { return m_connectionName; }
    /// Once finished: why there is no connection, empty when there is one.
    QString failure() const { return m_failure; }

protected:
    void run() override
    {
        connectToBus();
        HandOver::given(this);
    }

private:
    void connectToBus()
    {
        // Asked first: while the bus library waits for a silent bus, it blocks every other user of it as
        // well.
        if (!BusAddress::answers(m_address, m_timeout, m_wakeUp)) {
            m_failure = QStringLiteral("it does not answer");
            return;
        }
        const auto connection = QDBusConnection::connectToBus(m_address, m_connectionName);
        if (!connection.isConnected())
            m_failure = connection.lastError().message();
    }

    const QString m_address;
    const QString m_connectionName;
    const int m_timeout;
    const int m_wakeUp;
    QString m_failure;
};

BusConnector::BusConnector(
    const QString &address, const QString &connectionName, int timeout, QObject *parent)
    : QObject(parent)
    , m_thread(std::make_unique<Thread>(address, connectionName, timeout))
{
    m_thread->setObjectName(connectionName);
    connect(m_thread.get(), &QThread::finished, this, &BusConnector::report);
}

BusConnector::~BusConnector()
{
    m_thread->callOff();
    // It does not end in the one case in which the bus answered the greeting and then fell silent: the end of the
    // process must not wait for that.
    constexpr unsigned long patience = 1000;
    if (!m_thread->wait(patience))
        leaveRunning(std::move(m_thread));
}

void BusConnector::start()
{
    m_thread->start();
}

void BusConnector::report()
{
    HandOver::taken(m_thread.get());
    if (m_thread->failure().isEmpty())
        Q_EMIT connected(QDBusConnection(m_thread->connectionName()));
    else
        Q_EMIT failed(m_thread->failure());
}

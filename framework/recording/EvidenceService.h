// SPDX-License-Identifier: MIT
#pragma once

#include "Mailbox.h"
#include "WorkerPool.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

class BusConnector;
class QDBusConnection;
struct Evidence;

/// Saves evidence for whoever asks: by the signal SIGUSR1, and by D-Bus at the object /org/kelvo/Evidence of the name
/// org.kelvo.Evidence.pidN, method SaveEvidence of org.kelvo.Evidence1, which answers with the path of the folder.
///
/// GUI thread, as long as there is an application object. Neither the bus nor the disk is waited for.
class EvidenceService : public QObject
{
    Q_OBJECT
public:
    using Collect = std::function<Evidence()>;
    /// @param folder  of what was saved  @param problem  why it was not; empty when it was
    using Saved = std::function<void(const QString &folder, const QString &problem)>;

    /// @param collect  called on this thread for each bundle
    explicit EvidenceService(Collect collect);
    ~EvidenceService() override;

    /// Saves what is known at this moment; `saved` is called later, from the event loop. While some bundles are being saved
    /// there is none for who asks for more: each takes memory until it is written. False then, and `saved` is not called.
    bool save(Saved saved);

private:
    void saveForSignal();
    void connectToBus();
    void offer(const QDBusConnection &connection);

    const Collect m_collect;
    Mailbox m_mailbox{this};
    QSocketNotifier m_signals;
    std::unique_ptr<BusConnector> m_connector;
    bool m_isOffered = false;
    int m_saving = 0;
    WorkerPool m_disk{QStringLiteral("kelvo-evidence"), 1};
};

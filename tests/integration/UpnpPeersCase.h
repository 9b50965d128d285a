// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoTestCase.h"
#include "UpnpTypes.h"

#include <QProcess>
#include <QUrl>

#include <map>
#include <memory>

class KelvoSource;
class RendererRecorder;
class UpnpNetwork;

/// Base of the tests with UPnP peers of several makes at the other end of a cable (see run-upnp-namespaces.sh). The
/// plug-in stays loaded from initTestCase() to the end, since peers take up to some seconds to be found.
class UpnpPeersCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    /// Milliseconds: peers wait a random time before they answer a search.
    static constexpr int LongWait = 15'000;

    UpnpPeersCase();
    ~UpnpPeersCase() override;

    static QString startCommand(const QString &peer);
    static bool isInstalled(const QString &peer);
    /// Those of the given names that are installed.
    static QStringList installed(const QStringList &peers);
    static QString missing(const QString &peer);
    /// Our own address on the cable, and that of the peers.
    static QString nearAddress();
    static QString farAddress();
    static bool setLink(const char *upOrDown);

    /// Those that are not installed are left out.
    void startPeers(const QStringList &peers, const QStringList &arguments = {});
    void signalPeer(const QString &peer, int signal);
    /// As a crash would.
    void killPeer(const QString &peer);
    bool isRunning(const QString &peer) const;

    /// What the peers that are started are called in the registry, sorted.
    QStringList expectedRenderers() const;
    QStringList expectedSources() const;
    void loadPlugin();
    KelvoRegistry &registry() { return *m_registry; }
    QStringList rendererNames() const;
    QStringList sourceNames() const;
    bool isComplete() const;
    /// Null when there is none.
    KelvoRenderer *rendererNamed(const QString &name) const;
    KelvoSource *sourceNamed(const QString &name) const;
    /// So that the next test finds them at rest.
    void stopRenderers();

    /// What the device itself says, asked by another control point than the console's.
    Upnp::Answer ask(const KelvoRenderer &renderer, const Upnp::Call &call);
    /// One result of a question to it.
    QString ask(const KelvoRenderer &renderer, Upnp::Service service, const char *action, const char *result);

    static QUrl media(const char *name);
    /// Asks for the position now and then, as the console does: not every device tells the duration unasked.
    static bool waitForDuration(RendererRecorder &heard, int seconds);

protected Q_SLOTS:
    void cleanup();
    void cleanupTestCase();

private:
    std::map<QString, std::unique_ptr<QProcess>> m_peers;
    std::unique_ptr<KelvoRegistry> m_registry;
    std::unique_ptr<UpnpNetwork> m_otherControlPoint;
};

// SPDX-License-Identifier: MIT
#include "UpnpPeersCase.h"

#include "KelvoSource.h"
#include "RendererRecorder.h"
#include "UpnpNetwork.h"

#include <QDir>
#include <QFileInfo>
#include <QNetworkInterface>
#include <QTest>

#include <csignal>
#include <optional>

namespace {
struct PeerNames
{
    const char *renderer;
    const char *source;
};

/// What the peers call their devices.
const std::map<QString, PeerNames> &peerNames()
{
    static const std::map<QString, PeerNames> names = {
        {"gmediarender", {"Test gmediarender", nullptr}},
        {"rygel", {"Test renderer", "Test server"}},
        {"minidlna", {nullptr, "Test minidlna"}},
        {"gerbera", {nullptr, "Test gerbera"}},
    };
    return names;
}

QString cableEnd()
{
    return qEnvironmentVariable("KELVO_UPNP_INTERFACE");
}
} // namespace

UpnpPeersCase::UpnpPeersCase() = default;
UpnpPeersCase::~UpnpPeersCase() = default;

QString UpnpPeersCase::startCommand(const QString &peer)
{
    return qEnvironmentVariable("KELVO_TEST_UPNP_PEERS") + '/' + peer + "/start";
}

bool UpnpPeersCase::isInstalled(const QString &peer)
{
    return QFileInfo::exists(startCommand(peer));
}

QStringList UpnpPeersCase::installed(const QStringList &peers)
{
    QStringList present;
    for (const QString &peer : peers) {
        if (isInstalled(peer))
            present.append(peer);
    }
    return present;
}

QString UpnpPeersCase::missing(const QString &peer)
{
    return QStringLiteral("%1 (the package of that name) is not installed").arg(peer);
}

QString UpnpPeersCase::nearAddress()
{
    const auto addresses = QNetworkInterface::interfaceFromName(cableEnd()).addressEntries();
    return addresses.isEmpty() ? QString() : addresses.constFirst().ip().toString();
}

QString UpnpPeersCase::farAddress()
{
    return qEnvironmentVariable("KELVO_TEST_UPNP_ADDRESS");
}

bool UpnpPeersCase::setLink(const char *upOrDown)
{
    return QProcess::execute("ip", {"link", "set", cableEnd(), upOrDown}) == 0;
}

void UpnpPeersCase::startPeers(const QStringList &peers, const QStringList &arguments)
{
    for (const QString &peer : installed(peers)) {
        std::unique_ptr<QProcess> &process = m_peers[peer];
        process = std::make_unique<QProcess>();
        process->start(startCommand(peer), arguments);
    }
    for (const QString &peer : installed(peers))
        QVERIFY2(m_peers.at(peer)->waitForStarted(), qPrintable(peer));
}

void UpnpPeersCase::signalPeer(const QString &peer, int signal)
{
    QVERIFY2(isRunning(peer), qPrintable(peer));
    QCOMPARE(::kill(pid_t(m_peers.at(peer)->processId()), signal), 0);
}

void UpnpPeersCase::killPeer(const QString &peer)
{
    signalPeer(peer, SIGKILL);
    QVERIFY2(m_peers.at(peer)->waitForFinished(), qPrintable(peer));
}

bool UpnpPeersCase::isRunning(const QString &peer) const
{
    const auto process = m_peers.find(peer);
    return process != m_peers.end() && process->second->state() == QProcess::Running;
}

QStringList UpnpPeersCase::expectedRenderers() const
{
    QStringList names;
    for (const auto &[peer, process] : m_peers) {
        if (const char *name = peerNames().at(peer).renderer)
            names.append(name);
    }
    names.sort();
    return names;
}

QStringList UpnpPeersCase::expectedSources() const
{
    QStringList names;
    for (const auto &[peer, process] : m_peers) {
        if (const char *name = peerNames().at(peer).source)
            names.append(name);
    }
    names.sort();
    return names;
}

void UpnpPeersCase::loadPlugin()
{
    m_registry = std::make_unique<KelvoRegistry>();
    m_registry->loadPlugin("upnp.so");
    m_otherControlPoint = std::make_unique<UpnpNetwork>(QStringList{cableEnd()});
}

QStringList UpnpPeersCase::rendererNames() const
{
    QStringList names;
    for (const KelvoRenderer *renderer : m_registry->renderers())
        names.append(renderer->name());
    names.sort();
    return names;
}

QStringList UpnpPeersCase::sourceNames() const
{
    QStringList names;
    for (const KelvoSource *source : m_registry->sources())
        names.append(source->name());
    names.sort();
    return names;
}

bool UpnpPeersCase::isComplete() const
{
    return rendererNames() == expectedRenderers() && sourceNames() == expectedSources();
}

KelvoRenderer *UpnpPeersCase::rendererNamed(const QString &name) const
{
    for (KelvoRenderer *renderer : m_registry->renderers()) {
        if (renderer->name() == name)
            return renderer;
    }
    return nullptr;
}

KelvoSource *UpnpPeersCase::sourceNamed(const QString &name) const
{
    for (KelvoSource *source : m_registry->sources()) {
        if (source->name() == name)
            return source;
    }
    return nullptr;
}

void UpnpPeersCase::stopRenderers()
{
    for (KelvoRenderer *renderer : m_registry->renderers()) {
        RendererRecorder heard(renderer);
        renderer->stop();
        QTRY_COMPARE(heard.askStatus().state, int(KelvoRenderer::Stopped));
        // The console may know that before the device has obeyed, which then still owes an answer.
        const auto stands = [&] {
            const QString state
                = ask(*renderer, Upnp::Service::AVTransport, "GetTransportInfo", "CurrentTransportState");
            return state == QLatin1String("STOPPED") || state == QLatin1String("NO_MEDIA_PRESENT");
        };
        QTRY_VERIFY(stands());
    }
}

Upnp::Answer UpnpPeersCase::ask(const KelvoRenderer &renderer, const Upnp::Call &call)
{
    std::optional<Upnp::Answer> answer;
    bool isUnderWay = false;
    // It may not have been found yet by this control point.
    const auto isAnswered = [&] {
        if (answer && answer->outcome == Upnp::Answer::Missing)
            answer.reset();
        if (!answer && !std::exchange(isUnderWay, true)) {
            m_otherControlPoint->call(
                {Upnp::Kind::Renderer, renderer.uuid()}, call, [&](const Upnp::Answer &given) {
                    answer = given;
                    isUnderWay = false;
                });
        }
        return answer && answer->outcome != Upnp::Answer::Missing;
    };
    if (!QTest::qWaitFor(isAnswered, LongWait))
        qFatal("No answer within the time-out");
    return *answer;
}

QString UpnpPeersCase::ask(
    const KelvoRenderer &renderer, Upnp::Service service, const char *action, const char *result)
{
    Upnp::Call call;
    call.service = service;
    call.action = action;
    call.in = {{"InstanceID", "0"}};
    if (service == Upnp::Service::RenderingControl)
        call.in.append(QPair<QByteArray, QString>("Channel", "Master"));
    call.out = {result};
    return ask(renderer, call).values.value(result);
}

QUrl UpnpPeersCase::media(const char *name)
{
    return QUrl::fromLocalFile(QDir(KELVO_TEST_MEDIA).filePath(name));
}

bool UpnpPeersCase::waitForDuration(RendererRecorder &heard, int seconds)
{
    const auto isKnown = [&heard, seconds] {
        return heard.askPosition() >= 0 && heard.metadata("duration") == seconds;
    };
    return QTest::qWaitFor(isKnown, LongWait);
}

void UpnpPeersCase::cleanup()
{
    stopRenderers();
}

void UpnpPeersCase::cleanupTestCase()
{
    m_otherControlPoint.reset();
    m_registry.reset();
    for (const auto &[peer, process] : m_peers) {
        process->kill();
        process->waitForFinished();
    }
    m_peers.clear();
}

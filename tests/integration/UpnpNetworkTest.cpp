// SPDX-License-Identifier: MIT
// Real devices on a network of their own (see run-upnp-peers.sh): how they come, what they tell, how they go. The tests
// run in this order; the last one ends the devices.
#include "UpnpNetwork.h"
#include "HungDevice.h"
#include "ItemRenderer.h"
#include "KelvoRegistry.h"
#include "KelvoSource.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RemotePlayer.h"
#include "RendererRecorder.h"
#include "SsdpAnnouncer.h"
#include "TestGroup.h"
#include "UpnpTransport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <memory>

namespace {
const QString plugin = QStringLiteral("upnp.so");
constexpr int longWait = 15'000; // milliseconds; devices wait a random time before they answer

/// Receives the answers of sources.
class SourceListener : public QObject
{
    Q_OBJECT
public:
    QHash<QString, QVariant> values;

public Q_SLOTS:
    void sourcePropertyCallback(QString &key, QVariant &value) { values.insert(key, value); }
};

/// What another console would have; a plug-in is in a process only once.
struct OtherConsole
{
    OtherConsole()
        : network({QStringLiteral("lo")})
    {
        QObject::connect(&network, &UpnpNetwork::appeared, &network, [this](const Upnp::Description &device) {
            if (device.key.kind == Upnp::Kind::Renderer)
                renderer = std::make_unique<ItemRenderer>(
                    std::make_unique<RemotePlayer>(
                        std::make_unique<UpnpTransport>(network.link(device), UpnpTransport::Patience()),
                        device.name),
                    device.key.udn);
        });
    }

    UpnpNetwork network;
    std::unique_ptr<ItemRenderer> renderer;
};

int count(const char *folder)
{
    return int(
        QDir(QLatin1String(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System).size());
}

/// What another console sees of a file of this computer: the address that the renderer fetches it from.
bool isHosted(const QUrl &url, const char *suffix)
{
    static const QRegularExpression path(QStringLiteral("^/[0-9a-f]{32}\\.(\\w+)$"));
    const QRegularExpressionMatch match = path.match(url.path());
    return url.scheme() == QLatin1String("http") && url.host() == QLatin1String("127.0.0.1") && url.port() > 0
        && match.captured(1) == QLatin1String(suffix);
}

class UpnpNetworkTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void appearsWithinAnInstantOfItsAnnouncement();
    void serverTellsItsProperties();
    void serverIgnoresWhatIsSet();
    void missingItemIsRefusedWithTheDevicesWords();
    void twoConsolesDriveOneRenderer();
    void loadingAndUnloadingLeavesNothingBehind();
    void hungDevicesAreTakenOutAndComeBack();
    void endedDevicesGoAtOnce();

private:
    static qint64 peers() { return qEnvironmentVariableIntValue("KELVO_TEST_UPNP_PEERS"); }
    void load(KelvoRegistry &registry);

    std::unique_ptr<SsdpAnnouncer> m_renderer;
    std::unique_ptr<SsdpAnnouncer> m_server;
};

void UpnpNetworkTest::initTestCase()
{
    const QByteArray missing = qgetenv("KELVO_TEST_UPNP_MISSING");
    if (!missing.isEmpty())
        QSKIP(missing.constData());
    m_renderer = std::make_unique<SsdpAnnouncer>("urn:schemas-upnp-org:device:MediaRenderer:1");
    m_server = std::make_unique<SsdpAnnouncer>("urn:schemas-upnp-org:device:MediaServer:1");
    if (!m_renderer->isReady() || !m_server->isReady())
        QSKIP("No device of the loopback interface answers: multicast does not work here");
}

void UpnpNetworkTest::init()
{
    KelvoTestCase::init();
    m_renderer->start();
    m_server->start();
}

void UpnpNetworkTest::cleanup()
{
    m_renderer->stop();
    m_server->stop();
}

void UpnpNetworkTest::load(KelvoRegistry &registry)
{
    registry.loadPlugin(plugin);
    QTRY_VERIFY_WITH_TIMEOUT(!registry.renderers().isEmpty() && !registry.sources().isEmpty(), longWait);
}

void UpnpNetworkTest::appearsWithinAnInstantOfItsAnnouncement()
{
    m_renderer->stop();
    KelvoRegistry registry;
    registry.loadPlugin(plugin);
    QTRY_VERIFY_WITH_TIMEOUT(!registry.sources().isEmpty(), longWait);
    // It may have answered the search by itself.
    if (registry.renderers().isEmpty()) {
        QElapsedTimer timer;
        timer.start();
        m_renderer->start();
        QTRY_VERIFY(!registry.renderers().isEmpty());
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        qInfo("%lld ms from announcement to registry", timer.elapsed());
    }
    QCOMPARE(registry.renderers().constFirst()->name(), QStringLiteral("Test renderer"));
    QCOMPARE(registry.renderers().constFirst()->uuid(), QString::fromLatin1(m_renderer->udn()));
    QCOMPARE(registry.sources().constFirst()->name(), QStringLiteral("Test server"));
    QCOMPARE(registry.sources().constFirst()->uuid(), QString::fromLatin1(m_server->udn()));
}

void UpnpNetworkTest::serverTellsItsProperties()
{
    KelvoRegistry registry;
    load(registry);
    KelvoSource *source = registry.sources().constFirst();
    SourceListener listener;
    QStringList refused;
    const QStringList keys = {"signIn", "signedIn", "deviceType", "manufacturer", "manufacturerURL",
        "modelDescription", "modelName", "modelNumber", "modelURL", "serialNumber", "presentationURL",
        "universalProductCode", "iconURL", "supportQuery"};
    for (const QString &key : keys) {
        if (!source->kelvoProperty(key, &listener, "sourcePropertyCallback(QString&,QVariant&)"))
            refused.append(key);
    }
    QTRY_COMPARE(listener.values.size() + refused.size(), keys.size());
    QCOMPARE(listener.values.value("signIn"), QVariant(false));
    QCOMPARE(listener.values.value("signedIn"), QVariant(true));
    QCOMPARE(listener.values.value("supportQuery"), QVariant(true));
    QVERIFY(listener.values.value("deviceType").toString().contains("MediaServer"));
    QVERIFY(listener.values.value("iconURL").toString().startsWith("http://127.0.0.1:"));
    QCOMPARE(listener.values.value("modelName"), QVariant("Rygel"));
    // What this server does not say is refused, so that who asks goes on to the next.
    QCOMPARE(
        refused, (QStringList{"modelDescription", "modelURL", "presentationURL", "universalProductCode"}));
    QVERIFY(!source->kelvoProperty("colour", &listener, "sourcePropertyCallback(QString&,QVariant&)"));
}

void UpnpNetworkTest::serverIgnoresWhatIsSet()
{
    KelvoRegistry registry;
    load(registry);
    LogRecorder log;
    registry.sources().constFirst()->setKelvoProperty("signIn", true);
    QVERIFY(
        log.warnings().contains(QStringLiteral("A media server has no property \"signIn\" that can be set")));
}

void UpnpNetworkTest::missingItemIsRefusedWithTheDevicesWords()
{
    KelvoRegistry registry;
    load(registry);
    RendererRecorder heard(registry.renderers().constFirst());
    registry.renderers().constFirst()->playUri(QUrl("http://127.0.0.1:9/missing.mp3"));
    QTRY_COMPARE(heard.errors(), QList<int>{KelvoError::NotFound});
    QCOMPARE(heard.errorTexts().constFirst(),
        QStringLiteral("SetAVTransportURI: Test renderer refused: 716 Resource not found"));
}

void UpnpNetworkTest::twoConsolesDriveOneRenderer()
{
    KelvoRegistry registry;
    load(registry);
    KelvoRenderer *first = registry.renderers().constFirst();
    OtherConsole other;
    QTRY_VERIFY_WITH_TIMEOUT(other.renderer, longWait);
    KelvoRenderer *second = other.renderer.get();
    RendererRecorder heardFirst(first);
    RendererRecorder heardSecond(second);
    const QDir media(QStringLiteral(KELVO_TEST_MEDIA));
    const QUrl one = QUrl::fromLocalFile(media.filePath("long.mp3"));
    const QUrl two = QUrl::fromLocalFile(media.filePath("long.flac"));
    first->playUri(one);
    QTRY_COMPARE(heardFirst.state(), KelvoRenderer::Playing);
    QTRY_COMPARE(heardSecond.state(), KelvoRenderer::Playing);
    QTRY_COMPARE(heardSecond.mediaUrls().size(), 1);
    QVERIFY2(isHosted(heardSecond.mediaUrls().constFirst(), "mp3"),
        qPrintable(heardSecond.mediaUrls().constFirst().toString()));
    second->playUri(two);
    QTRY_COMPARE(heardFirst.mediaUrls().size(), 2);
    QCOMPARE(heardFirst.mediaUrls().constFirst(), one);
    QVERIFY2(isHosted(heardFirst.mediaUrls().constLast(), "flac"),
        qPrintable(heardFirst.mediaUrls().constLast().toString()));
    QCOMPARE(heardFirst.mediaIndexes().constLast(), -1);
    // The first takes it as it is.
    second->pause();
    QTRY_COMPARE(heardFirst.state(), KelvoRenderer::Paused);
    first->stop();
    QTRY_COMPARE(heardSecond.state(), KelvoRenderer::Stopped);
    QCOMPARE(heardFirst.errors() + heardSecond.errors(), QList<int>());
}

void UpnpNetworkTest::loadingAndUnloadingLeavesNothingBehind()
{
    const auto cycle = [](int times) {
        for (int i = 0; i < times; ++i) {
            KelvoRegistry registry;
            registry.loadPlugin(plugin);
            QTRY_VERIFY_WITH_TIMEOUT(!registry.renderers().isEmpty(), longWait);
            registry.unloadPlugin(plugin);
            QVERIFY(registry.renderers().isEmpty());
        }
    };
    cycle(3);
    QTRY_VERIFY(count("/proc/self/task") < 20);
    const int files = count("/proc/self/fd");
    const int threads = count("/proc/self/task");
    cycle(15);
    QTRY_VERIFY2(
        count("/proc/self/fd") <= files + 2, qPrintable(QString::number(count("/proc/self/fd") - files)));
    QTRY_VERIFY2(count("/proc/self/task") <= threads + 1,
        qPrintable(QString::number(count("/proc/self/task") - threads)));
}

void UpnpNetworkTest::hungDevicesAreTakenOutAndComeBack()
{
    KelvoRegistry registry;
    load(registry);
    QSignalSpy errors(registry.renderers().constFirst(), &KelvoRenderer::error);
    QElapsedTimer timer;
    timer.start();
    ::kill(pid_t(peers()), SIGSTOP);
    registry.renderers().constFirst()->setKelvoProperty("volume", 30);
    QVERIFY(failsInTime(errors, timer));
    const auto error = errors.at(0).at(0).value<KelvoError>();
    QCOMPARE(error.code(), KelvoError::Timeout);
    QCOMPARE(error.message(), QStringLiteral("SetVolume: Test renderer did not answer in time"));
    QTRY_VERIFY_WITH_TIMEOUT(registry.renderers().isEmpty() && registry.sources().isEmpty(), longWait);
    QVERIFY2(timer.elapsed() >= 9000, qPrintable(QString::number(timer.elapsed())));
    ::kill(pid_t(peers()), SIGCONT);
    QTRY_VERIFY_WITH_TIMEOUT(!registry.renderers().isEmpty() && !registry.sources().isEmpty(), longWait);
}

void UpnpNetworkTest::endedDevicesGoAtOnce()
{
    KelvoRegistry registry;
    load(registry);
    m_renderer->stop();
    m_server->stop();
    ::kill(pid_t(peers()), SIGTERM);
    QTRY_VERIFY_WITH_TIMEOUT(registry.renderers().isEmpty() && registry.sources().isEmpty(), 5000);
}
} // namespace

KELVO_TEST(UpnpNetworkTest)
#include "UpnpNetworkTest.moc"

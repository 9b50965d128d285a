// SPDX-License-Identifier: MIT
// network-benchmark PLUGINS SERVER [SECONDS]
// Renderers of a UPnP network come, are driven and go. They are pretended ones (pretended_devices.py), announced from
// here on the loopback interface, which is best one of a network namespace.
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "Measurement.h"
#include "WatchedApplication.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkInterface>
#include <QNetworkReply>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>
#include <QUdpSocket>

#include <ctime>

#include <malloc.h>

namespace {
constexpr int rounds = 100;
constexpr int crowd = 200;
constexpr int pace = 10; // milliseconds between two announcements of the crowd
constexpr int longestWait = 10'000; // milliseconds

void discardDebugLines(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

double residentMegabytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    const qsizetype at = status.indexOf("VmRSS:") + 6;
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toDouble() / 1024;
}

template <typename Condition> bool waitUntil(Condition isTrue, int milliseconds = longestWait)
{
    const QDeadlineTimer deadline(milliseconds);
    QTimer wake; // so that waiting for more events comes to an end
    wake.start(50);
    while (!isTrue()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

using Application = WatchedApplication<QCoreApplication>;

class Devices
{
public:
    explicit Devices(const QString &server)
    {
        m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_server.start(server, QStringList());
        if (m_server.waitForReadyRead())
            m_port = m_server.readLine().trimmed();
        m_socket.bind(QHostAddress(QHostAddress::LocalHost));
        m_socket.setMulticastInterface(QNetworkInterface::interfaceFromName(QStringLiteral("lo")));
    }
    ~Devices()
    {
        m_server.closeWriteChannel();
        m_server.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Devices)

    bool areReady() const { return !m_port.isEmpty(); }
    QByteArray address(int number) const
    {
        return "http://127.0.0.1:" + m_port + '/' + QByteArray::number(number);
    }

    void announce(int number, bool isThere)
    {
        const QByteArray type = "urn:schemas-upnp-org:device:MediaRenderer:1";
        QByteArray message = "NOTIFY * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nNT: " + type
            + "\r\nUSN: uuid:pretended-" + QByteArray::number(number) + "::" + type + "\r\n";
        if (isThere) {
            message += "NTS: ssdp:alive\r\nCACHE-CONTROL: max-age=1800\r\nSERVER: test UPnP/1.0 "
                       "test\r\nLOCATION: "
                + address(number) + "/device.xml\r\n\r\n";
        } else {
            message += "NTS: ssdp:byebye\r\n\r\n";
        }
        m_socket.writeDatagram(message, QHostAddress(QStringLiteral("239.255.255.250")), 1900);
    }

private:
    QProcess m_server;
    QByteArray m_port;
    QUdpSocket m_socket;
};

/// What the same exchange takes without anything around it.
class BareClient
{
public:
    double get(const QByteArray &address)
    {
        return timed([&] { return m_network.get(QNetworkRequest(QUrl::fromEncoded(address))); });
    }
    double call(const QByteArray &device, const QByteArray &action)
    {
        const QByteArray service = "urn:schemas-upnp-org:service:AVTransport:1";
        QNetworkRequest request(QUrl::fromEncoded(device + "/AVTransport/control"));
        request.setHeader(QNetworkRequest::ContentTypeHeader, "text/xml; charset=\"utf-8\"");
        request.setRawHeader("SOAPACTION", '"' + service + '#' + action + '"');
        const QByteArray body
            = "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
              "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body><u:"
            + action + " xmlns:u=\"" + service + "\"><InstanceID>0</InstanceID></u:" + action
            + "></s:Body></s:Envelope>";
        return timed([&] { return m_network.post(request, body); });
    }

private:
    template <typename Send> double timed(Send send)
    {
        QElapsedTimer timer;
        timer.start();
        const std::unique_ptr<QNetworkReply> reply(send());
        waitUntil([&] { return reply->isFinished(); });
        return double(timer.nsecsElapsed()) / 1e6;
    }

    QNetworkAccessManager m_network;
};

class Benchmark
{
public:
    Benchmark(Application &application, Devices &devices)
        : m_application(application)
        , m_devices(devices)
    {
    }

    bool run(int seconds)
    {
        m_registry.loadPlugin(QStringLiteral("upnp.so"));
        // Its sockets are open once the first device is found.
        const QDeadlineTimer deadline(longestWait);
        while (m_registry.renderers().isEmpty() && !deadline.hasExpired()) {
            m_devices.announce(0, true);
            waitUntil([this] { return count() == 1; }, 100);
        }
        return count() == 1 && driveOne() && comeAndGo() && crowdForAWhile(seconds);
    }

private:
    qsizetype count() const { return m_registry.renderers().size(); }

    template <typename Act, typename Condition>
    bool measure(std::vector<double> &values, Act act, Condition isDone)
    {
        QElapsedTimer timer;
        timer.start();
        act();
        const bool isMet = waitUntil(isDone);
        values.push_back(double(timer.nsecsElapsed()) / 1e6);
        return isMet;
    }

    bool driveOne()
    {
        KelvoRenderer *renderer = m_registry.renderers().constFirst();
        KelvoRenderer::State state = KelvoRenderer::Stopped;
        QObject::connect(
            renderer, &KelvoRenderer::stateChanged, [&](KelvoRenderer::State now) { state = now; });
        std::vector<double> start;
        if (!measure(
                start, [&] { renderer->playUri(QUrl(QStringLiteral("http://127.0.0.1:9/song.mp3"))); },
                [&] { return state == KelvoRenderer::Playing; }))
            return false;
        std::vector<double> commands;
        std::vector<double> bare;
        for (int i = 0; i < rounds; ++i) {
            if (!measure(
                    commands, [&] { renderer->pause(); }, [&] { return state == KelvoRenderer::Paused; })
                || !measure(
                    commands, [&] { renderer->resume(); }, [&] { return state == KelvoRenderer::Playing; }))
                return false;
            bare.push_back(m_client.call(m_devices.address(1), "Pause"));
            bare.push_back(m_client.call(m_devices.address(1), "Play"));
        }
        using namespace Measurement;
        row("UPnP: command to state report, median", median(commands), "ms", "bare SOAP round trip",
            median(bare), "at most 20 ms more");
        row("- longest", maximum(commands), "ms", "bare SOAP round trip", maximum(bare));
        renderer->disconnect();
        m_devices.announce(0, false);
        return waitUntil([this] { return count() == 0; });
    }

    bool comeAndGo()
    {
        std::vector<double> coming;
        std::vector<double> going;
        std::vector<double> bare;
        for (int i = 0; i < rounds; ++i) {
            if (!measure(
                    coming, [&] { m_devices.announce(i, true); }, [&] { return count() == 1; })
                || !measure(
                    going, [&] { m_devices.announce(i, false); }, [&] { return count() == 0; }))
                return false;
            bare.push_back(m_client.get(m_devices.address(i) + "/device.xml"));
        }
        using namespace Measurement;
        row("- announcement to registry, median", median(coming), "ms", "fetching the description",
            median(bare), "at most 50 ms");
        row("- longest", maximum(coming), "ms", "fetching the description", maximum(bare));
        row("- withdrawal to removal, median", median(going), "ms", {}, 0, "at most 50 ms");
        row("- longest", maximum(going), "ms");
        return true;
    }

    /// Devices come and go by chance.
    bool crowdForAWhile(int seconds)
    {
        int changes = 0;
        QObject::connect(&m_registry, &KelvoRegistry::rendererAdded, [&] { ++changes; });
        QObject::connect(&m_registry, &KelvoRegistry::rendererRemoved, [&] { ++changes; });
        if (!crowdOnce(seconds))
            return false;
        const double before = residentMegabytes();
        changes = 0;
        m_application.forget();
        if (!crowdOnce(seconds))
            return false;
        const double longest = m_application.longestMilliseconds();
        const double busiest = m_application.busiestMilliseconds();
        using Measurement::row;
        row("- " + std::to_string(crowd) + " devices for " + std::to_string(seconds)
                + " s: arrivals and departures",
            changes, "");
        row("- longest event of the GUI loop", longest, "ms", {}, 0, "at most 8 ms");
        row("- most processor time of one event", busiest, "ms", {}, 0, "at most 16 ms");
        row("- memory when all are gone", residentMegabytes(), "MB", "after as long a time before", before,
            "1");
        m_registry.disconnect();
        return true;
    }

    bool crowdOnce(int seconds)
    {
        std::vector<bool> isThere(crowd, false);
        QTimer step;
        QObject::connect(&step, &QTimer::timeout, [&] {
            const int number = QRandomGenerator::global()->bounded(crowd);
            isThere[size_t(number)] = !isThere[size_t(number)];
            m_devices.announce(number, isThere[size_t(number)]);
        });
        step.start(pace);
        waitUntil([] { return false; }, seconds * 1000);
        step.stop();
        for (int i = 0; i < crowd; ++i) {
            m_devices.announce(i, false);
            waitUntil([] { return false; }, 1); // not more at once than a socket holds
        }
        return waitUntil([this] { return count() == 0; });
    }

    Application &m_application;
    Devices &m_devices;
    KelvoRegistry m_registry;
    BareClient m_client;
};
} // namespace

int main(int argc, char *argv[])
{
    qInstallMessageHandler(discardDebugLines);
    if (argc < 3)
        return 2;
    qputenv("KELVO_PLUGIN_PATH", argv[1]);
    qputenv("KELVO_UPNP_INTERFACE", "lo");
    Application application(argc, argv);
    Devices devices(QString::fromLocal8Bit(argv[2]));
    const int seconds = argc > 3 ? QByteArray(argv[3]).toInt() : 60;
    if (devices.areReady() && Benchmark(application, devices).run(seconds))
        return 0;
    std::fprintf(
        stderr, "Devices are not found or do not do what they are told. Does multicast work here?\n");
    return 1;
}

// SPDX-License-Identifier: MIT
// A real renderer: rygel, on a network of its own for each part of the suite.
#include "ContractSuite.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "RendererProbe.h"
#include "SsdpAnnouncer.h"
#include "Subject.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QNetworkInterface>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTest>
#include <QThread>
#include <QUdpSocket>

#include <cstdio>
#include <memory>
#include <vector>

#include <unistd.h>

namespace {
constexpr char peers[] = KELVO_TEST_PEERS;
const QByteArray deviceType = QByteArrayLiteral("urn:schemas-upnp-org:device:MediaRenderer:1");
// What CTest takes for a skipped test.
constexpr int skippedCode = 77;
// rygel keeps each connection that a client has closed; with hundreds of them it does little else.
constexpr int testsPerDevice = 27;
constexpr int attempts = 3;
// Between two questions to the device, for the same reason: asked without a break, it has no time to stop. Milliseconds.
constexpr int breath = 20;

class UpnpSubject : public Subject
{
public:
    UpnpSubject()
        : m_media(QStringLiteral(KELVO_TEST_MEDIA))
    {
        cannotTry(Ability::TellUnseekable, QStringLiteral("no generated file is unseekable"));
        refuses(Ability::FastForward, QStringLiteral("rygel lists no speed but 1"));
        refuses(Ability::Rewind, QStringLiteral("rygel lists no speed but 1"));
        refuses(Ability::VideoProperties, QStringLiteral("the device shows video on a screen of its own"));
    }
    ~UpnpSubject() override { end(); }

    QString pluginFile() const override
    {
        // Asked for whenever the plug-in is loaded, also within a test.
        const_cast<UpnpSubject *>(this)->enterTest();
        return QStringLiteral("upnp.so");
    }
    void prepare(KelvoRenderer &renderer) override
    {
        // What it has reported by now was heard by nobody: it is asked.
        RendererProbe probe(renderer);
        const auto knowsVolume = [&] {
            renderer.kelvoProperty(KelvoRenderer::PropertyVolume, &probe, "propertyAnswer(QString,QVariant)");
            return !probe.propertyAnswers.isEmpty() && probe.propertyAnswers.constLast().second.isValid();
        };
        // Asked for as soon as the device is found.
        if (!QTest::qWaitFor(knowsVolume))
            qWarning("The volume of the device is not shown");
        if (isAtRest())
            return;
        // Within a test: what the renderer before had it play.
        const auto isStopped = [&] {
            renderer.getStatus(&probe, "statusAnswer(QString,uint,int,QString)");
            return !probe.statusAnswers.isEmpty()
                && probe.statusAnswers.constLast().state == KelvoRenderer::Stopped;
        };
        if (!QTest::qWaitFor([&] { return !isStopped() && !probe.statusAnswers.isEmpty(); }))
            qWarning("What the device plays is not shown");
        renderer.stop();
        if (!QTest::qWaitFor([&] { return isStopped() && isAtRest(); }))
            qWarning("The device does not stop");
    }

    QList<QUrl> shortItems() const override { return {file("blip.wav"), file("blip.ogg"), file("blip.mp3")}; }
    QUrl longItem() const override { return file("long.flac"); }
    int longSeconds() const override { return 10; }
    QUrl failingItem() const override { return file("missing.ogg"); }
    int quietTime() const override { return 300; }

private:
    QUrl file(const char *name) const { return QUrl::fromLocalFile(m_media.filePath(QLatin1String(name))); }

    void enterTest()
    {
        const QByteArray test = QByteArray(QTest::currentTestFunction()) + ' ' + QTest::currentDataTag();
        if (std::exchange(m_test, test) == test)
            return;
        if (m_tests++ % testsPerDevice == 0)
            restart();
        else
            bringToRest();
    }
    void restart()
    {
        // Now and then it finds the port that it has picked taken by another test, and stays without a network.
        for (int attempt = 1; !startDevice(); ++attempt) {
            if (attempt == attempts)
                qFatal("No device is announced: multicast does not work on the loopback interface");
        }
        announceDevice();
    }
    bool startDevice()
    {
        end();
        QUdpSocket announcements;
        const QHostAddress everybody(QStringLiteral("239.255.255.250"));
        announcements.bind(
            QHostAddress::AnyIPv4, 1900, QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint);
        announcements.joinMulticastGroup(
            everybody, QNetworkInterface::interfaceFromName(QStringLiteral("lo")));
        m_device.start(qEnvironmentVariable("KELVO_TEST_UPNP_START"), QStringList());
        // It begins by taking back what it may have announced in an earlier life.
        return isAnnounced(announcements);
    }
    void announceDevice()
    {
        m_announcer = std::make_unique<SsdpAnnouncer>(deviceType);
        if (!m_announcer->isReady())
            qFatal("The device does not answer a search");
        m_announcer->start();
        const QByteArray description = ask(QUrl(QString::fromLatin1(m_announcer->location())), "GET", {}, {});
        static const QRegularExpression control(QStringLiteral("service:AVTransport.*?<controlURL>([^<]*)"),
            QRegularExpression::DotMatchesEverythingOption);
        const QUrl relative(control.match(QString::fromUtf8(description)).captured(1));
        m_control = QUrl(QString::fromLatin1(m_announcer->location())).resolved(relative);
    }
    static bool isAnnounced(QUdpSocket &announcements)
    {
        const QDeadlineTimer limit(10'000);
        while (!limit.hasExpired()) {
            if (!announcements.hasPendingDatagrams() && !announcements.waitForReadyRead(1000))
                continue;
            QByteArray message(announcements.pendingDatagramSize(), '\0');
            announcements.readDatagram(message.data(), message.size());
            if (message.contains("ssdp:alive") && message.contains(deviceType.chopped(1)))
                return true;
        }
        return false;
    }
    /// What it still plays came from a server that ended with the test before.
    void bringToRest()
    {
        transport("Stop");
        const QDeadlineTimer limit(5000);
        while (!isAtRest()) {
            if (limit.hasExpired()) {
                showThreads();
                qFatal("The device does not stop");
            }
            QThread::msleep(breath);
        }
    }
    /// What keeps it from stopping.
    void showThreads() const
    {
        QProcess::execute(QStringLiteral("gdb"),
            {QStringLiteral("--batch"), QStringLiteral("--ex"), QStringLiteral("thread apply all bt 30"),
                QStringLiteral("--pid"), QString::number(m_device.processId())});
    }
    bool isAtRest() const
    {
        const QByteArray state = transport("GetTransportInfo");
        return state.contains(">STOPPED<") || state.contains(">NO_MEDIA_PRESENT<");
    }
    QByteArray transport(const QByteArray &action) const
    {
        const QByteArray service = "urn:schemas-upnp-org:service:AVTransport:1";
        const QByteArray body
            = "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
              "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body><u:"
            + action + " xmlns:u=\"" + service + "\"><InstanceID>0</InstanceID></u:" + action
            + "></s:Body></s:Envelope>";
        return ask(m_control, "POST",
            "SOAPAction: \"" + service + '#' + action + "\"\r\nContent-Type: text/xml\r\n", body);
    }
    /// Without the event loop, in which a test would hear of it.
    static QByteArray ask(
        const QUrl &url, const QByteArray &method, const QByteArray &headers, const QByteArray &body)
    {
        QTcpSocket socket;
        socket.connectToHost(url.host(), quint16(url.port(80)));
        socket.waitForConnected(3000);
        socket.write(method + ' ' + url.path(QUrl::FullyEncoded).toLatin1()
            + " HTTP/1.1\r\nHost: " + url.authority().toLatin1() + "\r\nConnection: close\r\n" + headers
            + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        while (socket.waitForReadyRead(3000)) { }
        return socket.readAll();
    }
    void end()
    {
        m_announcer.reset();
        m_device.kill();
        m_device.waitForFinished();
    }

    const QDir m_media;
    QProcess m_device;
    std::unique_ptr<SsdpAnnouncer> m_announcer;
    QUrl m_control;
    QByteArray m_test;
    int m_tests = 0;
};

bool canHaveNetwork()
{
    return QProcess::execute(QStringLiteral("unshare"), {QStringLiteral("--net"), QStringLiteral("true")})
        == 0;
}

/// Runs this program again on a network of its own. Returns only when that cannot be done.
void becomePart(int argc, char **argv)
{
    const QByteArray media = KELVO_TEST_MEDIA;
    const QByteArray prepare = "--prepare";
    std::vector<char *> arguments = {const_cast<char *>(peers), const_cast<char *>(prepare.constData()),
        const_cast<char *>(media.constData())};
    arguments.insert(arguments.end(), argv, argv + argc);
    arguments.push_back(nullptr);
    ::execv(peers, arguments.data());
    std::perror(peers);
}
} // namespace

int main(int argc, char **argv)
{
    if (QStandardPaths::findExecutable(QStringLiteral("rygel")).isEmpty()) {
        std::puts("Skipped: rygel (packages rygel and rygel-playbin) is not installed.");
        return skippedCode;
    }
    if (!qEnvironmentVariableIsSet("KELVO_TEST_UPNP_START")) {
        if (!canHaveNetwork()) {
            std::puts("Skipped: a network namespace of its own can only be made by root.");
            return skippedCode;
        }
        if (qEnvironmentVariableIsSet("KELVO_CONTRACT_PART")) {
            becomePart(argc, argv);
            return 1;
        }
    }
    UpnpSubject subject;
    // They mostly wait.
    return runRendererContract(subject, argc, argv, 8);
}

// SPDX-License-Identifier: MIT
#include "Device.h"

#include "DeviceDescription.h"
#include "KelvoMessageHandler.h"
#include "MonotonicTime.h"

using Upnp::Answer;
using Upnp::Call;
using Upnp::Kind;
using Upnp::Service;

namespace {
constexpr int askTimeout = 1500; // milliseconds
} // namespace

Device::Device(const Upnp::DeviceKey &key, GUPnPDeviceProxy *proxy, const DeviceListener &listener)
    : m_key(key)
    , m_listener(listener)
    , m_announcements(proxy)
    , m_description(key.kind, [this](const Upnp::Description &news) { m_listener.described(news); })
    , m_health(monotonicTime())
    , m_calls(std::make_unique<Calls>())
{
    getToKnow();
    showOrHide(monotonicTime());
}

Device::~Device()
{
    m_calls.reset();
    if (m_isShown)
        m_listener.hidden(m_key);
}

void Device::add(GUPnPDeviceProxy *proxy)
{
    follow(m_announcements.add(proxy, m_isShown));
}

bool Device::withdraw(GUPnPDeviceProxy *proxy, Announcements::Reason reason)
{
    const Announcements::Change change = m_announcements.withdraw(proxy, reason);
    follow(change);
    return change == Announcements::Change::Withdrawn;
}

void Device::settle()
{
    follow(m_announcements.settle(monotonicTime()));
}

void Device::follow(Announcements::Change change)
{
    using Change = Announcements::Change;
    switch (change) {
    case Change::Moved:
        getToKnow();
        // GUPnP may have kept what it read when the device was there before.
        m_description.doubt();
        break;
    case Change::Renewed:
        m_description.doubt();
        break;
    case Change::Doubted:
        askWhetherThere();
        break;
    case Change::Contested:
        qCWarning(lcKelvo).noquote() << "Two devices call themselves" << m_key.udn << "- only the first,"
                                     << m_description.value().name + ", is shown";
        break;
    case Change::Expired:
        m_health.doubt(monotonicTime());
        break;
    case Change::Withdrawn:
    case Change::None:
        break;
    }
}

void Device::getToKnow()
{
    const qint64 time = monotonicTime();
    m_services.reset();
    m_search.reset();
    m_description.reset(info(), time);
    m_health = DeviceHealth(time);
    if (m_isShown)
        connectServices();
}

void Device::askWhetherThere()
{
    if (m_key.kind == Kind::Source && !hasService(Service::ContentDirectory)) {
        follow(m_announcements.answered(false));
        return;
    }
    Call call = pollCall();
    call.timeout = askTimeout;
    this->call(
        call, [this](const Answer &answer) { follow(m_announcements.answered(answer.isFromDevice())); });
}

bool Device::hear(GSSDPClient *client, const SsdpMessage &message)
{
    if (message.location.isEmpty())
        return m_announcements.hearByebye() == Announcements::Change::Withdrawn;
    if (m_announcements.isAt(message.location)) {
        m_announcements.hearAlive();
        m_description.hear(message);
    } else {
        m_announcements.hearAliveElsewhere(client, monotonicTime());
    }
    return false;
}

void Device::call(const Call &call, Upnp::AnswerHandler handler)
{
    const GlibHandles::Object<GUPnPServiceProxy> service = DeviceDescription::service(info(), call.service);
    if (!service) {
        Answer answer;
        answer.outcome = Answer::Missing;
        answer.message = QStringLiteral("no such service");
        handler(answer);
        return;
    }
    Call sent = call;
    QString uri;
    for (auto &[name, text] : sent.in) {
        if (name == "CurrentURI")
            uri = text = m_files.offer(gupnp_device_info_get_context(info()), text);
    }
    m_calls->run(service.get(), sent, [this, uri, handler = std::move(handler)](Answer answer) {
        heard(answer);
        if (!uri.isEmpty())
            answer.values.insert("CurrentURI", uri);
        handler(answer);
    });
}

void Device::heard(const Answer &answer)
{
    const qint64 time = monotonicTime();
    if (!answer.isFromDevice()) {
        m_health.doubt(time);
        return;
    }
    const bool wasSilent = m_health.state() == DeviceHealth::NotResponding;
    m_health.answered(time);
    if (wasSilent && m_services)
        m_services->renewSubscriptions();
    showOrHide(time);
}

void Device::tick(qint64 time)
{
    readDescription(time);
    m_description.tell(time);
    if (m_calls->isEmpty() && m_health.isPollDue(time))
        poll();
    showOrHide(time);
}

void Device::readDescription(qint64 time)
{
    if (!m_description.isReadDue(time))
        return;
    // A device forgets its subscriptions when it restarts.
    if (m_description.takeRestart() && m_services)
        m_services->renewSubscriptions();
    m_description.read(info(), time);
}

Call Device::pollCall() const
{
    if (m_key.kind == Kind::Renderer) {
        return {.service = Service::AVTransport,
            .action = "GetTransportInfo",
            .in = {{"InstanceID", QStringLiteral("0")}},
            .out = {"CurrentTransportState"}};
    }
    return {.service = Service::ContentDirectory, .action = "GetSystemUpdateID", .in = {}, .out = {}};
}

void Device::poll()
{
    m_health.polling();
    if (hasService(pollCall().service))
        call(pollCall(), [this](const Answer &answer) { polled(answer); });
}

void Device::polled(const Answer &answer)
{
    if (!answer.isFromDevice()) {
        const qint64 time = monotonicTime();
        m_health.failed(time);
        // No second byebye will come.
        if (m_announcements.isContested() ? m_health.state() == DeviceHealth::NotResponding
                                          : m_health.isForgotten(time))
            m_announcements.giveUp();
        return;
    }
    // Each time: who drives it may have learnt of another state meanwhile, by asking for itself.
    const QString state = answer.values.value("CurrentTransportState");
    if (m_key.kind != Kind::Renderer || state.isEmpty())
        return;
    Upnp::Report news = m_services ? m_services->unheard() : Upnp::Report();
    news.values.insert("TransportState", state);
    report(news);
}

void Device::report(const Upnp::Report &report)
{
    if (m_isShown)
        m_listener.reported(m_key, report);
}

void Device::showOrHide(qint64 time)
{
    const bool isShown = m_health.isShown(time);
    if (isShown == m_isShown)
        return;
    m_isShown = isShown;
    m_description.follow(isShown);
    if (isShown) {
        m_listener.shown(m_description.value());
        connectServices();
    } else {
        m_services.reset();
        m_listener.hidden(m_key);
    }
}

bool Device::hasService(Service service) const
{
    return bool(DeviceDescription::service(info(), service));
}

void Device::connectServices()
{
    if (m_key.kind == Kind::Source) {
        askSearch();
        return;
    }
    RendererServices::Listener listener;
    listener.reported = [this](const Upnp::Report &news) {
        report(news);
    };
    listener.limitsKnown = [this](const Upnp::RendererLimits &limits) {
        m_listener.limitsKnown(m_key, limits);
    };
    m_services
        = std::make_unique<RendererServices>(DeviceDescription::service(info(), Service::AVTransport).get(),
            DeviceDescription::service(info(), Service::RenderingControl).get(), std::move(listener));
}

void Device::askSearch()
{
    if (!hasService(Service::ContentDirectory)) {
        m_listener.searchKnown(m_key, false);
        return;
    }
    const Call capabilities = {.service = Service::ContentDirectory,
        .action = "GetSearchCapabilities",
        .in = {},
        .out = {"SearchCaps"},
        .timeout = 5000};
    call(capabilities, [this](const Answer &answer) { reportSearch(answer); });
}

void Device::reportSearch(const Answer &capabilities)
{
    if (capabilities.outcome != Answer::Done || capabilities.values.value("SearchCaps").isEmpty()) {
        m_listener.searchKnown(m_key, false);
        return;
    }
    const auto directory = DeviceDescription::service(info(), Service::ContentDirectory);
    if (!directory || !DeviceDescription::isDescribed(directory.get())) {
        m_listener.searchKnown(m_key, false);
        return;
    }
    m_search = std::make_unique<ActionList>(
        directory.get(), "Search", [this](bool hasSearch) { m_listener.searchKnown(m_key, hasSearch); });
}

// SPDX-License-Identifier: MIT
#include "Device.h"

#include "DeviceDescription.h"
#include "MonotonicTime.h"

using Upnp::Answer;
using Upnp::Call;
using Upnp::Kind;
using Upnp::Service;

Device::Device(const Upnp::DeviceKey &key, GUPnPDeviceProxy *proxy, const DeviceListener &listener)
    : m_key(key)
    , m_listener(listener)
    , m_health(monotonicTime())
    , m_calls(std::make_unique<Calls>())
{
    adopt(GlibHandles::share(proxy));
    showOrHide(monotonicTime());
}

Device::~Device()
{
    m_calls.reset();
    if (m_isShown)
        m_listener.hidden(m_key);
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
    ++m_underWay;
    Call sent = call;
    QString uri;
    for (auto &[name, text] : sent.in) {
        if (name == "CurrentURI")
            uri = text = m_files.offer(gupnp_device_info_get_context(info()), text);
    }
    m_calls->run(service.get(), sent, [this, uri, handler = std::move(handler)](Answer answer) {
        --m_underWay;
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
        m_services->subscribeAgain();
    showOrHide(time);
}

void Device::tick(qint64 time)
{
    forgetSilent(time);
    readAgain(time);
    tellDescription(time);
    if (m_underWay == 0 && m_health.isPollDue(time))
        poll();
    showOrHide(time);
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
        // Nobody will take its announcement back a second time.
        const bool isOver
            = m_isContested ? m_health.state() == DeviceHealth::NotResponding : m_health.isForgotten(time);
        m_isGone = m_isGone || (!m_isAnnounced && isOver);
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
    if (isShown) {
        m_listener.shown(m_description);
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

// SPDX-License-Identifier: MIT
#include "Device.h"

#include "DeviceDescription.h"
#include "KelvoMessageHandler.h"
#include "MonotonicTime.h"

#include <algorithm>

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

void Device::adopt(Proxy proxy)
{
    m_services.reset();
    m_search.reset();
    m_lastState.clear();
    m_active = std::move(proxy);
    m_isWithdrawn = false;
    Upnp::Description description = DeviceDescription::read(info(), m_key.kind);
    const bool isNew
        = description.name != m_description.name || description.properties != m_description.properties;
    m_description = std::move(description);
    m_health = DeviceHealth(monotonicTime());
    if (m_isShown && isNew)
        m_listener.described(m_description);
    if (m_isShown)
        connectServices();
}

void Device::add(GUPnPDeviceProxy *proxy)
{
    if (m_isWithdrawn) {
        const bool isSamePlace
            = DeviceDescription::authority(GUPNP_DEVICE_INFO(proxy)) == DeviceDescription::authority(info());
        if (isSamePlace) {
            adopt(GlibHandles::share(proxy));
        } else {
            m_isWithdrawn = false;
            m_claim = GlibHandles::share(proxy);
            checkClaim();
        }
        return;
    }
    m_others.push_back(GlibHandles::share(proxy));
}

void Device::checkClaim()
{
    m_isClaimOpen = true;
    if (m_key.kind == Kind::Source && !hasService(Service::ContentDirectory)) {
        settleClaim(false);
        return;
    }
    Call call = pollCall();
    call.timeout = 1500;
    this->call(call, [this](const Answer &answer) { settleClaim(answer.isFromDevice()); });
}

void Device::settleClaim(bool isFirstAlive)
{
    if (!std::exchange(m_isClaimOpen, false) || !m_claim)
        return;
    if (!isFirstAlive) {
        adopt(std::move(m_claim));
        return;
    }
    if (!std::exchange(m_isWarned, true)) {
        qCWarning(lcKelvo).noquote() << "Two devices call themselves" << m_key.udn << "- only the first,"
                                     << m_description.name + ", is shown";
    }
}

bool Device::withdraw(GUPnPDeviceProxy *proxy)
{
    const auto other = std::find_if(
        m_others.begin(), m_others.end(), [proxy](const Proxy &known) { return known.get() == proxy; });
    if (other != m_others.end()) {
        m_others.erase(other);
        return false;
    }
    if (m_claim.get() == proxy)
        m_claim.reset();
    if (!m_others.empty()) {
        Proxy next = std::move(m_others.front());
        m_others.erase(m_others.begin());
        adopt(std::move(next));
        return false;
    }
    m_isWithdrawn = true;
    return true;
}

bool Device::has(GUPnPDeviceProxy *proxy) const
{
    return m_active.get() == proxy || m_claim.get() == proxy
        || std::any_of(
            m_others.begin(), m_others.end(), [proxy](const Proxy &known) { return known.get() == proxy; });
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
        m_health.failed(monotonicTime());
        return;
    }
    const QString state = answer.values.value("CurrentTransportState");
    if (m_key.kind == Kind::Renderer && !state.isEmpty() && state != m_lastState)
        report({.values = {{"TransportState", state}}});
}

void Device::report(const Upnp::Report &report)
{
    m_lastState = report.values.value("TransportState", m_lastState);
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
    m_search = std::make_unique<ActionList>(
        directory.get(), "Search", [this](bool hasSearch) { m_listener.searchKnown(m_key, hasSearch); });
}

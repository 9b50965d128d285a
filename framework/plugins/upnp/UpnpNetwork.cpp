// SPDX-License-Identifier: MIT
#include "UpnpNetwork.h"

#include "Discovery.h"
#include "GlibLog.h"
#include "Mailbox.h"
#include "UpnpThread.h"

#include <QPointer>

/// What lives on the UPnP thread.
struct UpnpNetwork::Worker
{
    std::unique_ptr<Discovery> discovery;
};

class UpnpNetwork::Link : public RendererLink
{
public:
    Link(UpnpNetwork *network, const Upnp::Description &renderer)
        : m_network(network)
        , m_key(renderer.key)
        , m_name(renderer.name)
    {
        m_network->m_links.insert(m_key.udn, this);
    }
    ~Link() override
    {
        if (m_network && m_network->m_links.value(m_key.udn) == this)
            m_network->m_links.remove(m_key.udn);
    }
    Q_DISABLE_COPY_MOVE(Link)

    QString deviceName() const override { return m_name; }
    void call(const Upnp::Call &call, Upnp::AnswerHandler handler) override
    {
        if (!m_network)
            return;
        const auto guarded
            = [self = QPointer<Link>(this), handler = std::move(handler)](const Upnp::Answer &answer) {
                  if (self)
                      handler(answer);
              };
        m_network->call(m_key, call, guarded);
    }
    void rename(const QString &name)
    {
        if (std::exchange(m_name, name) != name)
            Q_EMIT renamed(name);
    }

private:
    const QPointer<UpnpNetwork> m_network;
    const Upnp::DeviceKey m_key;
    QString m_name;
};

UpnpNetwork::UpnpNetwork(const QStringList &interfaces, QObject *parent)
    : QObject(parent)
    , m_mailbox(std::make_shared<Mailbox>(this))
    , m_worker(std::make_shared<Worker>())
    , m_thread(std::make_unique<UpnpThread>())
{
    GlibLog::catchWarnings();
    using Upnp::DeviceKey;
    DeviceListener listener;
    listener.shown = [this, mailbox = m_mailbox](const Upnp::Description &device) {
        mailbox->post([this, device] { Q_EMIT appeared(device); });
    };
    listener.hidden = [this, mailbox = m_mailbox](const DeviceKey &key) {
        mailbox->post([this, key] { Q_EMIT disappeared(key); });
    };
    listener.described = [this, mailbox = m_mailbox](const Upnp::Description &device) {
        mailbox->post([this, device] { Q_EMIT described(device); });
    };
    listener.reported = [this, mailbox = m_mailbox](const DeviceKey &key, const Upnp::Report &news) {
        mailbox->post([this, key, news] { report(key.udn, news); });
    };
    listener.limitsKnown
        = [this, mailbox = m_mailbox](const DeviceKey &key, const Upnp::RendererLimits &limits) {
              mailbox->post([this, key, limits] { tellLimits(key.udn, limits); });
          };
    listener.searchKnown = [this, mailbox = m_mailbox](const DeviceKey &key, bool canSearch) {
        mailbox->post([this, key, canSearch] { Q_EMIT searchKnown(key, canSearch); });
    };
    m_thread->finishWith([worker = m_worker] { worker->discovery->leave(); },
        [worker = m_worker] { worker->discovery.reset(); });
    m_thread->post([worker = m_worker, interfaces, listener] {
        worker->discovery = std::make_unique<Discovery>(interfaces, listener);
    });
}

UpnpNetwork::~UpnpNetwork()
{
    m_mailbox->close();
}

std::unique_ptr<RendererLink> UpnpNetwork::link(const Upnp::Description &renderer)
{
    return std::make_unique<Link>(this, renderer);
}

void UpnpNetwork::rename(const Upnp::DeviceKey &renderer, const QString &name)
{
    if (Link *link = m_links.value(renderer.udn))
        link->rename(name);
}

void UpnpNetwork::call(const Upnp::DeviceKey &device, const Upnp::Call &call, Upnp::AnswerHandler handler)
{
    const auto deliver = [mailbox = m_mailbox, handler = std::move(handler)](const Upnp::Answer &answer) {
        mailbox->post([handler, answer] { handler(answer); });
    };
    m_thread->post(
        [worker = m_worker, device, call, deliver] { worker->discovery->call(device, call, deliver); });
}

void UpnpNetwork::report(const QString &udn, const Upnp::Report &report)
{
    if (Link *link = m_links.value(udn))
        Q_EMIT link->reported(report);
}

void UpnpNetwork::tellLimits(const QString &udn, const Upnp::RendererLimits &limits)
{
    if (Link *link = m_links.value(udn))
        Q_EMIT link->limitsKnown(limits);
}

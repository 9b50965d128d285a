// SPDX-License-Identifier: MIT
#pragma once

#include "RendererLink.h"
#include "UpnpTypes.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <memory>

class Mailbox;
class UpnpThread;

/// The devices of the network, as seen from the GUI thread. The work is done on a thread of its own, which this
/// object starts and ends.
class UpnpNetwork : public QObject
{
    Q_OBJECT
public:
    explicit UpnpNetwork(const QStringList &interfaces, QObject *parent = nullptr);
    ~UpnpNetwork() override;

    /// For a renderer that has appeared. It ends with the renderer's disappearance at the latest.
    std::unique_ptr<RendererLink> link(const Upnp::Description &renderer);

    /// What its link and its renderer call it from now on.
    void rename(const Upnp::DeviceKey &renderer, const QString &name);

    /// The handler is called once, from the event loop, unless this object is destroyed first.
    void call(const Upnp::DeviceKey &device, const Upnp::Call &call, Upnp::AnswerHandler handler);

Q_SIGNALS:
    void appeared(const Upnp::Description &device);
    void disappeared(const Upnp::DeviceKey &device);
    /// A device that has appeared describes itself differently.
    void described(const Upnp::Description &device);
    /// Whether a server can be searched.
    void searchKnown(const Upnp::DeviceKey &source, bool canSearch);

private:
    class Link;
    struct Worker;

    void report(const QString &udn, const Upnp::Report &report);
    void tellLimits(const QString &udn, const Upnp::RendererLimits &limits);

    std::shared_ptr<Mailbox> m_mailbox;
    std::shared_ptr<Worker> m_worker;
    std::unique_ptr<UpnpThread> m_thread;
    QHash<QString, Link *> m_links; // by UDN; each takes itself out
};

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "RendererLink.h"

#include <functional>
#include <memory>

/// Actions of a renderer's instance 0, one after the other: never is more than one of ours under way. GUI thread.
class RendererRequests : public QObject
{
    Q_OBJECT
public:
    explicit RendererRequests(std::unique_ptr<RendererLink> link);

    const RendererLink *link() const { return m_link.get(); }
    bool isBusy() const { return m_isBusy; }
    /// The handler is called once, from the event loop, and then answered(). Not while busy.
    void send(Upnp::Call call, Upnp::AnswerHandler handler);

    /// In a sentence for the user.
    QString describe(const char *action, const Upnp::Answer &answer) const;
    /// A command had no effect.
    void trouble(const char *action, const Upnp::Answer &answer);

Q_SIGNALS:
    void answered();
    void troubled(KelvoError::Code code, const QString &message);

private:
    const std::unique_ptr<RendererLink> m_link;
    bool m_isBusy = false;
};

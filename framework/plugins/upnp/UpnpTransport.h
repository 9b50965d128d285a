// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteTransport.h"
#include "RendererAbilities.h"
#include "RendererPlayback.h"
#include "RendererRequests.h"
#include "RendererWishes.h"
#include "UpnpVolume.h"

#include <memory>

/// A media renderer of the network, driven by AVTransport and RenderingControl.
///
/// What is wanted of the device is kept as wishes, of each kind only the newest, and granted one after the other:
/// never is more than one request of ours under way. A wish is tried once; what the device or another controller
/// makes of it is reported, not fought.
class UpnpTransport : public RemoteTransport
{
    Q_OBJECT
public:
    using Patience = RendererPlayback::Patience;

    UpnpTransport(std::unique_ptr<RendererLink> link, const Patience &patience);
    ~UpnpTransport() override;

    Abilities abilities() const override
    {
        return m_abilities.now(m_playback.state() == KelvoRenderer::Playing);
    }
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(double seconds) override;
    void setVolume(int volume) override;
    void setRate(double rate) override;
    void askPosition() override;

private:
    using State = KelvoRenderer::State;

    void connectReports();
    void hear(const Upnp::Report &report);
    void next();
    bool sendFirstWish();
    void sendStop();
    void sendUri();
    void sendPlay();
    void sendPaused();
    void forgive(State wanted, const char *action, const Upnp::Answer &refusal);
    void sendSeek();
    void judgeTarget(double target, const Upnp::Answer &refusal);
    void sendRate();
    void tellRate(double rate);
    void askState();
    void askMedia();
    void sendPositionQuestion();

    RendererRequests m_requests;
    RendererWishes m_wishes;
    RendererAbilities m_abilities;
    UpnpVolume m_volume;
    RendererPlayback m_playback;
    Item m_item; // the newest that was asked for
};

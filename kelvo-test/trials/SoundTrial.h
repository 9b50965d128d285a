// SPDX-License-Identifier: MIT
#pragma once

#include "SenseTrial.h"
#include "SoundWatch.h"

/// Listens to a renderer.
class SoundTrial : public SenseTrial
{
public:
    /// Neither is owned. The ear outlives this; the renderer may go meanwhile.
    SoundTrial(KelvoRenderer *renderer, const Ear *ear, Media media);

private:
    SenseWatch &watch() override { return m_watch; }
    void compareMore() override;
    void setVolume(int volume);

    SoundWatch m_watch;
};

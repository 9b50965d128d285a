// SPDX-License-Identifier: MIT
#pragma once

#include "PictureWatch.h"
#include "SenseTrial.h"
#include "SoundWatch.h"

#include <memory>

class Ear;

/// Looks at a renderer; and, where somebody listens too, sets the picture beside the sound.
class PictureTrial : public SenseTrial
{
public:
    /// None is owned. Ear and eye outlive this; the renderer may go meanwhile.
    /// @param ear  null: nobody listens
    PictureTrial(KelvoRenderer *renderer, const Eye *eye, const Ear *ear, Media media);

private:
    SenseWatch &watch() override { return m_watch; }
    void compareMore() override;
    void compareWithSound();
    std::optional<Measured> pictureAheadOfSound();

    PictureWatch m_watch;
    std::unique_ptr<SoundWatch> m_sound; ///< null: nobody listens
};

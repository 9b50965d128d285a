// SPDX-License-Identifier: MIT
#pragma once

#include "MediaClock.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

struct LTCDecoder;

/// Hears where an item is: reads the code of one channel of sound, at normal speed or up to half or twice as fast. Noise,
/// echo and the codecs that lose something make frames that never were, which jump by hours: only such are given out as
/// follow from the one before, or are followed by the next, after a frame's time. That is a frame's at normal speed, or the
/// time that lay between the two before.
class TimeCodeReader
{
public:
    struct Frame
    {
        MediaClock::Moment moment; ///< what the code says
        double at = 0; ///< when it was heard: seconds from the first sample to the beginning of the frame
    };

    /// @param rate  samples a second
    explicit TimeCodeReader(int rate);
    ~TimeCodeReader();
    Q_DISABLE_COPY_MOVE(TimeCodeReader)

    /// Takes the next samples, from -1 to 1, and gives out what they complete; a frame is known one later.
    std::vector<Frame> read(std::span<const float> samples);

private:
    struct Closer
    {
        void operator()(LTCDecoder *decoder) const;
    };
    float evened(float sample);
    void beginAnewWhenDeaf();
    void take(const Frame &frame, std::vector<Frame> *trusted);
    bool follows(const Frame &next) const;

    const int m_rate;
    std::unique_ptr<LTCDecoder, Closer> m_decoder;
    qint64 m_samples = 0;
    qint64 m_lastRead = 0; ///< sample at which the decoder had a frame, was new, or had nothing to hear
    float m_loudest = 0; ///< of late
    std::optional<Frame> m_last;
    double m_lastLength = 0; ///< seconds between the last two of them, where one followed the other
    bool m_isLastTrusted = false;
};

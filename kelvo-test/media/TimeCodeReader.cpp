// SPDX-License-Identifier: MIT
#include "TimeCodeReader.h"

#include <algorithm>
#include <cmath>
#include <ltc.h>

namespace {
constexpr int mostWaiting = 32; // frames
/// Seconds; half of one of a frame's 80 bits. A sound card's clock is off by far less; a frame whose beginning was not
/// found is by a bit or more.
constexpr double tolerance = 0.5 / 80 / MediaClock::framesPerSecond;
/// What is quieter is not made as loud as the rest: nothing is there.
constexpr float quietest = 0.001F;
constexpr float forgetting = 0.9999F; ///< of loudness, with each sample: half of it in a seventh of a second
/// Seconds of sound without a frame; the first one at the lowest speed is read within less.
constexpr double patience = 0.25;

bool isSilent(std::span<const float> samples)
{
    return std::all_of(
        samples.begin(), samples.end(), [](float sample) { return std::abs(sample) < quietest; });
}

LTCDecoder *makeDecoder(int rate)
{
    return ltc_decoder_create(rate / MediaClock::framesPerSecond, mostWaiting);
}

MediaClock::Code codeIn(LTCFrame *frame)
{
    SMPTETimecode time = {};
    ltc_frame_to_time(&time, frame, 0);
    const qint64 seconds = (time.hours * 60 + time.mins) * 60 + time.secs;
    return {seconds * MediaClock::framesPerSecond + time.frame, quint32(ltc_frame_get_user_bits(frame))};
}
constexpr double frameLength = 1.0 / MediaClock::framesPerSecond;
/// Of what is read. The decoder follows changes of the speed.
constexpr double fastest = 2.2;
constexpr double slowest = 0.45;

/// Whether it is the next frame, however long the last one was.
bool isNext(const TimeCodeReader::Frame &next, const TimeCodeReader::Frame &last)
{
    const double length = next.at - last.at;
    return next.moment == MediaClock::Moment{last.moment.item, last.moment.frame + 1}
    && length > frameLength / fastest && length < frameLength / slowest;
}
} // namespace

void TimeCodeReader::Closer::operator()(LTCDecoder *decoder) const
{
    ltc_decoder_free(decoder);
}

TimeCodeReader::TimeCodeReader(int rate)
    : m_rate(rate)
    , m_decoder(makeDecoder(rate))
{
    Q_ASSERT(m_decoder);
}

TimeCodeReader::~TimeCodeReader() = default;

std::vector<TimeCodeReader::Frame> TimeCodeReader::read(std::span<const float> samples)
{
    std::vector<Frame> trusted;
    while (!samples.empty()) {
        // No more at once than the decoder's queue has room for.
        std::vector<float> part(std::min(samples.size(), size_t(m_rate) / 4));
        std::transform(samples.begin(), samples.begin() + qsizetype(part.size()), part.begin(),
            [this](float sample) { return evened(sample); });
        const bool isQuiet = isSilent(samples.first(part.size()));
        samples = samples.subspan(part.size());
        ltc_decoder_write_float(m_decoder.get(), part.data(), part.size(), m_samples);
        m_samples += qint64(part.size());
        LTCFrameExt frame = {};
        while (ltc_decoder_read(m_decoder.get(), &frame) > 0) {
            m_lastRead = m_samples;
            take({MediaClock::momentOf(codeIn(&frame.ltc)), double(frame.off_start) / m_rate}, &trusted);
        }
        if (isQuiet)
            m_lastRead = m_samples;
        beginAnewWhenDeaf();
    }
    return trusted;
}

/// The decoder learns the length of a bit from what it hears, and what is far too short for one, such as the hiss with which
/// some codecs begin, keeps it from learning it ever again.
void TimeCodeReader::beginAnewWhenDeaf()
{
    if (double(m_samples - m_lastRead) < patience * m_rate)
        return;
    m_decoder.reset(makeDecoder(m_rate));
    m_lastRead = m_samples;
}

/// As loud as it can be: the decoder counts in 8 bits.
float TimeCodeReader::evened(float sample)
{
    m_loudest = std::max({std::abs(sample), m_loudest * forgetting, quietest});
    return sample / m_loudest;
}

void TimeCodeReader::take(const Frame &frame, std::vector<Frame> *trusted)
{
    const bool isTrusted = frame.moment.item > 0 && m_last && follows(frame);
    if (isTrusted && !m_isLastTrusted)
        trusted->push_back(*m_last);
    if (isTrusted)
        trusted->push_back(frame);
    m_lastLength = m_last && isNext(frame, *m_last) ? frame.at - m_last->at : 0;
    m_last = frame;
    m_isLastTrusted = isTrusted;
}

bool TimeCodeReader::follows(const Frame &next) const
{
    const double length = next.at - m_last->at;
    return isNext(next, *m_last)
        && (std::abs(length - frameLength) < tolerance || std::abs(length - m_lastLength) < tolerance);
}

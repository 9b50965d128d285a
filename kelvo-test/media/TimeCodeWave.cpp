// SPDX-License-Identifier: MIT
#include "TimeCodeWave.h"

#include "MediaClock.h"

#include <cmath>
#include <ltc.h>
#include <numbers>

namespace {
constexpr double fullScale = 32'767;

SMPTETimecode timeOf(const MediaClock::Code &code)
{
    const qint64 seconds = code.frameOfDay / MediaClock::framesPerSecond;
    SMPTETimecode time = {};
    time.hours = quint8(seconds / 3600);
    time.mins = quint8(seconds / 60 % 60);
    time.secs = quint8(seconds % 60);
    time.frame = quint8(code.frameOfDay % MediaClock::framesPerSecond);
    return time;
}
} // namespace

void TimeCodeWave::Closer::operator()(LTCEncoder *encoder) const
{
    ltc_encoder_free(encoder);
}

TimeCodeWave::TimeCodeWave(int item, qint64 skipped)
    : m_encoder(ltc_encoder_create(MediaClock::sampleRate, MediaClock::framesPerSecond, LTC_TV_625_50, 0))
    , m_toneSample(skipped / MediaClock::samplesPerFrame * MediaClock::samplesPerFrame)
{
    Q_ASSERT(m_encoder && item >= 1 && item <= MediaClock::mostItems);
    const MediaClock::Code code = MediaClock::codeOf({item, skipped / MediaClock::samplesPerFrame});
    SMPTETimecode beginning = timeOf(code);
    ltc_encoder_set_timecode(m_encoder.get(), &beginning);
    ltc_encoder_set_user_bits(m_encoder.get(), code.userBits);
    // The encoder counts in 8 bits: its whole range, made quieter below.
    ltc_encoder_set_volume(m_encoder.get(), 0);
    for (qint64 i = m_toneSample; i < skipped; ++i) {
        nextOfCode();
        nextOfTone();
    }
}

TimeCodeWave::~TimeCodeWave() = default;

std::vector<qint16> TimeCodeWave::read(qsizetype samples)
{
    std::vector<qint16> both(size_t(samples) * MediaClock::channels);
    for (size_t i = 0; i < both.size(); i += MediaClock::channels) {
        both[i + MediaClock::codeChannel] = nextOfCode();
        both[i + MediaClock::toneChannel] = nextOfTone();
    }
    return both;
}

qint16 TimeCodeWave::nextOfCode()
{
    static const double scale = fullScale * MediaClock::amplitudeOf(MediaClock::codeLevel) / 127;
    if (m_codeLeft == 0)
        encodeFrame();
    --m_codeLeft;
    return qint16(std::lround((*m_code++ - 128) * scale));
}

qint16 TimeCodeWave::nextOfTone()
{
    static const double scale = fullScale * MediaClock::amplitudeOf(MediaClock::toneLevel);
    const double turns = double(m_toneSample++ * MediaClock::toneFrequency % MediaClock::sampleRate)
        / MediaClock::sampleRate;
    return qint16(std::lround(scale * std::sin(2 * std::numbers::pi * turns)));
}

void TimeCodeWave::encodeFrame()
{
    if (m_code)
        ltc_encoder_inc_timecode(m_encoder.get());
    ltc_encoder_encode_frame(m_encoder.get());
    ltcsnd_sample_t *samples = nullptr;
    m_codeLeft = ltc_encoder_get_bufferptr(m_encoder.get(), &samples, 1);
    m_code = samples;
}

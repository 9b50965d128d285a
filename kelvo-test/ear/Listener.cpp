// SPDX-License-Identifier: MIT
#include "Listener.h"

#include "MediaClock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
constexpr double part = 0.01; // seconds that are heard at once
constexpr double frameLength = 1.0 / MediaClock::framesPerSecond;
/// Share by which the speed may change from one frame to the next and be taken as one.
constexpr double mostUnsteady = 0.02;
/// How often it is told that a sound goes on. Seconds.
constexpr double interval = 0.2;
/// Frames that the speed is taken from.
constexpr size_t longestRun = 10;
/// A beginning is known to the sample, but for the steepness of what codecs make of it.
constexpr double edgeError = 0.0005;
/// Off its place by more, sound has jumped. Seconds.
constexpr double jump = 0.001;
/// 40 ms each.
constexpr size_t levelsKept = 4;
/// What is wrong with a sound shows in so many levels.
constexpr double firstTold = levelsKept * LevelMeter::window + 0.02;
/// Levels that differ by more are on their way from one to another. Decibels.
constexpr double steady = 0.5;
/// Of a code alone after any of the codecs: 0.98. With another code over it, 12 dB weaker: 0.97.
constexpr double leastEvenness = 0.975;
constexpr double leastPurity = 0.97;
constexpr double mostDetuned = 0.01;

/// The next in a row, at about that speed.
bool isNext(const TimeCodeReader::Frame &next, const TimeCodeReader::Frame &last, double speed)
{
    const double length = (next.at - last.at) * speed;
    return next.moment == MediaClock::Moment{last.moment.item, last.moment.frame + 1}
    && std::abs(length - frameLength) < frameLength * mostUnsteady;
}

QString unreadable()
{
    return QStringLiteral("there is no time code in it, or too little");
}

QString flawOf(const LevelMeter::Reading &code, const LevelMeter::Reading &tone, double speed)
{
    const double due = MediaClock::toneFrequency * speed;
    const bool hasTone = tone.purity >= leastPurity;
    if (hasTone && std::abs(tone.frequency / due - 1) > mostDetuned)
        return QStringLiteral("its tone has %1 Hz instead of %2: its pitch or speed is changed")
            .arg(tone.frequency, 0, 'f', 0)
            .arg(due, 0, 'f', 0);
    if (!hasTone)
        return QStringLiteral("there is another sound over it, or its tone is missing");
    if (code.evenness < leastEvenness)
        return QStringLiteral("there is another code or sound over its code");
    return {};
}

std::vector<float> channelOf(std::span<const float> both, int channel)
{
    std::vector<float> one;
    one.reserve(both.size() / MediaClock::channels);
    for (size_t i = size_t(channel); i < both.size(); i += MediaClock::channels)
        one.push_back(both[i]);
    return one;
}

std::vector<float> louderOf(const std::vector<float> &one, const std::vector<float> &other)
{
    std::vector<float> louder(one.size());
    std::transform(one.cbegin(), one.cend(), other.cbegin(), louder.begin(),
        [](float a, float b) { return std::max(std::abs(a), std::abs(b)); });
    return louder;
}
} // namespace

Listener::Listener(int rate)
    : m_rate(rate)
    , m_codeMeter(rate)
    , m_toneMeter(rate)
{
    restart(0);
}

void Listener::restart(double at)
{
    m_begin = at;
    m_samples = 0;
    m_code = std::make_unique<TimeCodeReader>(m_rate);
    m_edges = std::make_unique<SoundEdges>(m_rate);
    m_codeMeter = LevelMeter(m_rate);
    m_toneMeter = LevelMeter(m_rate);
    m_levels.clear();
    m_sound.reset();
}

std::vector<Hearing> Listener::hear(std::span<const float> samples)
{
    const size_t most = size_t(std::lround(m_rate * part)) * MediaClock::channels;
    while (!samples.empty()) {
        const size_t taken = std::min(most, samples.size());
        hearPart(samples.first(taken));
        samples = samples.subspan(taken);
    }
    return std::exchange(m_heard, {});
}

std::vector<Hearing> Listener::skip(double seconds)
{
    Hearing lost;
    lost.kind = Hearing::Fails;
    lost.at = now();
    lost.doubt = QStringLiteral("the device that is listened to lost %1 ms").arg(seconds * 1000, 0, 'f', 1);
    restart(now() + seconds);
    return {lost};
}

void Listener::hearPart(std::span<const float> both)
{
    const std::vector<float> code = channelOf(both, MediaClock::codeChannel);
    const std::vector<float> tone = channelOf(both, MediaClock::toneChannel);
    const std::vector<LevelMeter::Reading> codes = m_codeMeter.read(code);
    const std::vector<LevelMeter::Reading> tones = m_toneMeter.read(tone);
    for (size_t i = 0; i < codes.size(); ++i) {
        m_levels.push_back({codes[i], tones[i]});
        if (m_levels.size() > levelsKept)
            m_levels.pop_front();
    }
    const std::vector<SoundEdges::Edge> edges = m_edges->read(louderOf(code, tone));
    const std::vector<Frame> frames = m_code->read(code);
    m_samples += qint64(code.size());
    // A beginning comes before what is read of the sound, an end behind it.
    std::for_each(edges.cbegin(), edges.cend(), [this](const auto &edge) {
        if (edge.begins)
            take(edge);
    });
    std::for_each(frames.cbegin(), frames.cend(), [this](const Frame &frame) { take(frame); });
    std::for_each(edges.cbegin(), edges.cend(), [this](const auto &edge) {
        if (!edge.begins)
            take(edge);
    });
    tellOn();
}

void Listener::take(const SoundEdges::Edge &edge)
{
    const double at = m_begin + double(edge.sample) / m_rate;
    if (edge.begins) {
        Sound sound;
        sound.began = at;
        m_sound = std::move(sound);
        m_levels.clear();
    } else {
        end(at);
    }
}

void Listener::take(Frame frame)
{
    frame.at += m_begin;
    if (!m_sound || frame.at < m_sound->began - jump)
        return;
    follow(frame);
}

/// Takes the next frame of the sound's code into account.
void Listener::follow(const Frame &frame)
{
    Sound &sound = *m_sound;
    // The first two in a row tell the speed.
    const bool isPair = sound.last && sound.run.size() == 1
        && frame.moment == MediaClock::Moment{sound.last->moment.item, sound.last->moment.frame + 1};
    if (!isPair && !(sound.last && isNext(frame, *sound.last, sound.speed)))
        startRun(frame.at, sound.last && !isInPlace(frame));
    sound.run.push_back(frame);
    if (sound.run.size() > longestRun)
        sound.run.pop_front();
    sound.last = frame;
    if (sound.run.size() < 2)
        return;
    const Frame &first = sound.run.front();
    sound.speed = double(sound.run.size() - 1) * frameLength / (frame.at - first.at);
    const bool wasDoubted = std::exchange(sound.isDoubted, false);
    const std::optional<double> jumped = std::exchange(sound.jumpedAfter, std::nullopt);
    if (sound.isTold && (jumped || wasDoubted)) {
        const double earliest = std::min(jumped.value_or(sound.began), first.at);
        const double middle = (earliest + first.at) / 2;
        tell(Hearing::Jumps, middle, first.at - middle + edgeError, positionAt(middle));
    }
}

/// What was not read in between has lasted as long as it should: a hole in the reading, not in the sound.
bool Listener::isInPlace(const Frame &frame) const
{
    return frame.moment.item == m_sound->last->moment.item
        && std::abs(positionAt(frame.at) - frame.moment.seconds()) < jump;
}

void Listener::startRun(double at, bool jumps)
{
    Sound &sound = *m_sound;
    if (jumps || (sound.isDoubted && sound.last))
        sound.jumpedAfter = std::min(sound.last->at + frameLength / sound.speed, at);
    sound.run.clear();
}

/// What came before the first frame that could be read is known when it was no more than a frame that was cut.
void Listener::tellBeginning()
{
    Sound &sound = *m_sound;
    sound.isTold = true;
    const bool isRead = sound.run.size() > 1;
    const bool isWhole = isRead && sound.run.front().at - sound.began < 2.5 * frameLength / sound.speed;
    tell(Hearing::Begins, sound.began, edgeError,
        isWhole ? std::optional(positionAt(sound.began)) : std::nullopt);
    if (!isWhole && m_heard.back().doubt.isEmpty())
        m_heard.back().doubt = isRead ? QStringLiteral("its beginning could not be read") : unreadable();
    m_told = now();
}

void Listener::end(double at)
{
    if (!m_sound)
        return;
    if (!m_sound->isTold)
        tellBeginning();
    const bool isRead = isReadAt(at);
    tell(Hearing::Ends, at, edgeError, isRead ? std::optional(positionAt(at)) : std::nullopt);
    m_heard.back().level.reset();
    m_sound.reset();
}

/// What is there to tell of a sound while it lasts.
void Listener::tellOn()
{
    if (!m_sound)
        return;
    Sound &sound = *m_sound;
    const double since = std::max(sound.began, sound.last ? sound.last->at : 0);
    if (now() - since > patience && !sound.isDoubted) {
        sound.isDoubted = true;
        tellDoubt();
    } else if (!sound.isTold && isReadAt(now()) && now() - sound.began >= firstTold) {
        tellBeginning();
    } else if (sound.isTold && isReadAt(now()) && now() - m_told >= interval) {
        tell(Hearing::Goes, now(), 0, positionAt(now()));
        m_told = now();
    }
}

/// It sounds, and no more can be said.
void Listener::tellDoubt()
{
    if (m_sound->isTold)
        tell(Hearing::Goes, now(), 0, std::nullopt);
    else
        tellBeginning();
    Hearing &told = m_heard.back();
    told.item = 0;
    if (told.doubt.isEmpty())
        told.doubt = unreadable();
    m_told = now();
}

void Listener::tell(Hearing::Kind kind, double at, double within, std::optional<double> position)
{
    Hearing hearing;
    hearing.kind = kind;
    hearing.at = at;
    hearing.within = within;
    hearing.item = m_sound->last ? m_sound->last->moment.item : 0;
    hearing.position = position;
    hearing.speed = m_sound->speed;
    hearing.doubt = flaw();
    hearing.level = hearing.doubt.isEmpty() ? level() : std::nullopt;
    m_heard.push_back(hearing);
}

double Listener::positionAt(double time) const
{
    const Frame &last = *m_sound->last;
    return last.moment.seconds() + (time - last.at) * m_sound->speed;
}

bool Listener::isReadAt(double time) const
{
    // A frame that is begun, the one before, and what the reading takes.
    return m_sound->last && time - m_sound->last->at < 3.5 * frameLength / m_sound->speed;
}

/// Nothing while it changes.
std::optional<double> Listener::level() const
{
    if (m_levels.size() < 2)
        return std::nullopt;
    const double last = m_levels.back().tone.level;
    const double before = m_levels.at(m_levels.size() - 2).tone.level;
    return std::abs(last - before) < steady ? std::optional(last) : std::nullopt;
}

/// Why the sound cannot be measured, as far as the sound tells; empty: nothing is wrong with it.
QString Listener::flaw() const
{
    const auto any = [this](auto is) {
        return std::any_of(m_levels.cbegin(), m_levels.cend(), is);
    };
    if (any([](const Level &level) { return level.code.clips || level.tone.clips; }))
        return QStringLiteral("the sound clips");
    if (m_levels.size() < levelsKept)
        return {};
    // One may have what was before, or is behind it.
    const Level &last = m_levels.at(levelsKept - 2);
    const Level &before = m_levels.at(levelsKept - 3);
    const QString flaw = flawOf(last.code, last.tone, m_sound->speed);
    return flawOf(before.code, before.tone, m_sound->speed).isEmpty() ? QString() : flaw;
}

// SPDX-License-Identifier: MIT
#pragma once

#include "Hearing.h"
#include "LevelMeter.h"
#include "SoundEdges.h"
#include "TimeCodeReader.h"

#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

/// Hears what is played of test media (MediaClock): which item, where in it, how fast and how loud, when it begins and
/// ends. What it cannot measure it leaves out, and says why. Times are seconds from the first sample.
class Listener
{
public:
    /// @param rate  samples a second
    explicit Listener(int rate);

    /// Takes the next samples of both channels, which take turns, from -1 to 1.
    std::vector<Hearing> hear(std::span<const float> samples);
    /// The device that is listened to has lost some samples, as many as that time has: what was heard ends there.
    std::vector<Hearing> skip(double seconds);

    /// The sound is unreadable when no code came for so long. Seconds.
    static constexpr double patience = 0.4;

private:
    using Frame = TimeCodeReader::Frame;

    /// What was found of the present sound.
    struct Sound
    {
        double began = 0;
        bool isTold = false; ///< that it is there
        bool isDoubted = false; ///< told that it cannot be read
        std::optional<Frame> last; ///< of its code
        double speed = 1;
        std::deque<Frame> run; ///< one after the other, at one speed
        std::optional<double>
            jumpedAfter; ///< then it was still at its former place; told with the next frame
    };
    /// The same 40 ms of both channels.
    struct Level
    {
        LevelMeter::Reading code;
        LevelMeter::Reading tone;
    };

    void restart(double at);
    void hearPart(std::span<const float> both);
    void take(const SoundEdges::Edge &edge);
    void take(Frame frame);
    void tellBeginning();
    void follow(const Frame &frame);
    bool isInPlace(const Frame &frame) const;
    void startRun(double at, bool jumps);
    void end(double at);
    void tellOn();
    void tellDoubt();
    void tell(Hearing::Kind kind, double at, double within, std::optional<double> position);

    double now() const { return m_begin + double(m_samples) / m_rate; }
    double positionAt(double time) const;
    /// Whether the position is known at that time.
    bool isReadAt(double time) const;
    std::optional<double> level() const;
    QString flaw() const;

    const int m_rate;
    double m_begin = 0; ///< when the first sample was heard since one was lost
    qint64 m_samples = 0; ///< since then
    std::unique_ptr<TimeCodeReader> m_code;
    std::unique_ptr<SoundEdges> m_edges;
    LevelMeter m_codeMeter;
    LevelMeter m_toneMeter;
    std::deque<Level> m_levels; ///< of late
    std::optional<Sound> m_sound;
    double m_told = 0; ///< when it was told last that the sound goes on
    std::vector<Hearing> m_heard; ///< not given out yet
};

// SPDX-License-Identifier: MIT
#pragma once

#include "FrameMarkReader.h"
#include "Sighting.h"

#include <QString>

#include <optional>
#include <vector>

/// Follows what is shown of test media (MediaClock) from look to look: which item, which picture, when it comes, whether
/// it rests, what was left out. What it cannot measure it leaves out, and says why. Times are of one clock, seconds.
class PictureFollower
{
public:
    /// One look at the place.
    struct Look
    {
        double at = 0;
        double within = 0; ///< how far off that may be, either way
        std::vector<FrameMark> marks;
        QString doubt = {}; ///< why nothing can be seen; empty: what is there is seen
    };

    std::vector<Sighting> take(const Look &look);

    /// No picture is shown for so long while it plays. Seconds.
    static constexpr double RestTime = 0.25;
    /// So long may no mark be readable, as when one picture replaces the other. Seconds.
    static constexpr double Patience = 0.25;

private:
    void see(const Look &look, const MediaClock::Moment &moment);
    void follow(const Look &look, const MediaClock::Moment &moment);
    void missing(const Look &look, const QString &doubt);
    bool goesOn(double at, const MediaClock::Moment &moment) const;
    void noteLeftOut(const Look &look, const MediaClock::Moment &moment);
    void come(const Look &look, const MediaClock::Moment &moment);
    void startRun(Sighting::Kind kind);
    void tell(Sighting::Kind kind);
    void tellOn();

    /// A picture that came.
    struct Arrival
    {
        double at = 0;
        double within = 0;
        MediaClock::Moment moment;

        /// Of two pictures of one item the later one has more of it.
        double lateness() const { return at - moment.seconds(); }
    };

    std::optional<Look> m_look; ///< the last one, at which a picture was seen
    MediaClock::Moment m_moment; ///< item 0: none is seen
    double m_came = 0; ///< when that picture came
    double m_cameWithin = 0;
    MediaClock::Moment m_runBegan; ///< since then it goes without a jump or a rest
    double m_runBeganAt = 0;
    bool m_rests = false; ///< told so
    int m_leftOut = 0; ///< not told yet
    std::vector<Arrival> m_arrivals; ///< of the present run, since something was told
    double m_toldAt = 0;
    std::optional<double> m_missingSince;
    QString m_doubt; ///< told
    std::vector<Sighting> m_seen; ///< not given out yet
};

// SPDX-License-Identifier: MIT
#pragma once

#include "Measured.h"
#include "Quantities.h"

#include <QString>

#include <optional>

class HeardSound;
class SeenPicture;

/// What may be so of what is seen of a renderer, whatever it says itself. Everything that is given must be so. What is
/// measured counts as all that it may stand for.
struct EyeCondition
{
    std::optional<int> item; ///< number of its clock
    std::optional<Tolerance> frame; ///< number of the picture
    std::optional<Tolerance> position; ///< seconds
    std::optional<Tolerance> sync; ///< the picture's position less the sound's, seconds

    bool isEmpty() const { return !isOfPlace() && !sync; }
    /// @param isStill  the renderer says that it does not play: a picture that moves on is none that has a place
    bool holds(const SeenPicture &seen, const HeardSound &heard, bool isStill) const;
    /// Why something of it is not known; empty: all is known.
    QString unmeasured(const SeenPicture &seen, const HeardSound &heard) const;
    /// What was measured of it, with how far off that may be, for people.
    QString measured(const SeenPicture &seen, const HeardSound &heard) const;
    /// For people.
    QString text() const;

    /// The picture's position less the sound's, where both are of the same item and go. Seconds.
    static std::optional<Measured> lead(const SeenPicture &seen, const HeardSound &heard);

private:
    bool isOfPlace() const { return item || frame || position; }
};

// SPDX-License-Identifier: MIT
#pragma once

#include "Quantities.h"

#include <QString>

#include <optional>

class HeardSound;

/// What may be so of what is heard of a renderer, whatever it says itself. Everything that is given must be so. What is
/// measured counts as all that it may stand for.
struct EarCondition
{
    /// A level, in decibels.
    struct Level
    {
        Tolerance decibels;
        std::optional<int> against; ///< what is heard at that volume; otherwise full scale
    };

    std::optional<int> item; ///< number of its clock
    std::optional<Tolerance> position; ///< seconds
    std::optional<double> silence; ///< within so many seconds after the last command
    std::optional<double> gap; ///< at most so many seconds
    std::optional<Level> level;
    std::optional<Tolerance> speed; ///< 1: the normal one

    bool isEmpty() const;
    /// @param isStill  the renderer says that it does not play: a sound that goes on is none that has a place
    bool holds(const HeardSound &heard, bool isStill) const;
    /// Why something of it is not known; empty: all is known.
    QString unmeasured(const HeardSound &heard) const;
    /// What was measured of it, with how far off that may be, for people.
    QString measured(const HeardSound &heard) const;
    /// For people.
    QString text() const;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <cmath>
#include <optional>

/// One thing that a renderer says of what it plays, beside what came out of it.
struct SenseRow
{
    QString id; ///< "pause-at"
    QString what; ///< for people
    QString unit; ///< of the numbers: "s", "dB"; empty: they count something
    std::optional<double> said; ///< what it told, or was asked for and did not refuse
    std::optional<double> cameOut;
    double error = 0; ///< how far off what came out may be measured
    double limit = 0; ///< the most by which both may differ
    QString doubt; ///< why what came out is not known

    std::optional<double> difference() const
    {
        return said && cameOut ? std::optional(*cameOut - *said) : std::nullopt;
    }
    /// What came out is not what it says.
    bool isOff() const { return difference() && std::abs(*difference()) > limit + error; }
};

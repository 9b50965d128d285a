// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <chrono>
#include <optional>

/// A value and how far off it may be.
struct Tolerance
{
    double value = 0;
    double deviation = 0;

    /// @param error  how far off the other may be: it counts as all that it may stand for
    bool takes(double other, double error = 0) const
    {
        return other >= value - deviation - error && other <= value + deviation + error;
    }
};

/// Times and values as people write them: "5 s", "250ms", "2 min", "3" (seconds), "3 s ± 250 ms".
namespace Quantities {
/// Nothing for what is no time, is negative or longer than a day.
std::optional<std::chrono::milliseconds> time(const QString &text);
/// A time with a tolerance, in seconds; "+-" stands for "±". Without one the deviation is 0.
std::optional<Tolerance> timeWithTolerance(const QString &text);
/// A plain number with a tolerance: "30 ± 1".
std::optional<Tolerance> numberWithTolerance(const QString &text);

/// For reading: "5 s", "250 ms", "1.5 s".
QString text(std::chrono::milliseconds time);
/// "3 s ± 250 ms".
QString text(const Tolerance &seconds);
} // namespace Quantities

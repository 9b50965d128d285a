// SPDX-License-Identifier: MIT
#pragma once

#include <QList>

/// What a list of measured times comes to. All 0 for an empty list.
struct TimeStatistics
{
    qsizetype count = 0;
    double median = 0;
    /// The smallest of the times that at least 95 of 100 do not exceed.
    double p95 = 0;
    double maximum = 0;

    static TimeStatistics of(QList<double> times);
};

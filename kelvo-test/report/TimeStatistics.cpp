// SPDX-License-Identifier: MIT
#include "TimeStatistics.h"

#include <algorithm>

TimeStatistics TimeStatistics::of(QList<double> times)
{
    if (times.isEmpty())
        return {};
    std::sort(times.begin(), times.end());
    const qsizetype count = times.size();
    const qsizetype middle = count / 2;
    return {count, count % 2 ? times.at(middle) : (times.at(middle - 1) + times.at(middle)) / 2,
        times.at((count * 95 + 99) / 100 - 1), times.constLast()};
}

// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

/// What every benchmark prints: one line per figure, the reference measured in the same run beside it. All lines
/// together make the table in docs/benchmarks.md.
namespace Measurement {

inline double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

inline double maximum(const std::vector<double> &values)
{
    return values.empty() ? 0 : *std::max_element(values.begin(), values.end());
}

/// Milliseconds that the calling thread has worked so far: without those in which other threads or programs had the
/// processor.
inline double workOfThread()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// One row: "| name | value unit | reference | ratio | goal |".
inline void row(const std::string &name, double value, const char *unit, const std::string &reference = {},
    double referenceValue = 0, const std::string &goal = {})
{
    std::printf("| %s | %.2f %s | ", name.c_str(), value, unit);
    if (referenceValue > 0)
        std::printf("%s: %.2f %s | %.2f | ", reference.c_str(), referenceValue, unit, value / referenceValue);
    else
        std::printf("%s | | ", reference.c_str());
    std::printf("%s |\n", goal.c_str());
    std::fflush(stdout);
}

} // namespace Measurement

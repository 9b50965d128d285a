// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

/// The sizes after --growth, the first of the arguments that are looked at; none without that word. A program that is
/// given any prints lines of growth() in the place of its rows.
inline std::vector<int> growthSizes(int argc, char *argv[], int first = 1)
{
    std::vector<int> sizes;
    if (argc <= first || std::strcmp(argv[first], "--growth") != 0)
        return sizes;
    for (int i = first + 1; i < argc; ++i)
        sizes.push_back(std::atoi(argv[i]));
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}

/// Milliseconds that the clock shows for no work at all: more than 99 of 100 times. What takes hardly longer cannot
/// be told from it.
inline double noiseOfClock()
{
    std::vector<double> times(1000);
    for (double &time : times) {
        const auto begin = std::chrono::steady_clock::now();
        time = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    }
    std::sort(times.begin(), times.end());
    return times[times.size() * 99 / 100];
}

/// What benchmarks/growth.py draws: one point of a curve. The line of size 0 tells what the clock showed for no work.
inline void growth(const std::string &name, int size, double value, double noise)
{
    std::printf("growth: %s | 0 | %.6f | ms\n", name.c_str(), noise);
    std::printf("growth: %s | %d | %.6f | ms\n", name.c_str(), size, value);
    std::fflush(stdout);
}

inline void growth(const std::string &name, int size, double value)
{
    static const double noise = noiseOfClock();
    growth(name, size, value, noise);
}

} // namespace Measurement

// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <chrono>

/// What a library on another machine is allowed: how long it may take, and how much it may send.
struct RemoteLimits
{
    std::chrono::milliseconds connecting = std::chrono::seconds(10);
    /// Until the next row is complete, or the first one. Time in which nobody takes rows does not count.
    std::chrono::milliseconds row = std::chrono::seconds(30);
    int redirections = 5;
    qsizetype headBytes = 64 * 1024; ///< of all heads of one answer
    int columns = 100;
    qsizetype rowBytes = 1024 * 1024; ///< of one row, as it is sent
    int rows = 1'000'000; ///< of one answer
    int firstPage = 2000; ///< rows asked for at first, at most
    int page = 10'000; ///< rows of a later page, of servers that build a page before they send it
};

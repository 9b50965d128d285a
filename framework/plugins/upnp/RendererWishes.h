// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

/// What is wanted of a renderer's AVTransport and not sent yet, of each kind only the newest.
struct RendererWishes
{
    bool stop = false;
    bool load = false;
    bool play = false;
    bool knowState = false;
    std::optional<bool> paused = {};
    std::optional<double> position = {}; ///< seconds
    bool rate = false;
    bool knowMedia = false;
    bool knowPosition = false;
    bool judgeProgress = false; ///< by the next position
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What users and tests may set about the engine, each by an environment variable.
struct EngineSettings
{
    /// KELVO_AUDIO_SINK: a pipeline description that takes the place of the automatic audio output.
    QString audioSink;
    /// KELVO_VIDEO_SINK: the same for the picture.
    QString videoSink;
    /// KELVO_GST_STALL_MS sets both: how long playback may stand still before it counts as stalled.
    int localStall = 10'000; // milliseconds
    int networkStall = 20'000; // milliseconds
    /// KELVO_GST_NETWORK_TIMEOUT: how long a server may stay silent, in seconds.
    int networkTimeout = 8;

    static EngineSettings fromEnvironment();
};

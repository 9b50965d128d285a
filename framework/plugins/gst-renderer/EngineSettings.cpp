// SPDX-License-Identifier: MIT
#include "EngineSettings.h"

namespace {
int positive(const char *variable, int otherwise)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(variable, &ok);
    return ok && value > 0 ? value : otherwise;
}
} // namespace

EngineSettings EngineSettings::fromEnvironment()
{
    EngineSettings settings;
    settings.audioSink = qEnvironmentVariable("KELVO_AUDIO_SINK").trimmed();
    settings.videoSink = qEnvironmentVariable("KELVO_VIDEO_SINK").trimmed();
    settings.localStall = positive("KELVO_GST_STALL_MS", settings.localStall);
    settings.networkStall = positive("KELVO_GST_STALL_MS", settings.networkStall);
    settings.networkTimeout = positive("KELVO_GST_NETWORK_TIMEOUT", settings.networkTimeout);
    return settings;
}

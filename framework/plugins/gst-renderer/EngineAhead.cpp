// SPDX-License-Identifier: MIT
#include "EngineAhead.h"

#include "DecoderRanks.h"
#include "GstHandles.h"
#include "WorkerPool.h"

using namespace std::chrono_literals;

namespace {
// GStreamer may hang while it looks at plug-ins of its own, and nobody would miss what is lost then.
constexpr auto longestEnd = 100ms;

void prepare()
{
    if (!gst_init_check(nullptr, nullptr, nullptr))
        return;
    DecoderRanks::preferSmallDecoders();
    for (const char *name : {"playbin", "audioconvert", "audioresample", "volume"}) {
        const GstHandles::PluginFeature found(GST_PLUGIN_FEATURE(gst_element_factory_find(name)));
        if (found)
            const GstHandles::PluginFeature loaded(gst_plugin_feature_load(found.get()));
    }
}
} // namespace

void EngineAhead::begin()
{
    static WorkerPool worker(QStringLiteral("kelvo-gst-ahead"), 1, longestEnd);
    worker.start(prepare);
}

// SPDX-License-Identifier: MIT
#include "DecoderRanks.h"

#include "GstHandles.h"

#include <utility>

namespace {
constexpr std::pair<const char *, const char *> smallAndLarge[] = {
    {"mpg123audiodec", "avdec_mp3"},
};

GstHandles::PluginFeature findDecoder(const char *name)
{
    return GstHandles::PluginFeature(
        gst_registry_find_feature(gst_registry_get(), name, GST_TYPE_ELEMENT_FACTORY));
}
} // namespace

void DecoderRanks::preferSmallDecoders()
{
    for (const auto &[nameOfSmall, nameOfLarge] : smallAndLarge) {
        const GstHandles::PluginFeature small = findDecoder(nameOfSmall);
        const GstHandles::PluginFeature large = findDecoder(nameOfLarge);
        if (!small || !large)
            continue;
        const guint rank = gst_plugin_feature_get_rank(large.get());
        if (gst_plugin_feature_get_rank(small.get()) == rank)
            gst_plugin_feature_set_rank(small.get(), rank + 1);
    }
}

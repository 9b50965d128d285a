// SPDX-License-Identifier: MIT
#include "IdleCapsCache.h"

namespace {
bool isIdle(GstPad *pad)
{
    const GstHandles::Element output(gst_pad_get_parent_element(pad));
    return output && GST_STATE(output.get()) == GST_STATE_READY
        && GST_STATE_PENDING(output.get()) == GST_STATE_VOID_PENDING;
}

/// What may have been left out of an answer to a question with a filter is not known.
bool isUnfiltered(GstQuery *query)
{
    GstCaps *filter = nullptr;
    gst_query_parse_caps(query, &filter);
    return !filter;
}
} // namespace

void IdleCapsCache::attach(const std::shared_ptr<IdleCapsCache> &cache, GstPad *pad)
{
    using Owner = std::shared_ptr<IdleCapsCache>;
    // Called before the output answers, and again when it has.
    const auto questioned = [](GstPad *asked, GstPadProbeInfo *info, gpointer owner) {
        GstQuery *query = GST_PAD_PROBE_INFO_QUERY(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_CAPS || !isUnfiltered(query) || !isIdle(asked))
            return GST_PAD_PROBE_OK;
        IdleCapsCache &self = **static_cast<Owner *>(owner);
        if (info->type & GST_PAD_PROBE_TYPE_PUSH)
            return self.answer(query);
        self.remember(query);
        return GST_PAD_PROBE_OK;
    };
    const auto forget = [](gpointer owner) {
        delete static_cast<Owner *>(owner);
    };
    constexpr int moments
        = GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM | GST_PAD_PROBE_TYPE_PUSH | GST_PAD_PROBE_TYPE_PULL;
    gst_pad_add_probe(pad, GstPadProbeType(moments), questioned, new Owner(cache), forget);
}

GstPadProbeReturn IdleCapsCache::answer(GstQuery *query)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_caps)
        return GST_PAD_PROBE_OK;
    gst_query_set_caps_result(query, m_caps.get());
    return GST_PAD_PROBE_HANDLED;
}

void IdleCapsCache::remember(GstQuery *query)
{
    GstCaps *caps = nullptr;
    gst_query_parse_caps_result(query, &caps);
    const std::scoped_lock lock(m_mutex);
    if (caps)
        m_caps = {gst_caps_ref(caps), gst_caps_unref};
}

void IdleCapsCache::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_caps.reset();
}

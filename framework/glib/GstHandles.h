// SPDX-License-Identifier: MIT
#pragma once

#include "GlibHandles.h"

#include <gst/gst.h>

/// Owners of what GStreamer hands out, one per kind of release.
namespace GstHandles {

using GlibHandles::Releaser;

using Element = std::unique_ptr<GstElement, Releaser<gst_object_unref>>;
using ElementFactory = std::unique_ptr<GstElementFactory, Releaser<gst_object_unref>>;
using PluginFeature = std::unique_ptr<GstPluginFeature, Releaser<gst_object_unref>>;
using Bus = std::unique_ptr<GstBus, Releaser<gst_object_unref>>;
using Clock = std::unique_ptr<GstClock, Releaser<gst_object_unref>>;
using Pad = std::unique_ptr<GstPad, Releaser<gst_object_unref>>;
using Message = std::unique_ptr<GstMessage, Releaser<gst_message_unref>>;
using Query = std::unique_ptr<GstQuery, Releaser<gst_query_unref>>;
using TagList = std::unique_ptr<GstTagList, Releaser<gst_tag_list_unref>>;
using DateTime = std::unique_ptr<GstDateTime, Releaser<gst_date_time_unref>>;
using Caps = std::unique_ptr<GstCaps, Releaser<gst_caps_unref>>;
using Structure = std::unique_ptr<GstStructure, Releaser<gst_structure_free>>;
using Sample = std::unique_ptr<GstSample, Releaser<gst_sample_unref>>;
using Iterator = std::unique_ptr<GstIterator, Releaser<gst_iterator_free>>;
/// A GstClockID.
using ClockId = std::unique_ptr<void, Releaser<gst_clock_id_unref>>;

/// Takes over the floating reference of a new element.
inline Element adopt(GstElement *element)
{
    return Element(element ? GST_ELEMENT(gst_object_ref_sink(element)) : nullptr);
}

} // namespace GstHandles

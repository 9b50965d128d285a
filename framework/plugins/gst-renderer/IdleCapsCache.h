// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"

#include <QtGlobal>

#include <memory>
#include <mutex>

/// Answers which caps an output accepts while it is idle, that is in the Ready state, from what it said the first time.
///
/// playbin asks the video output about each pad of each decoder, in songs as well, and converters take half a millisecond
/// for every answer. Once the output runs it answers for itself: then its caps depend on what it shows.
class IdleCapsCache
{
public:
    IdleCapsCache() = default;
    Q_DISABLE_COPY_MOVE(IdleCapsCache)

    /// Answers for the sink pad of an output, for as long as that exists.
    static void attach(const std::shared_ptr<IdleCapsCache> &cache, GstPad *pad);

    /// Any thread. The next answer is the output's own.
    void clear();

private:
    GstPadProbeReturn answer(GstQuery *query);
    void remember(GstQuery *query);

    std::mutex m_mutex;
    std::shared_ptr<GstCaps> m_caps; ///< null: not asked yet
};

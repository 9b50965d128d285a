// SPDX-License-Identifier: MIT
#pragma once

#include "store/StoreIndexing.h"

/// Indexes the folders of KELVO_MEDIA_DIRS (separated by ":"), otherwise the user's music and video folders. With
/// KELVO_TRACKER=bus the desktop's own index is taken over instead, where it runs.
class MediaIndexing : public StoreIndexing
{
public:
    std::shared_ptr<StoreIndexer> start(std::shared_ptr<StoreSession> session, Report report,
        std::shared_ptr<StoreIndexer> previous) const override;
    bool isLengthCounted(const QUrl &url) const override;
};

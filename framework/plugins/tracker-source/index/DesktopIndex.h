// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"
#include "store/StoreConnection.h"

/// The desktop's own index of media files, as far as this store takes it over. Worker thread.
class DesktopIndex
{
public:
    explicit DesktopIndex(std::shared_ptr<StoreConnection> connection);

    /// Everything it holds; duplicates by URI are left out. The items have no numbers yet.
    std::vector<MediaItem> read(const StoreCancellation &cancellation, StoreError *error) const;

private:
    const std::shared_ptr<StoreConnection> m_connection;
};

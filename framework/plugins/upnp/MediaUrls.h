// SPDX-License-Identifier: MIT
#pragma once

#include <QUrl>

/// What a renderer is to fetch for a medium of this computer.
class MediaUrls
{
public:
    MediaUrls() = default;
    virtual ~MediaUrls() = default;
    Q_DISABLE_COPY_MOVE(MediaUrls)

    /// The address to give to a renderer. As it is, for everything that a renderer may reach by itself. GUI thread.
    virtual QUrl forRenderer(const QUrl &url) { return url; }
};

// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class KelvoRegistry;

/// Nobody touches mouse or keyboard while they watch a video: while one plays on this desktop, its screen is neither
/// blanked nor locked. GUI thread, as long as there is an application object.
///
/// Asked of the desktop by D-Bus when the first video plays; without one that can be asked, nothing happens. When the
/// process ends, in whatever way, the desktop sees that itself.
class ScreenLock
{
public:
    /// @param registry  of the renderers that may play; not owned
    explicit ScreenLock(const KelvoRegistry *registry);
    ~ScreenLock();
    ScreenLock(const ScreenLock &) = delete;
    ScreenLock &operator=(const ScreenLock &) = delete;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

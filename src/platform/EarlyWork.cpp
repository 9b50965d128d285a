// SPDX-License-Identifier: MIT
#include "EarlyWork.h"

#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"

#include <fontconfig/fontconfig.h>
#include <system_error>

namespace {
/// The toolkit takes the first out of the environment, and DisplayCheck may take DISPLAY out on Wayland.
bool isSettled()
{
    return !qEnvironmentVariableIsSet("DESKTOP_STARTUP_ID") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qgetenv("XDG_SESSION_TYPE") != "wayland";
}
} // namespace

EarlyWork::~EarlyWork()
{
    waitForFonts();
}

void EarlyWork::beginIfSettled()
{
    if (!isSettled())
        return;
    // Fontconfig may be asked by any thread, but reads its files once for each that asks before the first has them.
    try {
        m_fonts = std::thread([] { FcInit(); });
    } catch (const std::system_error &) {
        // The toolkit has them read later, in the thread that it has.
    }
    begin();
}

void EarlyWork::begin()
{
    if (!m_hasBegun)
        KelvoRegistry::instance()->pluginLoader()->prepareAhead();
    m_hasBegun = true;
}

void EarlyWork::waitForFonts()
{
    if (m_fonts.joinable())
        m_fonts.join();
}

// SPDX-License-Identifier: MIT
#pragma once

/// What was built, fixed at build time.
namespace KelvoBuild {

/// "N/A" when the build supplied none.
const char *revision();
/// As the date command writes it.
const char *time();

} // namespace KelvoBuild

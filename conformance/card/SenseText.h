// SPDX-License-Identifier: MIT
#pragma once

#include "SoundRow.h"

/// The numbers of what was heard, for people. Empty: not known.
namespace SoundText {
QString said(const SoundRow &row);
/// With how far off it may be measured; or why it is not known.
QString cameOut(const SoundRow &row);
/// "+12 ms".
QString difference(const SoundRow &row);
/// "agrees", "is off", or "not known".
QString verdict(const SoundRow &row);
} // namespace SoundText

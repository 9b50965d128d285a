// SPDX-License-Identifier: MIT
#pragma once

#include "SenseRow.h"

/// The numbers of what was heard, for people. Empty: not known.
namespace SenseText {
QString said(const SenseRow &row);
/// With how far off it may be measured; or why it is not known.
QString cameOut(const SenseRow &row);
/// "+12 ms".
QString difference(const SenseRow &row);
/// "agrees", "is off", or "not known".
QString verdict(const SenseRow &row);
} // namespace SenseText

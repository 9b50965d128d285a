// SPDX-License-Identifier: MIT
#pragma once

#include "Medium.h"

/// Makes media with other programs and keeps them in the user's cache.
namespace MediaMaker {
/// The path of the file; empty, with the reason, where it cannot be made. Blocks for a minute at most.
QString make(const Medium &medium, QString *error);
} // namespace MediaMaker

// SPDX-License-Identifier: MIT
#pragma once

#include "Program.h"

/// The verbs that need scenarios, an optional part of the build.
namespace ScenarioVerbs {
void addTo(Program::Verbs &verbs);
} // namespace ScenarioVerbs

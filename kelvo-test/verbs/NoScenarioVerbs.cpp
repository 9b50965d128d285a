// SPDX-License-Identifier: MIT
#include "ScenarioVerbs.h"

void ScenarioVerbs::addTo(Program::Verbs &) { }

// SPDX-License-Identifier: MIT
#include "ScenarioVerbs.h"

#include "RunVerb.h"

void ScenarioVerbs::addTo(Program::Verbs &verbs)
{
    verbs.push_back(std::make_unique<RunVerb>());
}

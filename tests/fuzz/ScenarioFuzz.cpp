// SPDX-License-Identifier: MIT
// Scenario files. What they may include lies beside them as part.yaml.
#include "FuzzSupport.h"
#include "ScenarioFile.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QString part = Fuzz::file("steps:\n  - play\n  - wait: 1 s\n", QStringLiteral("part.yaml"));
    QString error;
    const auto scenario
        = ScenarioFile::read(Fuzz::file(Fuzz::bytes(data, size), QStringLiteral("scenario.yaml")), &error);
    Fuzz::require(scenario.has_value() == error.isEmpty());
    if (scenario)
        Fuzz::require(!scenario->steps.isEmpty() && scenario->steps.size() <= Scenario::MaximumSteps);
    return 0;
}

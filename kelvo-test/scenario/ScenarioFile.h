// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <QString>

#include <optional>

/// Reads scenarios from YAML files (docs/scenarios.md).
namespace ScenarioFile {
/// @param error  set where there is none to return: the file, line and column, what is wrong, and what was meant
std::optional<Scenario> read(const QString &path, QString *error);
} // namespace ScenarioFile

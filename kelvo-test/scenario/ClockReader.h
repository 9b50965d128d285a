// SPDX-License-Identifier: MIT
#pragma once

#include "Medium.h"
#include "Quantities.h"

#include <QList>

class YamlNode;

/// Reads what scenarios say of the clock in media. What is wrong is thrown as a ScenarioFault.
namespace ClockReader {
/// The number of a clock: itself, or that of a medium of the scenario.
int itemOf(const YamlNode &node, const QList<Medium> &media);
/// The same where it is to be seen: of a medium that has a picture.
int itemSeenOf(const YamlNode &node, const QList<Medium> &media);
/// Seconds.
Tolerance timeOf(const YamlNode &node);
} // namespace ClockReader

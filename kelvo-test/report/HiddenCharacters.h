// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Characters that cannot be seen, or that change the direction of what follows.
namespace HiddenCharacters {
/// The text with each of them written by its number, "\u202e", as JSON and YAML have it. Those that only join letters
/// stay as they are.
QString shown(const QString &text);
} // namespace HiddenCharacters

// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// The warnings of the process that nobody expects. Everything else that the console logs is dropped.
namespace Warnings {

void install();
/// Those since the last call.
QStringList takeUnexpected();
int expectedCount();

} // namespace Warnings

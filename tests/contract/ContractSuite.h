// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

class Subject;

/// Holds the subject to the whole contract, each statement a row of a Qt Test; the exit status of the test program. In
/// real time the groups of the contract run side by side, so many at once: each mostly waits for its media, but not so
/// much that more would keep their time on a small machine.
int runRendererContract(Subject &subject, int argc, char **argv, size_t groupsAtOnce = 3);

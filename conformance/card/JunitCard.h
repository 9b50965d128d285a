// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

class Card;

/// For CI systems: one test suite, a test case for each statement. What was refused or not tried counts as skipped.
QByteArray toJunit(const Card &card);

// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

class Card;

/// For programs: one object with the head, the counts and all results.
QByteArray toJson(const Card &card);

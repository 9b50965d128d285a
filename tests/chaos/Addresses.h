// SPDX-License-Identifier: MIT
#pragma once

#include "Dice.h"

#include <QString>

/// Addresses of media, from sound ones to nonsense.
namespace Addresses {

/// Media that every renderer can be given: simulated ones, files, nothing at all.
QString any(Dice &dice);
/// Files of playlists, which are given by their type.
QString list(Dice &dice);

} // namespace Addresses

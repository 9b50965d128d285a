// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QToolButton;

/// Buttons whose caption tells the state of the program.
namespace Captions {

/// Gives the button the width of the widest of its captions, whatever its font, so that no change of the caption moves
/// what is beside it.
void makeRoom(QToolButton *button, const QStringList &captions);

} // namespace Captions

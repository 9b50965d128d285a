// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QColor;
class QToolButton;

/// Buttons whose caption tells the state of the program.
namespace Captions {

/// Gives the button the width of the widest of its captions, whatever its font, so that no change of the caption moves
/// what is beside it.
void makeRoom(QToolButton *button, const QStringList &captions);

/// Paints the caption in that colour, on the button's own ground where it can be read there, otherwise on one where it
/// can, with a frame of the focus in the same colour.
void paint(QToolButton *button, const QColor &color);

} // namespace Captions

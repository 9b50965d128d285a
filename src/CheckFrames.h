// SPDX-License-Identifier: MIT
#pragma once

class QCheckBox;

/// Check boxes that can be seen where they are empty.
namespace CheckFrames {

/// The style draws the frame of a box in a darker shade of the window's colour, which in a dark window nobody sees: there
/// it gets one in the colour of the text, also when the window becomes dark later.
void makeVisible(QCheckBox *box);

} // namespace CheckFrames

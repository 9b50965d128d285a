// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What must be known of the display before QApplication is built, which ends the process when it finds none.
namespace DisplayCheck {

/// Makes the X display named by "-display" that of the whole process: renderers open it for their video by
/// connections of their own, and so do the programs that are started.
void useNamedDisplay(int argc, char *argv[]);

/// On a Wayland session with an X display that answers, asks for X11 windows unless the user named a platform:
/// renderers put their video into X11 windows. A display that does not answer is forgotten there, so that nobody tries
/// it again: without it the program has no video output.
void preferX11();

/// Why no window could be shown; empty when nothing speaks against it. Looks at the platform named by the
/// arguments or the environment, as QApplication does.
QString problem(int argc, char *argv[]);

/// Once QApplication is built: where it shows windows on Wayland, an X display that is there too is forgotten. Renderers
/// would put their video into windows of it that nobody sees, and call that an output.
void forgetUnusedX11();

} // namespace DisplayCheck

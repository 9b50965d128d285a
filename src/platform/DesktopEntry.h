// SPDX-License-Identifier: MIT
#pragma once

class QIcon;

/// What the desktop knows the program by: its desktop file, org.kelvo.TestGui.desktop.
namespace DesktopEntry {

/// Names the desktop file, by which the desktop groups the windows and on Wayland also finds their icon, and gives all
/// windows the icon, as soon as the event loop runs. Once the application object is made, before there are windows.
void apply();

/// That of the icon theme; where none has it, as in a program that is not installed, the one that comes with the program.
QIcon icon();

} // namespace DesktopEntry

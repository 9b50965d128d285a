// SPDX-License-Identifier: MIT
#pragma once

class QMenuBar;
class QWidget;

/// Where the keyboard works.
namespace FocusKeys {

/// F10 opens the first menu at its first entry, from anywhere in the window.
void openMenuByF10(QMenuBar *bar);

/// The dialog that the widget is in gives it the focus each time it is opened.
void startAt(QWidget *widget);

} // namespace FocusKeys

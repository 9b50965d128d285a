// SPDX-License-Identifier: MIT
#pragma once

class QWidget;

/// Combo boxes for people who do not see where they stand.
namespace ComboLabels {

/// Gives each combo box of the window that has an accessible name a label that nobody sees, with this name and the entry
/// that is chosen: the toolkit gives that entry out as the name of the box, and of box and label screen readers speak
/// only one. A choice in the box that has the focus is announced.
void add(QWidget *window);

} // namespace ComboLabels

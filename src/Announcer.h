// SPDX-License-Identifier: MIT
#pragma once

class QString;
class QWidget;

/// Tells people who do not see the screen what has just happened, wherever the focus is and without moving it.
namespace Announcer {

/// Has screen readers speak the text once. Nothing is done while no assistive technology is there, or for an empty text.
/// GUI thread only.
/// @param source  any widget of the window that the text concerns
void say(const QWidget *source, const QString &text);

} // namespace Announcer

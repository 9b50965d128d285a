// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QWidget;

/// Says what is wrong with how a window looks, from the places of its widgets and the room that their texts need.
namespace LayoutJudge {

/// One line for each widget that shows and is cut by what is around it, for each two controls that cover one another,
/// for each text that has too little room, and for each that can hardly be told from what is behind it. A text that
/// the user may scroll, and one that shows whole as a tool tip, has the room that it needs.
QStringList faults(const QWidget *window);

} // namespace LayoutJudge

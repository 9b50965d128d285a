// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Names, titles and errors come from devices and files. What would command a reader's program, or turn the direction
/// of the text around, becomes visible: control characters (but for line breaks, which become blanks), marks of direction,
/// and what is no character at all are written as "\u001b".
QString plainText(const QString &text);
/// The same with line breaks kept, for texts of several lines.
QString plainLines(const QString &text);

// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QUrl>

/// What the program is told by its arguments, beside those that are the toolkit's.
namespace CommandLine {

/// What "--help" and "--version", as the only argument, are answered with, in UTF-8; empty: the program starts. Needs
/// neither a display nor an application object.
QByteArray answerTo(int argc, char *argv[]);

/// Where the argument leads: a file or folder that is there, by its name alone, or else what the text says as a URL,
/// which may be none. Looks at the disk.
QUrl urlOf(const char *argument);

} // namespace CommandLine

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Whether a file is a complete ELF image: an empty text when it is, otherwise what is wrong with it.
///
/// The dynamic linker maps a library without comparing its tables with the length of the file; touching a page
/// behind the end of a truncated one ends the process with SIGBUS. So this is asked before anything is mapped.
/// See the System V ABI, chapters 4 and 5.
QString elfDefect(const QString &path);

// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

#include <optional>

/// The text file of addresses to choose from, one a line.
namespace UriListFile {

/// The lines, taken as they are, in UTF-8 or what a byte order mark says. Nothing when the file cannot be read. Any thread.
std::optional<QStringList> read(const QString &path);

} // namespace UriListFile

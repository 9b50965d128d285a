// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>

class QIODevice;

/// What a verb leaves behind in a file.
namespace ResultFile {
/// Writes a file as a whole or not at all. False after a complaint.
bool save(const QString &path, const std::function<bool(QIODevice *)> &write);
} // namespace ResultFile

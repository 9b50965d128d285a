// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Texts of others in YAML.
namespace YamlText {
/// The text in double quotes, on one line, whatever is in it.
QByteArray quoted(const QString &text);
} // namespace YamlText

// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QStringView>

#include <string>
#include <string_view>

/// Values as JSON text (RFC 8259), written straight behind what is there already. Any thread.
namespace JsonText {
/// What a text is cut to, with "…" at its end.
inline constexpr qsizetype mostCharacters = 4096;
/// Once a text is as long as this, lists and objects in it are not continued: "…" stands for what would follow.
inline constexpr size_t mostBytes = size_t(64) * 1024;

/// In quotes. What is no character (half of a surrogate pair) becomes U+FFFD.
void appendText(std::string &json, QStringView text);
/// For names of ours: plain ASCII without anything to escape.
void appendName(std::string &json, std::string_view name);
void appendNumber(std::string &json, qint64 number);

/// States of renderers by their names, playlists by their uuids, addresses without their passwords, rectangles as
/// [x,y,width,height], items and errors as objects. What has no text form is {"type":"its type"}.
void appendValue(std::string &json, QMetaType type, const void *value);
} // namespace JsonText

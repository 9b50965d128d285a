// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QByteArray>

#include <optional>

/// A page of items as one array of bytes: for each item its id, title, URL, media type and duration (decimal),
/// each in UTF-8 with a NUL byte behind it.
///
/// A long list passes faster than as a(ssssx), whose every text is checked, copied and aligned on its own at each
/// hop.
namespace PackedItems {
/// NUL characters in the texts are left out.
QByteArray pack(const SharedItems &items);

/// Nothing when the bytes are not a page of at most `limit` items. What is no UTF-8 is shown by replacement
/// characters.
std::optional<SharedItems> unpack(const QByteArray &bytes, uint limit);
} // namespace PackedItems

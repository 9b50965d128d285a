// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"

/// What kind of media a file holds.
namespace MediaTypes {

struct Verdict
{
    MediaKind kind = MediaKind::Ignored;
    /// The name says nothing; sniff() has to look into the file.
    bool needsContent = false;
};

/// By the name alone.
Verdict fromName(const QByteArray &fileName);
/// By the beginning of the file.
MediaKind sniff(const QByteArray &path);
/// IANA media type by the name; empty when it says nothing.
QByteArray mimeType(const QByteArray &fileName);

} // namespace MediaTypes

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QByteArray>

/// File URIs as the store holds them. Paths are bytes: a file name need not be valid in any encoding.
namespace FileUri {

/// file://..., everything but unreserved characters percent-encoded byte by byte (RFC 3986, RFC 8089).
KELVO_TRACKER_EXPORT QByteArray fromPath(const QByteArray &path);
/// The path of a local file URI; empty for anything else.
KELVO_TRACKER_EXPORT QByteArray toPath(const QByteArray &uri);
/// The one spelling of a file URI that the store uses ("." and ".." resolved); other URIs as they are.
KELVO_TRACKER_EXPORT QByteArray canonical(const QByteArray &uri);

} // namespace FileUri

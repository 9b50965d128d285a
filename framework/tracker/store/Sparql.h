// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QByteArray>
#include <QString>

/// Pieces of SPARQL text.
namespace Sparql {

/// All music (songs, artists, albums, playlists) lies in this named graph. Patterns inside GRAPH read the tables
/// themselves; in the default graph they read a union of all graphs that has no indexes once a class occurs twice
/// in a query. Videos lie in the default graph, where plain queries find them.
inline constexpr char musicGraph[] = "urn:kelvo:music";
inline constexpr char favoriteTag[] = "http://tracker.api.gnome.org/ontology/v3/nao#predefined-tag-favorite";
inline constexpr char downloadedTag[] = "urn:kelvo:tag:downloaded";
inline constexpr char unknownArtist[] = "urn:kelvo:artist:unknown";
inline constexpr char unknownAlbum[] = "urn:kelvo:album:unknown";

/// "text" with quotes, escaped; characters that the store cannot hold (NUL) are left out.
KELVO_TRACKER_EXPORT QByteArray literal(const QString &text);
KELVO_TRACKER_EXPORT QByteArray literal(const QByteArray &utf8);
/// <iri>; what may not stand in an IRI is percent-encoded.
KELVO_TRACKER_EXPORT QByteArray iri(const QByteArray &text);
/// An xsd:dateTime literal of the current time in UTC, later than each one made before by this process. Any thread.
KELVO_TRACKER_EXPORT QByteArray now();
/// The time for what happens now when the last one was given `last`; microseconds since 1970. Never a full second: the
/// store's library keeps those as numbers and other times as texts, and any text sorts behind any number.
qint64 nextTime(qint64 now, qint64 last);

} // namespace Sparql

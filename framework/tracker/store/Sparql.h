// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Pieces of SPARQL text.
namespace Sparql {

/// All music (songs, artists, albums, playlists) lies in this named graph. Patterns inside GRAPH read the tables
/// themselves; in the default graph they read a union of all graphs that has no indexes once a class occurs twice
/// in a query. Videos lie in the default graph, where plain queries find them.
inline constexpr char MusicGraph[] = "urn:kelvo:music";
inline constexpr char FavoriteTag[] = "http://tracker.api.gnome.org/ontology/v3/nao#predefined-tag-favorite";
inline constexpr char DownloadedTag[] = "urn:kelvo:tag:downloaded";
inline constexpr char UnknownArtist[] = "urn:kelvo:artist:unknown";
inline constexpr char UnknownAlbum[] = "urn:kelvo:album:unknown";

/// "text" with quotes, escaped; characters that the store cannot hold (NUL) are left out.
QByteArray literal(const QString &text);
QByteArray literal(const QByteArray &utf8);
/// <iri>; what may not stand in an IRI is percent-encoded.
QByteArray iri(const QByteArray &text);
/// An xsd:dateTime literal of the current time in UTC.
QByteArray now();

} // namespace Sparql

// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

class YamlNode;

/// Reads what a scenario plays. What is wrong is thrown as a ScenarioFault.
namespace MediaReader {
QList<Medium> media(const YamlNode &node);
QList<NamedPlaylist> playlists(const YamlNode &node, const QList<Medium> &media);
/// @param more  further keys that the map may have
MediaFault fault(const YamlNode &node, const QStringList &more = {});
/// The medium that "$song" names; texts without "$" are addresses, where they may be.
QString mediumName(const YamlNode &node, const QList<Medium> &media, bool mayBeAddress);
} // namespace MediaReader

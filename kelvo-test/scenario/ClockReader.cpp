// SPDX-License-Identifier: MIT
#include "ClockReader.h"

#include "MediaClock.h"
#include "MediaReader.h"
#include "YamlNode.h"

#include <algorithm>

namespace {
/// Nothing where the node names none, but the number of a clock.
const Medium *mediumOf(const YamlNode &node, const QList<Medium> &media)
{
    if (!node.text().startsWith(u'$'))
        return nullptr;
    const QString name = MediaReader::mediumName(node, media, false);
    return &*std::find_if(
        media.cbegin(), media.cend(), [&name](const Medium &one) { return one.name == name; });
}

int clockOf(const YamlNode &node, const Medium *medium)
{
    return medium ? medium->clock : node.integer(1, MediaClock::mostItems);
}
} // namespace

int ClockReader::itemOf(const YamlNode &node, const QList<Medium> &media)
{
    const Medium *const medium = mediumOf(node, media);
    if (medium && medium->clock == 0)
        node.fail(QStringLiteral("\"$%1\" has no clock that could be heard: make it sound: timecode")
                      .arg(medium->name));
    return clockOf(node, medium);
}

int ClockReader::itemSeenOf(const YamlNode &node, const QList<Medium> &media)
{
    const Medium *const medium = mediumOf(node, media);
    if (medium && (medium->clock == 0 || medium->kind != Medium::Video))
        node.fail(QStringLiteral("\"$%1\" has no clock that could be seen: make it video: timecode")
                      .arg(medium->name));
    return clockOf(node, medium);
}

Tolerance ClockReader::timeOf(const YamlNode &node)
{
    const auto time = Quantities::timeWithTolerance(node.text());
    if (!time)
        node.fail(QStringLiteral("%1 takes a time such as \"3 s ± 20 ms\", not \"%2\"")
                      .arg(node.name(), node.text()));
    return *time;
}

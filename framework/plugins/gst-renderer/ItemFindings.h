// SPDX-License-Identifier: MIT
#pragma once

#include "TagCollector.h"

#include <QString>

/// What was found out about the item in play: its facts, and what stands in the way of playing it.
class ItemFindings
{
public:
    /// Another item begins.
    void clear() { *this = {}; }

    TagCollector &facts() { return m_facts; }

    /// A stream that nothing decodes.
    void noteMissingCodec(const QString &text) { m_missingCodec = text; }
    /// Told once the others play; empty when there is none. Before preroll it is not clear whether anything plays.
    QString missingCodec() const { return m_missingCodec; }
    /// The type of a stream that has no player.
    void noteUnplayable(const QByteArray &mediaType) { m_isText = mediaType.startsWith("text/"); }
    /// Whether the item is for reading.
    bool isText() const { return m_isText; }

private:
    TagCollector m_facts;
    QString m_missingCodec;
    bool m_isText = false;
};

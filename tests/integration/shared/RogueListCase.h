// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTestCase.h"
#include "RoguePeer.h"

#include <memory>

class KelvoPlaylist;

/// For tests of one playlist of another process, which answers as the test wants.
class RogueListCase : public KelvoTestCase
{
    Q_OBJECT
public Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

protected:
    /// The playlist, as it has arrived in the registry.
    KelvoPlaylist *offer(uint count);

    /// What a request for a page asks for.
    static uint startOf(const QDBusMessage &call) { return call.arguments().at(0).toUInt(); }
    static uint countOf(const QDBusMessage &call) { return call.arguments().at(1).toUInt(); }

    std::unique_ptr<RoguePeer> m_rogue;
};

// SPDX-License-Identifier: MIT
#include "RogueListCase.h"

#include "KelvoPlaylist.h"
#include "KelvoShared.h"
#include "TestRegistry.h"

#include <QTest>

void RogueListCase::initTestCase()
{
    qputenv("KELVO_PLUGINS", "");
    QVERIFY(KelvoShared::instance()->initTracking(registry()));
}

void RogueListCase::init()
{
    KelvoTestCase::init();
    m_rogue = std::make_unique<RoguePeer>();
    m_rogue->items = RoguePeer::numbered(3);
    m_rogue->appear();
}

void RogueListCase::cleanup()
{
    m_rogue.reset();
    QTRY_VERIFY(registry()->allPlaylists().isEmpty());
}

KelvoPlaylist *RogueListCase::offer(uint count)
{
    m_rogue->offer(0, "list", "List", count);
    if (!QTest::qWaitFor([] { return find("list"); }, 10'000))
        qFatal("The playlist does not arrive");
    return find("list");
}

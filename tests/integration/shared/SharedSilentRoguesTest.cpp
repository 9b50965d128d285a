// SPDX-License-Identifier: MIT
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RoguePeer.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QTest>

// Other processes that do not list their playlists. Waits are cut to 400 ms by the environment; only here, because a
// peer that answers as fast as it can may be late by as much on a busy machine.
class SharedSilentRoguesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        QVERIFY(KelvoShared::instance()->initTracking(registry()));
    }

    void cleanup() { QTRY_VERIFY(registry()->allPlaylists().isEmpty()); }

    void doesNotWaitForOneThatNeverAnswers()
    {
        RoguePeer rogue;
        rogue.onList = [](const QDBusMessage &) {
        };
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("does not answer"));
        QCOMPARE(rogue.lists, 3);
        // What it announces is taken all the same, and it is asked again after a rest.
        rogue.offer(0, "announced", "Announced", 0);
        QTRY_VERIFY(find("announced"));
        rogue.objects.insert(
            QDBusObjectPath(RoguePeer::path(1)), RoguePeer::description("listed", "Listed", 0));
        rogue.onList = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(find("listed"), 10'000);
        QCOMPARE(log.warnings().size(), 1);
    }

    void takesNoAnswersOfOthers()
    {
        RoguePeer rogue;
        RoguePeer other("other");
        rogue.onList = [&other](const QDBusMessage &call) {
            other.reply(call, {"not mine to answer"});
        };
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE(log.warnings().size(), 1); // an answer of somebody else is none
        QVERIFY(log.warnings().first().contains("does not answer"));
        QCOMPARE(rogue.lists, 3);
    }
};

KELVO_TEST(SharedSilentRoguesTest)
#include "SharedSilentRoguesTest.moc"

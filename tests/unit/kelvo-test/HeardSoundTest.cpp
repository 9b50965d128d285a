// SPDX-License-Identifier: MIT
#include "HeardSound.h"
#include "Ear.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <cmath>

namespace {
Hearing told(
    Hearing::Kind kind, double at, int item, std::optional<double> position, const QString &doubt = {})
{
    Hearing hearing;
    hearing.kind = kind;
    hearing.at = at;
    hearing.within = kind == Hearing::Goes ? 0 : 0.0005;
    hearing.item = item;
    hearing.position = position;
    hearing.doubt = doubt;
    return hearing;
}

Hearing loud(double at, std::optional<double> level)
{
    Hearing hearing = told(Hearing::Goes, at, 1, at);
    hearing.level = level;
    return hearing;
}

bool isAbout(const std::optional<HeardSound::Measured> &measured, double wanted)
{
    return measured && std::abs(measured->value - wanted) < 1e-9;
}
} // namespace

/// What is known at a moment of what was heard until then.
class HeardSoundTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void nothingIsKnownOfNothing()
    {
        HeardSound sound;
        QVERIFY(!sound.isListening() && sound.doubt().contains(QLatin1String("nobody")));
        sound.beginListening();
        sound.settle(100);
        QVERIFY(sound.doubt().contains(QLatin1String("nothing has been heard")));
        // That nothing was ever heard may have many reasons: it is no silence.
        QVERIFY(!sound.position() && !sound.silence() && !sound.gap() && !sound.speed() && !sound.level());
    }

    void thePositionGoesOnWithTheSoundAndStaysWhereItEnds()
    {
        HeardSound sound;
        sound.take(told(Hearing::Begins, 10, 3, 5));
        sound.settle(10.25);
        QVERIFY(isAbout(sound.position(), 5.25) && sound.item() == 3 && sound.sounds());
        Hearing faster = told(Hearing::Goes, 11, 3, 6);
        faster.speed = 2;
        sound.take(faster);
        sound.settle(11.25);
        QVERIFY(isAbout(sound.position(), 6.5) && isAbout(sound.speed(), 2));
        // Nobody has told for too long.
        sound.settle(12);
        QVERIFY(!sound.position());
        sound.take(told(Hearing::Ends, 13, 3, 8));
        sound.settle(20);
        QVERIFY(isAbout(sound.position(), 8) && !sound.sounds() && sound.position()->error < 0.001);
    }

    void timesAreAsFarOffAsTheEarsClock()
    {
        for (const double clockError : {0.003, 0.25}) {
            HeardSound sound(clockError);
            sound.take(told(Hearing::Begins, 10, 3, 5));
            QVERIFY(std::abs(sound.position()->error - Hearing::PositionError - clockError) < 1e-9);
            sound.beginCommand(11);
            sound.take(told(Hearing::Ends, 11.1, 3, 6));
            sound.settle(13);
            QVERIFY(std::abs(sound.silence()->error - clockError) < 0.001);
            // Where a sound ends is a matter of its code.
            QVERIFY(sound.position()->error < 0.003);
        }
    }

    void silenceIsKnownWhenNoSoundCanBeOnItsWay()
    {
        HeardSound sound;
        sound.take(told(Hearing::Begins, 10, 3, 0));
        sound.beginCommand(12);
        sound.settle(12.9);
        QVERIFY(!sound.silence());
        sound.take(told(Hearing::Ends, 12.04, 3, 2.04));
        QVERIFY(isAbout(sound.silence(), 0.04) && sound.isAtRest());
        // The sound that this may begin is not told yet.
        sound.beginCommand(14);
        sound.settle(14 + Ear::Lateness);
        QVERIFY(!sound.silence() && !sound.isAtRest());
        sound.settle(14.1 + Ear::Lateness);
        QVERIFY(isAbout(sound.silence(), 12.04 - 14));
    }

    void gapsAreBetweenItems()
    {
        HeardSound sound;
        sound.take(told(Hearing::Begins, 10, 1, 0));
        sound.take(told(Hearing::Ends, 11, 1, 1));
        sound.take(told(Hearing::Begins, 12, 1, 1)); // it was paused
        QVERIFY(!sound.gap());
        sound.take(told(Hearing::Ends, 13, 1, 2));
        sound.take(told(Hearing::Begins, 13.02, 2, 0));
        QVERIFY(isAbout(sound.gap(), 0.02));
        sound.take(told(Hearing::Jumps, 14, 3, 0));
        QVERIFY(isAbout(sound.gap(), 0) && sound.gap()->error >= HeardSound::SilenceHeard);
        sound.beginCommand(15);
        QVERIFY(!sound.gap());
        sound.take(told(Hearing::Jumps, 16, 3, 9)); // within the item
        QVERIFY(!sound.gap());
        sound.take(told(Hearing::Ends, 17, 3, 10));
        sound.take(told(Hearing::Begins, 17.3, 3, 0)); // again
        QVERIFY(isAbout(sound.gap(), 0.3));
        sound.take(told(Hearing::Ends, 18, 3, 0.7));
        sound.beginCommand(19);
        sound.take(told(Hearing::Fails, 20, 0, {}, QStringLiteral("lost")));
        sound.take(told(Hearing::Begins, 21, 1, 0));
        QVERIFY(!sound.gap());
    }

    void levelsAreOfTheVolumeThatIsTold()
    {
        HeardSound sound;
        sound.take(told(Hearing::Begins, 10, 1, 0));
        sound.takeVolume(99, 10);
        sound.take(loud(10.1, -10)); // may be of the volume before
        sound.take(loud(11, -18));
        QVERIFY(isAbout(sound.level(), -18) && isAbout(sound.levelAgainst(99), 0));
        sound.takeVolume(50, 12);
        sound.take(loud(12.8, -36));
        QVERIFY(isAbout(sound.levelAgainst(99), -18) && !sound.levelAgainst(70));
        QVERIFY(sound.levelAgainst(99)->error > sound.level()->error);
        sound.beginCommand(13);
        QVERIFY(!sound.level()); // it may have changed
        sound.take(loud(13.5, {}));
        QVERIFY(!sound.level() && !sound.levelAgainst(99));
    }

    void whatIsDoubtedIsNotMeasured()
    {
        HeardSound sound;
        sound.take(told(Hearing::Goes, 10, 1, 5, QStringLiteral("it clips")));
        QVERIFY(!sound.position() && !sound.speed() && sound.doubt() == QLatin1String("it clips"));
        QVERIFY(sound.text().contains(QLatin1String("it clips")));
    }
};

KELVO_TEST(HeardSoundTest)
#include "HeardSoundTest.moc"

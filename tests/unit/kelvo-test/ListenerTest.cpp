// SPDX-License-Identifier: MIT
#include "Listener.h"
#include "KelvoTestCase.h"
#include "MediaClock.h"
#include "SampleClock.h"
#include "TestGroup.h"
#include "TimeCodeWave.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace {
constexpr int rate = MediaClock::sampleRate;
constexpr double closeEnough = 0.0005; // seconds
using Sound = std::vector<float>;
using Heard = std::vector<Hearing>;

size_t samples(double seconds)
{
    return size_t(std::lround(seconds * rate));
}

Sound silence(double seconds)
{
    return Sound(samples(seconds) * MediaClock::channels);
}

/// An item, from a second on.
Sound item(int number, double from, double seconds)
{
    TimeCodeWave wave(number, qint64(samples(from)));
    Sound sound;
    for (const qint16 sample : wave.read(qsizetype(samples(seconds))))
        sound.push_back(float(sample) / 32768);
    return sound;
}

Sound operator+(Sound one, const Sound &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

Sound operator*(float factor, Sound sound)
{
    for (float &sample : sound)
        sample *= factor;
    return sound;
}

/// Both at once, as long as the first.
Sound mixed(Sound one, const Sound &other)
{
    for (size_t i = 0; i < one.size(); ++i)
        one[i] += other.at(i);
    return one;
}

/// Played at another speed, as a tape is.
Sound faster(const Sound &sound, double speed)
{
    const size_t length = size_t(double(sound.size() / MediaClock::channels) / speed) - 1;
    Sound other(length * MediaClock::channels);
    for (size_t i = 0; i < other.size(); ++i) {
        const double place = double(i / MediaClock::channels) * speed;
        const auto before = size_t(place) * MediaClock::channels + i % MediaClock::channels;
        const auto rest = float(place - std::floor(place));
        other[i] = sound[before] * (1 - rest) + sound[before + MediaClock::channels] * rest;
    }
    return other;
}

Sound noise(double seconds, float loudness)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> hiss(-loudness, loudness);
    Sound sound = silence(seconds);
    std::generate(sound.begin(), sound.end(), [&] { return hiss(random); });
    return sound;
}

/// With another sound on one channel.
Sound withTone(Sound sound, double frequency, double amplitude)
{
    for (size_t i = MediaClock::toneChannel; i < sound.size(); i += MediaClock::channels) {
        const double turns = double(i / MediaClock::channels) * frequency / rate;
        sound[i] = float(amplitude * std::sin(2 * std::numbers::pi * turns));
    }
    return sound;
}

Heard heardOf(const Sound &sound)
{
    return Listener(rate).hear(sound);
}

Heard only(Hearing::Kind kind, const Heard &heard)
{
    Heard some;
    std::copy_if(heard.cbegin(), heard.cend(), std::back_inserter(some),
        [kind](const Hearing &hearing) { return hearing.kind == kind; });
    return some;
}

/// For a failure.
QByteArray textOf(const Heard &heard)
{
    QByteArray text("\n");
    for (const Hearing &hearing : heard)
        text += hearing.line();
    return text;
}

bool isNear(double value, double wanted, double deviation = closeEnough)
{
    return std::abs(value - wanted) <= deviation;
}
} // namespace

#define VERIFY_HEARD(condition) QVERIFY2((condition), textOf(heard).constData())

/// What an ear tells of sounds that are known.
class ListenerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void aSoundBeginsGoesOnAndEnds()
    {
        const Heard heard = heardOf(silence(0.333) + item(3, 2.017, 1.5) + silence(0.2));
        VERIFY_HEARD(heard.size() >= 7);
        const Hearing &first = heard.front();
        VERIFY_HEARD(first.kind == Hearing::Begins && first.item == 3 && first.doubt.isEmpty());
        VERIFY_HEARD(isNear(first.at, 0.333) && isNear(*first.position, 2.017));
        const Hearing &last = heard.back();
        VERIFY_HEARD(last.kind == Hearing::Ends && last.item == 3 && last.doubt.isEmpty());
        VERIFY_HEARD(isNear(last.at, 1.833) && isNear(*last.position, 3.517));
        for (const Hearing &hearing : only(Hearing::Goes, heard)) {
            VERIFY_HEARD(isNear(*hearing.position - hearing.at, 2.017 - 0.333, Hearing::PositionError));
            VERIFY_HEARD(isNear(hearing.speed, 1, 0.001));
            VERIFY_HEARD(isNear(*hearing.level, MediaClock::toneLevel, Hearing::LevelError));
        }
    }

    void itIsTheSameInPieces()
    {
        const Sound sound = silence(0.1) + item(3, 0, 1) + silence(0.1);
        Listener listener(rate);
        Heard heard;
        constexpr size_t piece = 2 * 777;
        for (size_t at = 0; at < sound.size(); at += piece) {
            const Heard more
                = listener.hear(std::span(sound).subspan(at, std::min(piece, sound.size() - at)));
            heard.insert(heard.end(), more.begin(), more.end());
        }
        VERIFY_HEARD(isNear(heard.front().at, 0.1) && isNear(*heard.front().position, 0));
        VERIFY_HEARD(isNear(heard.back().at, 1.1) && isNear(*heard.back().position, 1));
    }

    void theGapBetweenItemsIsHeard_data()
    {
        QTest::addColumn<double>("gap");
        for (const double gap : {0.007, 0.02, 0.3})
            QTest::addRow("%g", gap) << gap;
    }

    void theGapBetweenItemsIsHeard()
    {
        QFETCH(double, gap);
        const Heard heard = heardOf(item(1, 9, 1) + silence(gap) + item(2, 0, 1));
        const Heard begins = only(Hearing::Begins, heard);
        const Heard ends = only(Hearing::Ends, heard);
        VERIFY_HEARD(begins.size() == 2 && ends.size() == 1);
        VERIFY_HEARD(begins.at(1).item == 2 && isNear(*begins.at(1).position, 0));
        VERIFY_HEARD(ends.at(0).item == 1 && isNear(*ends.at(0).position, 10));
        VERIFY_HEARD(isNear(begins.at(1).at - ends.at(0).at, gap));
    }

    void whatJumpsWithoutSilenceIsHeard_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<double>("to");
        QTest::newRow("another item") << 2 << 0.0;
        QTest::newRow("forward") << 1 << 20.5;
        QTest::newRow("back") << 1 << 0.25;
        QTest::newRow("20 ms left out") << 1 << 1.033;
        QTest::newRow("20 ms again") << 1 << 0.993;
    }

    void whatJumpsWithoutSilenceIsHeard()
    {
        QFETCH(int, number);
        QFETCH(double, to);
        const Heard heard = heardOf(item(1, 0, 1.013) + item(number, to, 1) + silence(0.1));
        const Heard jumps = only(Hearing::Jumps, heard);
        VERIFY_HEARD(jumps.size() == 1);
        VERIFY_HEARD(jumps.at(0).item == number && isNear(jumps.at(0).at, 1.013, jumps.at(0).within));
        VERIFY_HEARD(jumps.at(0).within < 0.09);
        VERIFY_HEARD(isNear(*jumps.at(0).position - jumps.at(0).at, to - 1.013));
        VERIFY_HEARD(isNear(*heard.back().position, to + 1));
    }

    void theSpeedIsHeard_data()
    {
        QTest::addColumn<double>("speed");
        for (const double speed : {0.5, 0.7, 0.97, 1.001, 1.25, 1.5, 2.0})
            QTest::addRow("%g", speed) << speed;
    }

    void theSpeedIsHeard()
    {
        QFETCH(double, speed);
        const Heard heard = heardOf(silence(0.1) + faster(item(4, 1, 3), speed) + silence(0.1));
        VERIFY_HEARD(
            isNear(*heard.front().position, 1, 0.001) && isNear(heard.front().speed, speed, 0.005 * speed));
        const Heard goes = only(Hearing::Goes, heard);
        VERIFY_HEARD(goes.size() >= 4);
        for (const Hearing &hearing : goes) {
            VERIFY_HEARD(hearing.doubt.isEmpty() && isNear(hearing.speed, speed, 0.001 * speed));
            VERIFY_HEARD(isNear(*hearing.position, 1 + (hearing.at - 0.1) * speed, 0.001));
        }
    }

    void levelsAreHeard_data()
    {
        QTest::addColumn<double>("decibels");
        for (const double decibels : {6.0, -3.0, -20.0, -50.0})
            QTest::addRow("%g dB", decibels) << decibels;
    }

    void levelsAreHeard()
    {
        QFETCH(double, decibels);
        const Heard heard = heardOf(
            item(4, 0, 1) + float(MediaClock::amplitudeOf(decibels)) * item(4, 1, 1) + silence(0.1));
        const Heard goes = only(Hearing::Goes, heard);
        VERIFY_HEARD(only(Hearing::Begins, heard).size() == 1 && only(Hearing::Ends, heard).size() == 1);
        VERIFY_HEARD(isNear(*goes.front().level, MediaClock::toneLevel, Hearing::LevelError));
        VERIFY_HEARD(isNear(*goes.back().level, MediaClock::toneLevel + decibels, Hearing::LevelError));
        VERIFY_HEARD(goes.back().position.has_value());
    }

    void silenceIsNoSound() { QVERIFY(heardOf(silence(1)).empty() && heardOf({}).empty()); }

    void whatHasNoCodeIsNotRead_data()
    {
        QTest::addColumn<Sound>("sound");
        QTest::newRow("noise") << noise(1, 0.3F);
        QTest::newRow("a tone") << withTone(silence(1), 440, 0.5);
        Sound backwards = item(3, 0, 1);
        std::reverse(backwards.begin(), backwards.end());
        QTest::newRow("another code") << backwards;
        QTest::newRow("two codes") << mixed(item(3, 0, 1), item(4, 7.007, 1));
        QTest::newRow("only a bit of a code") << item(3, 0, 0.07);
        QTest::newRow("too fast") << faster(item(3, 0, 4), 3);
    }

    void whatHasNoCodeIsNotRead()
    {
        QFETCH(Sound, sound);
        const Heard heard = heardOf(silence(0.1) + sound + silence(0.1));
        VERIFY_HEARD(heard.size() >= 2);
        VERIFY_HEARD(heard.front().kind == Hearing::Begins && isNear(heard.front().at, 0.1, 0.002));
        VERIFY_HEARD(heard.back().kind == Hearing::Ends);
        for (const Hearing &hearing : heard) {
            VERIFY_HEARD(hearing.item == 0 && !hearing.position && !hearing.level);
            VERIFY_HEARD(!hearing.doubt.isEmpty() || hearing.kind == Hearing::Ends);
        }
    }

    void whatCanBeReadAndNotMeasuredIsDoubted_data()
    {
        QTest::addColumn<Sound>("sound");
        QTest::addColumn<QString>("doubt");
        Sound tooLoud = 6.0F * item(3, 0, 1);
        for (float &sample : tooLoud)
            sample = std::clamp(sample, -1.0F, 1.0F);
        QTest::newRow("clipping") << tooLoud << QStringLiteral("the sound clips");
        QTest::newRow("noise over it")
            << mixed(item(3, 0, 1), noise(1, 0.05F)) << QStringLiteral("another sound over it");
        QTest::newRow("a weaker code over it")
            << mixed(item(3, 0, 1), 0.3F * item(4, 7.007, 1)) << QStringLiteral("another code");
        QTest::newRow("pitch") << withTone(item(3, 0, 1), 1100, 0.1)
                               << QStringLiteral("1100 Hz instead of 1000");
        QTest::newRow("no tone") << withTone(item(3, 0, 1), 1000, 0) << QStringLiteral("its tone is missing");
    }

    void whatCanBeReadAndNotMeasuredIsDoubted()
    {
        QFETCH(Sound, sound);
        QFETCH(QString, doubt);
        const Heard heard = heardOf(silence(0.1) + sound + silence(0.1));
        VERIFY_HEARD(heard.front().kind == Hearing::Begins);
        for (const Hearing &hearing : heard) {
            VERIFY_HEARD(!hearing.level);
            VERIFY_HEARD(hearing.doubt.contains(doubt) || hearing.kind == Hearing::Ends);
        }
    }

    void soundThatCannotBeReadForAWhileIsSaid()
    {
        const Heard heard = heardOf(item(3, 0, 1) + noise(0.5, 0.3F) + item(3, 1.5, 1) + silence(0.1));
        const Heard goes = only(Hearing::Goes, heard);
        VERIFY_HEARD(std::any_of(goes.begin(), goes.end(),
            [](const Hearing &one) { return one.item == 0 && !one.position && !one.doubt.isEmpty(); }));
        const Heard jumps = only(Hearing::Jumps, heard);
        VERIFY_HEARD(jumps.size() == 1 && isNear(*jumps.at(0).position, jumps.at(0).at));
        VERIFY_HEARD(heard.back().doubt.isEmpty() && isNear(*heard.back().position, 2.5));
    }

    /// Shorter than that a wave is silent by itself.
    void aDropOutIsASilence()
    {
        const Heard heard = heardOf(item(3, 0, 1) + silence(0.02) + item(3, 1.02, 1) + silence(0.1));
        VERIFY_HEARD(only(Hearing::Ends, heard).size() == 2 && only(Hearing::Begins, heard).size() == 2);
        VERIFY_HEARD(isNear(*only(Hearing::Begins, heard).at(1).position, 1.02));
        const Heard tiny = heardOf(item(3, 0, 1) + silence(0.002) + item(3, 1.002, 1) + silence(0.1));
        QVERIFY2(only(Hearing::Ends, tiny).size() == 1 && only(Hearing::Jumps, tiny).empty(), textOf(tiny));
    }

    void whatTheDeviceLosesIsNoJump()
    {
        Listener listener(rate);
        Heard heard = listener.hear(item(3, 0, 1));
        for (const Heard &more : {listener.skip(0.5), listener.hear(item(3, 1.5, 1) + silence(0.1))})
            heard.insert(heard.end(), more.begin(), more.end());
        VERIFY_HEARD(only(Hearing::Jumps, heard).empty() && only(Hearing::Ends, heard).size() == 1);
        const Heard fails = only(Hearing::Fails, heard);
        VERIFY_HEARD(
            fails.size() == 1 && isNear(fails.at(0).at, 1) && fails.at(0).doubt.contains("500.0 ms"));
        VERIFY_HEARD(isNear(only(Hearing::Begins, heard).at(1).at, 1.5));
        VERIFY_HEARD(isNear(heard.back().at, 2.5) && isNear(*heard.back().position, 2.5));
    }

    void samplesThatComeLateAreTimedByThoseThatDoNot()
    {
        SampleClock clock(1000);
        for (int piece = 1; piece <= 30; ++piece)
            clock.note(piece * 10LL, 100 + piece * 0.01 + (piece == 4 ? 0.002 : 0.05 + piece * 0.001));
        QVERIFY(isNear(clock.timeOf(0), 100.002, 1e-9) && isNear(clock.timeOf(300), 100.302, 1e-9));
        // What is long ago counts no more: clocks drift.
        for (int piece = 31; piece <= 700; ++piece)
            clock.note(piece * 10LL, 100 + piece * 0.01 + 0.07);
        QVERIFY(isNear(clock.timeOf(0), 100.07, 1e-9));
    }

    void whatIsHeardBecomesALineAndComesBack()
    {
        Hearing hearing{Hearing::Jumps, 1.5, 0.02, 3, 7.25, 2, -18.5, QStringLiteral("why \"not\"")};
        const auto same = Hearing::ofLine(hearing.line());
        QVERIFY(same && same->line() == hearing.line());
        QCOMPARE(same->kind, Hearing::Jumps);
        QCOMPARE(*same->position, 7.25);
        QCOMPARE(*same->level, -18.5);
        hearing.position.reset();
        hearing.level.reset();
        QVERIFY(!Hearing::ofLine(hearing.line())->position && !Hearing::ofLine(hearing.line())->level);
        for (const char *line :
            {"", "[]", "{}", "{\"kind\":\"sings\",\"at\":1}", "{\"kind\":\"goes\"}", "no"})
            QVERIFY(!Hearing::ofLine(line));
    }
};

KELVO_TEST(ListenerTest)
#include "ListenerTest.moc"

// SPDX-License-Identifier: MIT
#include "MediaClock.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"
#include "TimeCodeReader.h"
#include "TimeCodeWave.h"

#include <QTest>

#include <cmath>
#include <random>

namespace {
constexpr double closeEnough = 0.0001; // seconds

/// The code of an item, from a second on.
std::vector<float> codeOf(int item, double from, double seconds)
{
    TimeCodeWave wave(item, std::llround(from * MediaClock::sampleRate));
    const std::vector<qint16> both = wave.read(std::llround(seconds * MediaClock::sampleRate));
    std::vector<float> code;
    for (size_t i = MediaClock::codeChannel; i < both.size(); i += MediaClock::channels)
        code.push_back(float(both[i]) / 32768);
    return code;
}

std::vector<TimeCodeReader::Frame> framesIn(
    const std::vector<float> &sound, int rate = MediaClock::sampleRate)
{
    return TimeCodeReader(rate).read(sound);
}

/// At another rate, every sample the nearest of the other.
std::vector<float> resampled(const std::vector<float> &sound, int rate)
{
    std::vector<float> other(sound.size() * size_t(rate) / MediaClock::sampleRate);
    for (size_t i = 0; i < other.size(); ++i)
        other[i] = sound[i * MediaClock::sampleRate / size_t(rate)];
    return other;
}

std::vector<float> operator+(std::vector<float> one, const std::vector<float> &other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

/// Everything that was read is of this item and where it belongs, when the sound began at this second of it.
void check(
    const std::vector<TimeCodeReader::Frame> &frames, int item, double from, double deviation = closeEnough)
{
    for (const TimeCodeReader::Frame &frame : frames) {
        QCOMPARE(frame.moment.item, item);
        QVERIFY2(std::abs(from + frame.at - frame.moment.seconds()) < deviation,
            qPrintable(QStringLiteral("%1 at %2").arg(frame.moment.seconds()).arg(frame.at)));
    }
}
} // namespace

/// The clock of test media, written and read.
class MediaClockTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void eachItemHasItsHour()
    {
        for (int item = 1; item <= MediaClock::mostItems; ++item) {
            const MediaClock::Moment moment{item, 7};
            const MediaClock::Code code = MediaClock::codeOf(moment);
            QCOMPARE(code.frameOfDay, item * MediaClock::framesPerHour + 7);
            QCOMPARE(MediaClock::momentOf(code), moment);
            QCOMPARE(MediaClock::momentOfMark(MediaClock::markOf(moment)), moment);
        }
    }

    void longItemsRunIntoOtherHours()
    {
        const MediaClock::Moment moment{22, 5 * MediaClock::framesPerHour + 1};
        QCOMPARE(MediaClock::codeOf(moment).frameOfDay, 3 * MediaClock::framesPerHour + 1);
        QCOMPARE(MediaClock::momentOf(MediaClock::codeOf(moment)), moment);
    }

    void whatOthersMakeIsNone()
    {
        MediaClock::Code code = MediaClock::codeOf({3, 0});
        code.userBits ^= 0x100;
        QCOMPARE(MediaClock::momentOf(code).item, 0);
        code.userBits = MediaClock::codeOf({3, 0}).userBits & ~0xffU;
        QCOMPARE(MediaClock::momentOf(code).item, 0);
        QCOMPARE(MediaClock::momentOf({0, 0}).item, 0);
        for (const quint64 mark : {quint64(0), quint64(24) << 24, ~quint64(0)})
            QCOMPARE(MediaClock::momentOfMark(mark).item, 0);
    }

    void theCodeIsReadAtOnceAndInPieces()
    {
        const std::vector<float> code = codeOf(3, 0, 4);
        const std::vector<TimeCodeReader::Frame> frames = framesIn(code);
        QVERIFY(frames.size() >= 98);
        check(frames, 3, 0);
        TimeCodeReader reader(MediaClock::sampleRate);
        size_t read = 0;
        constexpr size_t piece = 777;
        for (size_t at = 0; at < code.size(); at += piece)
            read += reader.read(std::span(code).subspan(at, std::min(piece, code.size() - at))).size();
        QCOMPARE(read, frames.size());
    }

    void whatIsLeftOutOfTheBeginningIsMissing() { check(framesIn(codeOf(5, 0.513, 2)), 5, 0.513); }

    /// As the first hundredths of a second of some MP3 files sound.
    void aHissBeforeTheCodeDoesNotDeafen()
    {
        std::vector<float> hiss(MediaClock::sampleRate / 50);
        for (size_t i = 0; i < hiss.size(); ++i)
            hiss[i] = 0.05F * float(std::sin(2 * M_PI * 16'000 * double(i) / MediaClock::sampleRate));
        const std::vector<TimeCodeReader::Frame> frames = framesIn(hiss + codeOf(1, 0, 2));
        QVERIFY(frames.size() >= 40);
        check(frames, 1, -0.02);
    }

    void theCodeRunsOnAfterAnHour()
    {
        const double from = 3599;
        const std::vector<TimeCodeReader::Frame> frames = framesIn(codeOf(2, from, 2));
        QVERIFY(frames.size() > 45);
        check(frames, 2, from);
        QVERIFY(frames.back().moment.seconds() > 3600);
    }

    void theCodeIsReadOtherwisePlayed_data()
    {
        QTest::addColumn<int>("rate");
        QTest::addColumn<float>("loudness");
        QTest::addColumn<float>("noise");
        QTest::newRow("44100 samples") << 44'100 << 1.0F << 0.0F;
        QTest::newRow("22050 samples") << 22'050 << 1.0F << 0.0F;
        QTest::newRow("96000 samples") << 96'000 << 1.0F << 0.0F;
        QTest::newRow("quiet") << 48'000 << 0.03F << 0.0F;
        QTest::newRow("the other way round") << 48'000 << -1.0F << 0.0F;
        QTest::newRow("noise") << 48'000 << 1.0F << 0.05F;
    }

    void theCodeIsReadOtherwisePlayed()
    {
        QFETCH(int, rate);
        QFETCH(float, loudness);
        QFETCH(float, noise);
        std::vector<float> sound = resampled(codeOf(7, 0, 4), rate);
        std::mt19937 random(1);
        std::uniform_real_distribution<float> hiss(-noise, noise);
        for (float &sample : sound)
            sample = loudness * sample + (noise > 0 ? hiss(random) : 0);
        const std::vector<TimeCodeReader::Frame> frames = framesIn(sound, rate);
        QVERIFY2(frames.size() >= 96, qPrintable(QString::number(frames.size())));
        check(frames, 7, 0, 0.0002);
    }

    /// One that stands alone may be noise.
    void aFrameNeedsANeighbour()
    {
        QVERIFY(framesIn(codeOf(3, 0, 0.045)).empty());
        const std::vector<float> both = codeOf(3, 0, 0.045) + codeOf(4, 0, 0.045);
        QVERIFY(framesIn(both + codeOf(5, 0, 0.045)).empty());
    }

    void aSilentChannelHasNoCode()
    {
        QVERIFY(framesIn(std::vector<float>(MediaClock::sampleRate)).empty());
        QVERIFY(framesIn({}).empty());
    }

    void oneItemFollowsAnother()
    {
        const std::vector<TimeCodeReader::Frame> frames = framesIn(codeOf(3, 0, 1) + codeOf(4, 0, 1));
        QCOMPARE(frames.front().moment.item, 3);
        QCOMPARE(frames.back().moment.item, 4);
        for (const TimeCodeReader::Frame &frame : frames) {
            const double due = frame.moment.seconds() + (frame.moment.item == 4 ? 1 : 0);
            QVERIFY(std::abs(frame.at - due) < closeEnough);
        }
    }

    void theToneHasItsLevel()
    {
        TimeCodeWave wave(1);
        const std::vector<qint16> both = wave.read(MediaClock::sampleRate);
        double sum = 0;
        int turns = 0;
        for (size_t i = MediaClock::toneChannel; i < both.size(); i += MediaClock::channels) {
            sum += std::pow(both[i] / 32768.0, 2);
            turns
                += i > MediaClock::toneChannel && both[i - MediaClock::channels] < 0 && both[i] >= 0 ? 1 : 0;
        }
        QVERIFY(std::abs(10 * std::log10(2 * sum / MediaClock::sampleRate) - MediaClock::toneLevel) < 0.01);
        QVERIFY(std::abs(turns - MediaClock::toneFrequency) <= 1);
    }
};

KELVO_TEST(MediaClockTest)
#include "MediaClockTest.moc"

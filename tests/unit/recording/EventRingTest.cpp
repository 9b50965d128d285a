// SPDX-License-Identifier: MIT
// What is kept of lines without end.
#include "EventRing.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTemporaryFile>
#include <QTest>

#include <thread>

namespace {
class EventRingTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void keepsTheLastLines();
    void keepsWholeLinesWithinItsBytes();
    void lineThatIsTooLong();
    void readerTakesPieces();
    void readerIsToldWhatItMissed();
    void whatIsNotReadIsKeptBeyondTheNumber();
    void writesAfterACrash();
    void severalThreads();
};

std::string line(int number)
{
    return std::to_string(number) + '\n';
}

void EventRingTest::keepsTheLastLines()
{
    EventRing ring({3, 1000});
    QCOMPARE(ring.lines(), std::string());
    for (int i = 0; i < 10; ++i)
        ring.append(line(i));
    QCOMPARE(ring.lines(), std::string("7\n8\n9\n"));
}

void EventRingTest::keepsWholeLinesWithinItsBytes()
{
    // Of every length in every place: also over the edge.
    EventRing ring({1000, 64});
    std::string expected;
    for (int i = 0; i < 2000; ++i) {
        const std::string text = std::string(size_t(i % 13), 'x') + line(i);
        ring.append(text);
        expected += text;
        while (expected.size() > 64)
            expected.erase(0, expected.find('\n') + 1);
        QCOMPARE(ring.lines(), expected);
    }
}

void EventRingTest::lineThatIsTooLong()
{
    EventRing ring({10, 64});
    ring.append("before\n");
    ring.append(std::string(64, 'x') + '\n');
    ring.append("after\n");
    QCOMPARE(ring.lines(), std::string("after\n"));
    const EventRing::Piece piece = ring.linesBehind({}, 1000);
    QCOMPARE(piece.lost, quint64(2));
    QCOMPARE(piece.lines, std::string("after\n"));
}

void EventRingTest::readerTakesPieces()
{
    EventRing ring({1000, 64});
    EventRing::Place place;
    std::string read;
    std::string expected;
    for (int i = 0; i < 500; ++i) {
        ring.append(line(i));
        expected += line(i);
        const EventRing::Piece piece = ring.linesBehind(place, 3);
        QCOMPARE(piece.lost, quint64(0));
        QVERIFY(piece.lines.ends_with('\n'));
        read += piece.lines;
        place = piece.end;
    }
    QCOMPARE(read, expected);
    QCOMPARE(place.line, quint64(500));
    QVERIFY(ring.linesBehind(place, 3).lines.empty());
}

void EventRingTest::readerIsToldWhatItMissed()
{
    EventRing ring({3, 1000});
    ring.append(line(0));
    const EventRing::Place place = ring.linesBehind({}, 100).end;
    for (int i = 1; i < 10; ++i)
        ring.append(line(i));
    const EventRing::Piece piece = ring.linesBehind(place, 100);
    QCOMPARE(piece.lost, quint64(6));
    QCOMPARE(piece.lines, std::string("7\n8\n9\n"));
    QCOMPARE(ring.linesBehind(piece.end, 100).lost, quint64(0));
}

void EventRingTest::whatIsNotReadIsKeptBeyondTheNumber()
{
    EventRing ring({3, 12});
    ring.keepFrom(0);
    for (int i = 0; i < 6; ++i)
        ring.append(line(i));
    QCOMPARE(ring.lines(), std::string("0\n1\n2\n3\n4\n5\n"));
    // Not beyond the bytes.
    ring.append(line(6));
    QCOMPARE(ring.lines(), std::string("1\n2\n3\n4\n5\n6\n"));
    ring.keepFrom(8);
    ring.append(line(7));
    QCOMPARE(ring.lines(), std::string("4\n5\n6\n7\n"));
    ring.keepNothing();
    ring.append(line(8));
    QCOMPARE(ring.lines(), std::string("6\n7\n8\n"));
}

void EventRingTest::writesAfterACrash()
{
    EventRing ring({1000, 64});
    for (int i = 0; i < 100; ++i)
        ring.append(line(i));
    QTemporaryFile file;
    QVERIFY(file.open());
    const auto writtenFrom = [&](quint64 byte) {
        file.resize(0);
        file.seek(0);
        ring.writeAfterCrash(file.handle(), byte);
        file.seek(0);
        return file.readAll().toStdString();
    };
    QCOMPARE(writtenFrom(0), ring.lines());
    // What is in a file already is not written once more.
    QCOMPARE(writtenFrom(ring.endByte() - 3), std::string("99\n"));
    QCOMPARE(writtenFrom(ring.endByte()), std::string());
}

void EventRingTest::severalThreads()
{
    constexpr int each = 5000;
    EventRing ring({1'000'000, 4096});
    const auto append = [&ring](char letter) {
        for (int i = 0; i < each; ++i)
            ring.append(std::string(size_t(i % 50), letter) + '\n');
    };
    std::jthread first(append, 'a');
    std::jthread second(append, 'b');
    quint64 seen = 0;
    EventRing::Place place;
    while (place.line < 2 * each) {
        const EventRing::Piece piece = ring.linesBehind(place, 500);
        seen += piece.end.line - place.line - piece.lost;
        QCOMPARE(quint64(std::count(piece.lines.begin(), piece.lines.end(), '\n')),
            piece.end.line - place.line - piece.lost);
        QVERIFY(piece.lines.find("ab") == std::string::npos && piece.lines.find("ba") == std::string::npos);
        place = piece.end;
    }
    QVERIFY(seen > 0);
}
} // namespace

KELVO_TEST(EventRingTest)
#include "EventRingTest.moc"

// SPDX-License-Identifier: MIT
#include "FrameMarkReader.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <cmath>

namespace {
constexpr int screenWidth = 900;
constexpr int screenHeight = 500;

/// A part of a screen, all of one grey.
class Canvas
{
public:
    explicit Canvas(uchar grey)
        : m_pixels(size_t(screenWidth) * screenHeight, grey)
    {
    }

    /// The squares of a mark, as "simplevideomark" paints them and a window that is so much larger shows them.
    void paint(double left, int top, double scale, quint64 mark, uchar dark = 16, uchar bright = 235)
    {
        const double square = MediaClock::markSize * scale;
        for (int number = 0; number < MediaClock::markGuards + MediaClock::markBits; ++number) {
            const int bit = MediaClock::markGuards + MediaClock::markBits - 1 - number;
            const bool isBright = number < MediaClock::markGuards ? number % 2 == 1 : (mark >> bit & 1U) != 0;
            fill(left + number * square, top, square, isBright ? bright : dark);
        }
    }
    void fill(double left, int top, double square, uchar grey)
    {
        for (int y = top; y < top + int(square); ++y) {
            for (int x = int(std::lround(left)); x < int(std::lround(left + square)); ++x)
                m_pixels.at(size_t(y) * screenWidth + size_t(x)) = grey;
        }
    }
    std::vector<FrameMark> marks() const
    {
        return FrameMarkReader::find({m_pixels, screenWidth, screenHeight});
    }

private:
    std::vector<uchar> m_pixels;
};
} // namespace

/// Marks in pixels that are known.
class FrameMarkReaderTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void everyMarkIsReadAtEverySize_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<int>("grey");
        for (const double scale : {0.27, 0.5, 0.755, 1.0, 1.33, 1.5}) {
            for (const int grey : {0, 90, 255})
                QTest::addRow("%g on %d", scale, grey) << scale << grey;
        }
    }
    void everyMarkIsReadAtEverySize()
    {
        QFETCH(double, scale);
        QFETCH(int, grey);
        for (const MediaClock::Moment moment :
            {MediaClock::Moment{1, 0}, {23, 16'777'215}, {7, 137}, {2, 2'097'152}, {16, 0x555555}}) {
            Canvas canvas{uchar(grey)};
            canvas.paint(11.4, 77, scale, MediaClock::markOf(moment));
            const std::vector<FrameMark> marks = canvas.marks();
            QCOMPARE(marks.size(), size_t(1));
            QCOMPARE(marks.front().moment.item, moment.item);
            QCOMPARE(marks.front().moment.frame, moment.frame);
            QVERIFY(std::abs(marks.front().left - 11.4) < 3);
            QVERIFY(std::abs(marks.front().top - 77) <= 2);
        }
    }

    void aMarkAtTheEdgeIsRead()
    {
        Canvas canvas(200);
        canvas.paint(0, screenHeight - 16, 1, MediaClock::markOf({3, 75}));
        QCOMPARE(canvas.marks().size(), size_t(1));
        QVERIFY((canvas.marks().front().moment == MediaClock::Moment{3, 75}));
    }

    void twoAreTwo()
    {
        Canvas canvas(0);
        canvas.paint(0, 40, 0.5, MediaClock::markOf({3, 75}));
        canvas.paint(400, 40, 0.5, MediaClock::markOf({4, 75}));
        canvas.paint(0, 300, 0.5, MediaClock::markOf({5, 75}));
        QCOMPARE(canvas.marks().size(), size_t(3));
    }

    /// A window around the picture has them.
    void textsAndSymbolsAreNoMarks()
    {
        constexpr quint64 unreadable = 0x1f000000; // no item has this number
        for (const double scale : {0.3, 0.45, 1.0}) {
            Canvas canvas(0);
            canvas.paint(300, 40, scale, unreadable);
            QCOMPARE(canvas.marks().size(), size_t(1));
            QCOMPARE(canvas.marks().front().moment.item, 0);
            canvas.paint(0, 300, 1, MediaClock::markOf({3, 75}));
            // One as large may be a picture of which only a part has been drawn.
            QCOMPARE(canvas.marks().size(), size_t(scale < 0.5 ? 1 : 2));
            QCOMPARE(canvas.marks().back().moment.item, 3);
        }
    }

    void whatIsNoMarkIsNone()
    {
        Canvas canvas(0);
        QVERIFY(canvas.marks().empty());
        // Stripes, as in a window's frame, and a mark that none of our media has.
        for (int x = 0; x < 40; x += 2)
            canvas.fill(x * 16, 100, 16, 255);
        canvas.paint(0, 200, 1, quint64(0xff) << 24);
        QVERIFY(canvas.marks().empty());
        QVERIFY(FrameMarkReader::find({{}, 0, 0}).empty());
    }

    void aMarkThatIsHalfCoveredOrHalfReplacedIsNotRead()
    {
        Canvas covered(0);
        covered.paint(0, 100, 1, MediaClock::markOf({3, 75}));
        for (int square = 20; square < 36; ++square)
            covered.fill(square * 16, 100, 16, 128);
        QCOMPARE(covered.marks().size(), size_t(1));
        QCOMPARE(covered.marks().front().moment.item, 0);
        // The upper half is of one picture, the lower half of another.
        Canvas torn(0);
        torn.paint(0, 100, 1, MediaClock::markOf({3, 75}));
        torn.paint(0, 108, 1, MediaClock::markOf({3, 76}));
        QCOMPARE(torn.marks().size(), size_t(1));
        QCOMPARE(torn.marks().front().moment.item, 0);
    }
};

KELVO_TEST(FrameMarkReaderTest)
#include "FrameMarkReaderTest.moc"

// SPDX-License-Identifier: MIT
#include "Eye.h"
#include "KelvoTestCase.h"
#include "MarkPainter.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

namespace {
constexpr int patience = 20'000; // milliseconds

/// The last thing that was told.
Sighting last(const QSignalSpy &seen)
{
    return seen.isEmpty() ? Sighting() : seen.constLast().at(0).value<Sighting>();
}
} // namespace

/// What the eye's program tells of windows whose content is known.
class EyeTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(m_server.isRunning()); }

    void aWindowIsSeenWhereverItIs()
    {
        const uint window = open();
        paint(window, {3, 75}, 12);
        Eye eye;
        QSignalSpy seen(&eye, &Eye::seen);
        eye.look(QString::number(window));
        QTRY_VERIFY_WITH_TIMEOUT(eye.isReady() && last(seen).kind == Sighting::Rests, patience);
        QVERIFY((last(seen).moment == MediaClock::Moment{3, 75}));
        m_server.move(window, {20, 300});
        paint(window, {3, 400}, 12);
        QTRY_COMPARE_WITH_TIMEOUT(last(seen).moment.frame, 400, patience);
        // Of a picture that is shown smaller.
        m_server.repaint(window);
        paint(window, {4, 10}, 7);
        QTRY_VERIFY_WITH_TIMEOUT((last(seen).moment == MediaClock::Moment{4, 10}), patience);
        m_server.destroy(window);
    }

    void whatCannotBeMeasuredIsSaid()
    {
        const uint window = open();
        Eye eye;
        QSignalSpy seen(&eye, &Eye::seen);
        const auto doubt = [&seen] {
            return last(seen).moment.item == 0 ? last(seen).doubt : QString();
        };
        eye.look(QStringLiteral("0x%1").arg(window, 0, 16));
        QTRY_COMPARE_WITH_TIMEOUT(doubt(), QStringLiteral("no picture with a mark is there"), patience);
        paint(window, {3, 75}, 12);
        QTRY_COMPARE_WITH_TIMEOUT(last(seen).moment.item, 3, patience);
        // By a window that shows something else, which is not what is looked at.
        const uint other = open();
        paint(other, {5, 75}, 12);
        QTRY_COMPARE_WITH_TIMEOUT(doubt(), QStringLiteral("the window is covered"), patience);
        m_server.destroy(other);
        paint(window, {3, 75}, 12);
        QTRY_COMPARE_WITH_TIMEOUT(last(seen).moment.item, 3, patience);
        m_server.move(window, {2000, 2000});
        QTRY_COMPARE_WITH_TIMEOUT(doubt(), QStringLiteral("it is outside of the screen"), patience);
        m_server.setShown(window, false);
        QTRY_COMPARE_WITH_TIMEOUT(doubt(), QStringLiteral("the window is not shown"), patience);
        m_server.destroy(window);
        QTRY_COMPARE_WITH_TIMEOUT(doubt(), QStringLiteral("the window is not there"), patience);
    }

    void ofTwoPicturesInOnePlaceNoneIsChosen()
    {
        const uint first = open();
        paint(first, {3, 75}, 12);
        const uint second = open();
        m_server.move(second, {30, 200});
        Eye eye;
        QSignalSpy seen(&eye, &Eye::seen);
        eye.look(QStringLiteral("0,0,640,480"));
        // Where one is looked for while another is seen.
        m_server.repaint(first);
        paint(first, {3, 75}, 12);
        QTRY_COMPARE_WITH_TIMEOUT(last(seen).moment.item, 3, patience);
        paint(second, {5, 75}, 12);
        QTRY_COMPARE_WITH_TIMEOUT(
            last(seen).doubt, QStringLiteral("2 pictures with a mark are there"), patience);
        m_server.setShown(first, false);
        QTRY_COMPARE_WITH_TIMEOUT(last(seen).moment.item, 5, patience);
        m_server.destroy(first);
        m_server.destroy(second);
    }

    void aWindowIsMadeAndGoesWithTheEye()
    {
        const int before = m_server.childrenOf(0);
        auto eye = std::make_unique<Eye>();
        eye->look(QStringLiteral("auto"));
        QTRY_VERIFY_WITH_TIMEOUT(eye->isReady(), patience);
        QVERIFY(eye->window() > 0);
        paint(eye->window(), {6, 1}, 12);
        QSignalSpy seen(eye.get(), &Eye::seen);
        QTRY_COMPARE_WITH_TIMEOUT(last(seen).moment.item, 6, patience);
        eye.reset();
        QTRY_COMPARE_WITH_TIMEOUT(m_server.childrenOf(0), before, patience);
    }

private:
    uint open() { return m_server.addWindow({30, 40, 500, 120}, Qt::black); }
    void paint(uint window, const MediaClock::Moment &moment, int square)
    {
        paintMark(&m_server, window, moment, square);
    }

    XServer m_server;
};

KELVO_TEST(EyeTest)
#include "EyeTest.moc"

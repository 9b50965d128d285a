// SPDX-License-Identifier: MIT
#include "GstVideoTestCase.h"

#include <QLibrary>

using R = KelvoRenderer;

namespace {
/// As the toolkit of the console does: a drawing request for a window that is gone ends no program.
void ignoreErrorsOfX()
{
    using Handler = int (*)(void *, void *);
    const auto set = reinterpret_cast<Handler (*)(Handler)>(QLibrary("X11", 6).resolve("XSetErrorHandler"));
    QVERIFY(set);
    set([](void *, void *) { return 0; });
}
} // namespace

void GstVideoTestCase::openServer(XServer::Kind kind)
{
    m_server = std::make_unique<XServer>(kind);
    QVERIFY(m_server->isRunning());
    ignoreErrorsOfX();
}

void GstVideoTestCase::init()
{
    m_page = m_server->addWindow(Page, Green);
    GstTestCase::init();
    showInPage();
}

void GstVideoTestCase::cleanup()
{
    GstTestCase::cleanup();
    // Only then: without its page the engine would put a window out of sight, and it may not outlive the server.
    QTRY_VERIFY_WITH_TIMEOUT(!engineRuns(), 15000);
    m_server->destroy(m_page);
    QTRY_COMPARE(m_server->childrenOf(0), 0);
}

void GstVideoTestCase::showInPage()
{
    set(R::PropertyXid, m_page);
    set(R::PropertyAutopaint, false);
    place(QStringLiteral("20,30,160,120"));
}

void GstVideoTestCase::play(const QString &file)
{
    renderer()->playUri(media(file));
    TRY_STATE(Playing);
}

void GstVideoTestCase::pause()
{
    renderer()->pause();
    TRY_STATE(Paused);
}

bool GstVideoTestCase::shows(const QRect &place, bool (*color)(QColor))
{
    const int right = place.x() + place.width();
    const int bottom = place.y() + place.height();
    const QPoint centre = place.center();
    const QImage screen = m_server->picture();
    const auto at = [&screen](int x, int y) {
        return screen.pixelColor(Page.x() + x, Page.y() + y);
    };
    return color(at(place.x() + 2, place.y() + 2)) && color(at(right - 3, bottom - 3))
        && color(at(centre.x(), centre.y())) && at(place.x() - 1, centre.y()) == Green
        && at(right, centre.y()) == Green && at(centre.x(), place.y() - 1) == Green
        && at(centre.x(), bottom) == Green;
}

bool GstVideoTestCase::comesToShow(const QRect &place, bool (*color)(QColor))
{
    int looks = 0; // in a row
    return QTest::qWaitFor([&] {
        looks = shows(place, color) ? looks + 1 : 0;
        return looks == 5;
    });
}

void GstVideoTestCase::keepsTheShapeOfThePicture()
{
    place(QStringLiteral("20,30,300,120"));
    play();
    QTRY_VERIFY(isRed(at(170, 90)));
    QCOMPARE(at(21, 90), Black);
    QCOMPARE(at(318, 90), Black);
    QVERIFY(isRed(at(170, 31)));
}

void GstVideoTestCase::addPlayingAndPaused()
{
    QTest::addColumn<bool>("paused");
    QTest::newRow("playing") << false;
    QTest::newRow("paused") << true;
}
void GstVideoTestCase::followsItsPlace()
{
    QFETCH(bool, paused);
    play();
    if (paused)
        pause();
    place(QStringLiteral("100,60,160,120"));
    QVERIFY(comesToShow(QRect(100, 60, 160, 120)));
    place(QStringLiteral("10,10,320,240"));
    QVERIFY(comesToShow(QRect(10, 10, 320, 240)));
    place(QStringLiteral("40,40,80,60"));
    QVERIFY(comesToShow(QRect(40, 40, 80, 60)));
    QCOMPARE(heard().state(), paused ? R::Paused : R::Playing);
    m_server->move(m_page, QPoint(0, 0));
    QTRY_VERIFY(isRed(m_server->pixel(80, 70)));
    QCOMPARE(heard().errors(), QList<int>{});
}

void GstVideoTestCase::survivesTheEndOfTheWindow()
{
    QFETCH(bool, paused);
    play();
    if (paused)
        pause();
    QTRY_VERIFY(isRed(at(100, 90)));
    m_server->destroy(m_page);
    m_page = m_server->addWindow(Page, Green);
    const int position = heard().askPosition();
    if (!paused)
        QTRY_VERIFY(heard().askPosition() > position);
    QCOMPARE(heard().errors(), QList<int>{});
    set(R::PropertyXid, m_page);
    QVERIFY(comesToShow(QRect(20, 30, 160, 120)));
    QCOMPARE(heard().state(), paused ? R::Paused : R::Playing);
}

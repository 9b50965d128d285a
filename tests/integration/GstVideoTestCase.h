// SPDX-License-Identifier: MIT
#pragma once

#include "GstTestCase.h"
#include "XServer.h"

#include <QColor>
#include <QRect>
#include <QTest>

#include <memory>

/// Base of the tests of what is seen of a video, in a window that stands for the console's page: each test function gets
/// one. Places are relative to that window. What holds on every display is tested here, for each of them.
class GstVideoTestCase : public GstTestCase
{
    Q_OBJECT
protected:
    static constexpr QRect Page{50, 40, 400, 300};
    static inline const QColor Green{0, 160, 0}; ///< of the page
    static inline const QColor Black{0, 0, 0};

    /// For all test functions.
    void openServer(XServer::Kind kind);

    QColor at(int x, int y) { return m_server->pixel(Page.x() + x, Page.y() + y); }
    void showInPage();
    void set(QLatin1String name, const QVariant &value) { renderer()->setKelvoProperty(name, value); }
    void place(const QString &rectangle) { set(KelvoRenderer::PropertyRenderRectangle, rectangle); }
    void play(const QString &file = QStringLiteral("red.mp4"));
    void pause();
    /// Whether the video, and nothing but it, fills that part of the page.
    bool shows(const QRect &place, bool (*color)(QColor) = isRed);
    /// Whether it comes to do that, and stays so: one that was made for the size before may be on its way even when the
    /// window looks right already.
    bool comesToShow(const QRect &place, bool (*color)(QColor) = isRed);

    /// Rows of a function that fetches bool "paused".
    static void addPlayingAndPaused();

    std::unique_ptr<XServer> m_server;
    uint m_page = 0;

protected Q_SLOTS:
    void cleanupTestCase() { m_server.reset(); }
    void init();
    void cleanup();

private Q_SLOTS:
    void keepsTheShapeOfThePicture();
    void followsItsPlace_data() { addPlayingAndPaused(); }
    void followsItsPlace();
    void survivesTheEndOfTheWindow_data() { addPlayingAndPaused(); }
    void survivesTheEndOfTheWindow();
};

// SPDX-License-Identifier: MIT
#pragma once

#include "XHandles.h"

#include <QRect>
#include <QString>

#include <memory>
#include <vector>

/// A window, or a part of the screen, of the X server of DISPLAY.
class LookedAtPlace
{
public:
    /// What was there at a moment.
    struct Grab
    {
        double at = 0; ///< steady clock, seconds
        double within = 0; ///< how far off that may be, either way
        QRect area; ///< of the place; empty: nothing could be seen
        std::vector<uchar> grey; ///< 8 bits a pixel
        QString doubt; ///< why nothing could be seen
    };

    /// Null, with the reason, where there is none.
    /// @param place  as of Eye::look()
    static std::unique_ptr<LookedAtPlace> open(const QString &place, QString *error);

    /// That was made for it; 0: none was.
    uint madeWindow() const { return m_madeWindow; }
    /// @param wanted  a part of the place; empty: all of it
    Grab grab(const QRect &wanted);
    /// Whether another window lies over a part of the place; empty: over its middle.
    bool isCovered(const QRect &part);
    /// Whether somebody has a window in the one that was made.
    bool isDrawnInto();

private:
    LookedAtPlace(XHandles::Connection connection, xcb_screen_t *screen);
    bool prepare(const QString &place, QString *error);
    void makeWindow();
    QRect findArea(QString *doubt);
    xcb_window_t onRoot(xcb_window_t window);
    bool take(const xcb_get_image_reply_t &image, Grab *grab) const;

    XHandles::Connection m_connection;
    xcb_screen_t *const m_screen;
    xcb_window_t m_window = 0;
    QPoint m_onScreen; ///< of the window
    QRect m_area; ///< that could be looked at last
    QRect m_part; ///< of the screen; empty: the whole window
    uint m_madeWindow = 0;
};

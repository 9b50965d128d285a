// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QRect>

#include <memory>

class QSocketNotifier;
struct xcb_connection_t;
struct xcb_screen_t;

/// The X window that video is drawn into: a child at a given place of a window that belongs to somebody else, such
/// as a page of the console. That window is never painted on. While there is no such window, or its owner has
/// destroyed it, the video's window waits out of sight, so that what draws into it always has one.
///
/// It takes no input: clicks go to the window below. It has a connection to the X server of its own, on the thread
/// it is made on.
class VideoWindow : public QObject
{
    Q_OBJECT
public:
    /// Null when no X server can be reached.
    static std::unique_ptr<VideoWindow> open();
    ~VideoWindow() override;

    /// The native id. It changes when the window around it is destroyed (replaced()).
    uint id() const { return m_id; }

    /// Puts it into that window, at that place in its pixels. 0, or what is no window: out of sight. Returns once
    /// the X server has done so; false when there is no window any more: replaced() follows, and then it may be placed.
    bool place(uint parent, const QRect &rectangle);
    /// Whether it may be seen at its place.
    void setShown(bool shown);
    /// 0xRRGGBB: what it shows where nothing has been drawn yet; black at first.
    void setBackground(uint color);
    /// What scales pictures and converts their colours in the display: a video adaptor (X Video Extension 2.2) that takes
    /// pictures from memory. The extension may be there without one.
    enum class Adaptor {
        None,
        Drawing, ///< into the window, as others draw
        Overlay ///< over the window, where that has a colour key
    };
    Adaptor adaptor() const;

Q_SIGNALS:
    /// Its contents have to be drawn again.
    void exposed();
    /// It was destroyed and made anew: id() is another one.
    void replaced();

private:
    explicit VideoWindow(xcb_connection_t *connection, int screen);

    void create();
    bool moveInto(uint parent);
    void configure();
    void updateShown();
    bool sync();
    void readEvents();

    xcb_connection_t *const m_connection;
    xcb_screen_t *m_screen = nullptr;
    QSocketNotifier *m_notifier = nullptr;
    uint m_id = 0;
    uint m_parent = 0; ///< 0: out of sight
    QRect m_rectangle;
    uint m_background = 0;
    bool m_shown = false;
    bool m_mapped = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QProcess>
#include <QRect>

#include <memory>

struct xcb_connection_t;
struct xcb_screen_t;

/// A private X server without a window manager, and what a test does and sees on it. While it runs it is the one
/// that DISPLAY names.
class XServer
{
public:
    static constexpr QSize Size{640, 480};

    enum class Kind {
        Plain,
        WithVideoAdaptor ///< within a plain one
    };
    explicit XServer(Kind kind = Kind::Plain);
    ~XServer();
    Q_DISABLE_COPY_MOVE(XServer)

    /// False when it did not start.
    bool isRunning() const { return m_screen; }

    /// A window of one colour; shown.
    uint addWindow(const QRect &place, QColor color);
    void move(uint window, QPoint to);
    void setShown(uint window, bool shown);
    /// Paints the window with its colour, as a program that repaints does.
    void repaint(uint window);
    /// A part of a window, once.
    void fill(uint window, const QRect &part, QColor color);
    void destroy(uint window);
    /// How many windows are within it; 0 stands for the screen.
    int childrenOf(uint window);

    /// What is on the screen there.
    QColor pixel(int x, int y);
    /// All that is on the screen, at one moment: of pixels that are asked for one by one, some may be of before and
    /// some of after a change. Null when there is no picture to be had.
    QImage picture();

private:
    bool start(Kind kind);
    QImage picture(const QRect &place);
    void sync();

    std::unique_ptr<XServer> m_around;
    QProcess m_process;
    xcb_connection_t *m_connection = nullptr;
    xcb_screen_t *m_screen = nullptr;
};

// SPDX-License-Identifier: MIT
#include "XServer.h"

#include "ProcessLine.h"

#include <cstdlib>

#include <xcb/xcb.h>

XServer::XServer(Kind kind)
{
    if (!start(kind))
        return;
    m_connection = xcb_connect(nullptr, nullptr);
    if (!xcb_connection_has_error(m_connection))
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

bool XServer::start(Kind kind)
{
    const QString size = QStringLiteral("%1x%2").arg(Size.width()).arg(Size.height());
    QString program = QStringLiteral("Xvfb");
    QStringList arguments{QStringLiteral("-screen"), QStringLiteral("0"), size + QStringLiteral("x24")};
    if (kind == Kind::WithVideoAdaptor) {
        m_around = std::make_unique<XServer>();
        program = QStringLiteral("Xephyr");
        arguments = QStringList{QStringLiteral("-glamor"), QStringLiteral("-screen"), size};
    }
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(program,
        arguments
            + QStringList{QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-nolisten"),
                QStringLiteral("tcp"), QStringLiteral("-noreset")});
    const QByteArray number = nextLine(m_process);
    if (number.isEmpty())
        return false;
    qputenv("DISPLAY", ':' + number);
    return true;
}

XServer::~XServer()
{
    if (m_connection)
        xcb_disconnect(m_connection);
    qunsetenv("DISPLAY");
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
}

uint XServer::addWindow(const QRect &place, QColor color)
{
    const uint window = xcb_generate_id(m_connection);
    const quint32 pixel = color.rgb() & 0xffffff;
    xcb_create_window(m_connection, m_screen->root_depth, window, m_screen->root, qint16(place.x()),
        qint16(place.y()), quint16(place.width()), quint16(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        m_screen->root_visual, XCB_CW_BACK_PIXEL, &pixel);
    setShown(window, true);
    return window;
}

void XServer::move(uint window, QPoint to)
{
    const quint32 values[] = {quint32(to.x()), quint32(to.y())};
    xcb_configure_window(m_connection, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    sync();
}

void XServer::setShown(uint window, bool shown)
{
    if (shown)
        xcb_map_window(m_connection, window);
    else
        xcb_unmap_window(m_connection, window);
    sync();
}

void XServer::repaint(uint window)
{
    xcb_clear_area(m_connection, 0, window, 0, 0, 0, 0);
    sync();
}

void XServer::fill(uint window, const QRect &part, QColor color)
{
    const uint brush = xcb_generate_id(m_connection);
    const quint32 pixel = color.rgb() & 0xffffff;
    xcb_create_gc(m_connection, brush, window, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t rectangle{
        qint16(part.x()), qint16(part.y()), quint16(part.width()), quint16(part.height())};
    xcb_poly_fill_rectangle(m_connection, window, brush, 1, &rectangle);
    xcb_free_gc(m_connection, brush);
    sync();
}

void XServer::destroy(uint window)
{
    xcb_destroy_window(m_connection, window);
    sync();
}

int XServer::childrenOf(uint window)
{
    const xcb_query_tree_cookie_t request = xcb_query_tree(m_connection, window ? window : m_screen->root);
    xcb_query_tree_reply_t *tree = xcb_query_tree_reply(m_connection, request, nullptr);
    const int count = tree ? tree->children_len : -1;
    std::free(tree);
    return count;
}

QColor XServer::pixel(int x, int y)
{
    return picture({x, y, 1, 1}).pixelColor(0, 0);
}

QImage XServer::picture()
{
    return picture(QRect(QPoint(), Size));
}

QImage XServer::picture(const QRect &place)
{
    const xcb_get_image_cookie_t request
        = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_screen->root, qint16(place.x()),
            qint16(place.y()), quint16(place.width()), quint16(place.height()), ~0U);
    xcb_get_image_reply_t *reply = xcb_get_image_reply(m_connection, request, nullptr);
    if (!reply)
        return {};
    const QImage view(xcb_get_image_data(reply), place.width(), place.height(), QImage::Format_RGB32);
    QImage picture = view.copy();
    std::free(reply);
    return picture;
}

/// Until the server has done all that it was asked for.
void XServer::sync()
{
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

// SPDX-License-Identifier: MIT
#include "VideoWindow.h"

#include "KelvoMessageHandler.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <xcb/xcb.h>
#include <xcb/xv.h>

namespace {
struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};
using Event = std::unique_ptr<xcb_generic_event_t, Free>;
using Error = std::unique_ptr<xcb_generic_error_t, Free>;

xcb_screen_t *screenAt(xcb_connection_t *connection, int number)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 1 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

bool hasColorKey(xcb_connection_t *connection, xcb_xv_port_t port)
{
    const std::unique_ptr<xcb_xv_query_port_attributes_reply_t, Free> reply(
        xcb_xv_query_port_attributes_reply(
            connection, xcb_xv_query_port_attributes(connection, port), nullptr));
    if (!reply)
        return false;
    xcb_xv_attribute_info_iterator_t attributes
        = xcb_xv_query_port_attributes_attributes_iterator(reply.get());
    for (; attributes.rem > 0; xcb_xv_attribute_info_next(&attributes)) {
        // The size counts the end of the name, too.
        const QByteArray name(xcb_xv_attribute_info_name(attributes.data), int(attributes.data->size));
        if (qstrcmp(name.constData(), "XV_COLORKEY") == 0)
            return true;
    }
    return false;
}

uint coordinate(int value)
{
    using Limits = std::numeric_limits<qint16>;
    return uint(std::clamp<int>(value, Limits::min(), Limits::max()));
}
} // namespace

std::unique_ptr<VideoWindow> VideoWindow::open()
{
    int number = 0;
    xcb_connection_t *connection = xcb_connect(nullptr, &number);
    if (xcb_connection_has_error(connection) || !screenAt(connection, number)) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<VideoWindow>(new VideoWindow(connection, number));
}

VideoWindow::VideoWindow(xcb_connection_t *connection, int screen)
    : m_connection(connection)
    , m_screen(screenAt(connection, screen))
    , m_notifier(new QSocketNotifier(xcb_get_file_descriptor(connection), QSocketNotifier::Read, this))
{
    connect(m_notifier, &QSocketNotifier::activated, this, &VideoWindow::readEvents);
    create();
    sync();
}

VideoWindow::~VideoWindow()
{
    m_notifier->setEnabled(false);
    xcb_disconnect(m_connection); // the window goes with it
}

/// Out of sight. It has the depth of the screen, whatever the depth of the windows that it will be put into.
void VideoWindow::create()
{
    m_parent = 0;
    m_mapped = false;
    m_id = xcb_generate_id(m_connection);
    const quint32 mask = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT
        | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    const quint32 values[] = {m_background, 0, 1, XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY,
        m_screen->default_colormap};
    xcb_create_window(m_connection, m_screen->root_depth, m_id, m_screen->root, 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual, mask, values);
    configure();
}

bool VideoWindow::place(uint parent, const QRect &rectangle)
{
    if (!sync())
        return false;
    if (parent != m_parent) {
        if (m_mapped)
            xcb_unmap_window(m_connection, m_id);
        m_mapped = false;
        m_parent = parent && moveInto(parent) ? parent : 0;
        if (!m_parent)
            moveInto(m_screen->root);
    }
    m_rectangle = rectangle;
    configure();
    updateShown();
    return sync();
}

bool VideoWindow::moveInto(uint parent)
{
    const xcb_void_cookie_t request = xcb_reparent_window_checked(m_connection, m_id, parent, 0, 0);
    const Error error(xcb_request_check(m_connection, request));
    if (error)
        qCWarning(lcKelvo) << "Window" << parent << "cannot show video: X error" << error->error_code;
    return !error;
}

void VideoWindow::configure()
{
    // No larger than the screen: pictures are made in this size, so nonsense would cost all the memory there is.
    const quint32 values[] = {
        coordinate(m_rectangle.x()),
        coordinate(m_rectangle.y()),
        quint32(std::clamp<int>(m_rectangle.width(), 1, m_screen->width_in_pixels)),
        quint32(std::clamp<int>(m_rectangle.height(), 1, m_screen->height_in_pixels)),
    };
    xcb_configure_window(m_connection, m_id,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
        values);
}

void VideoWindow::setShown(bool shown)
{
    m_shown = shown;
    updateShown();
    xcb_flush(m_connection);
}

void VideoWindow::updateShown()
{
    const bool mapped = m_shown && m_parent && !m_rectangle.isEmpty();
    if (mapped == m_mapped)
        return;
    m_mapped = mapped;
    if (mapped)
        xcb_map_window(m_connection, m_id);
    else
        xcb_unmap_window(m_connection, m_id);
}

void VideoWindow::setBackground(uint color)
{
    if (color == m_background)
        return;
    m_background = color;
    xcb_change_window_attributes(m_connection, m_id, XCB_CW_BACK_PIXEL, &m_background);
    xcb_flush(m_connection);
}

VideoWindow::Adaptor VideoWindow::adaptor() const
{
    if (!xcb_get_extension_data(m_connection, &xcb_xv_id)->present)
        return Adaptor::None;
    const std::unique_ptr<xcb_xv_query_adaptors_reply_t, Free> reply(
        xcb_xv_query_adaptors_reply(m_connection, xcb_xv_query_adaptors(m_connection, m_id), nullptr));
    if (!reply)
        return Adaptor::None;
    constexpr uint takesPictures = XCB_XV_TYPE_INPUT_MASK | XCB_XV_TYPE_IMAGE_MASK;
    xcb_xv_adaptor_info_iterator_t adaptors = xcb_xv_query_adaptors_info_iterator(reply.get());
    for (; adaptors.rem > 0; xcb_xv_adaptor_info_next(&adaptors)) {
        if ((adaptors.data->type & takesPictures) == takesPictures && adaptors.data->num_ports > 0)
            return hasColorKey(m_connection, adaptors.data->base_id) ? Adaptor::Overlay : Adaptor::Drawing;
    }
    return Adaptor::None;
}

/// Others draw by connections of their own, so they may only go on once the server has caught up. False when the
/// window has been destroyed.
bool VideoWindow::sync()
{
    const std::unique_ptr<xcb_get_geometry_reply_t, Free> geometry(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, m_id), nullptr));
    // Events that came with the reply do not make the socket readable.
    QMetaObject::invokeMethod(this, &VideoWindow::readEvents, Qt::QueuedConnection);
    return geometry != nullptr;
}

void VideoWindow::readEvents()
{
    bool isExposed = false;
    bool isDestroyed = false;
    while (const Event event{xcb_poll_for_event(m_connection)}) {
        const int type = event->response_type & 0x7f;
        if (type == XCB_EXPOSE)
            isExposed = true;
        else if (type == XCB_DESTROY_NOTIFY)
            isDestroyed |= reinterpret_cast<const xcb_destroy_notify_event_t *>(event.get())->window == m_id;
    }
    if (xcb_connection_has_error(m_connection)) {
        m_notifier->setEnabled(false);
        return;
    }
    if (isDestroyed) {
        create();
        sync();
        Q_EMIT replaced();
    } else if (isExposed) {
        Q_EMIT exposed();
    }
}

// SPDX-License-Identifier: MIT
#include "LookedAtPlace.h"

#include "MediaClock.h"
#include "SenseProgram.h"

#include <QList>
#include <QStringList>

#include <algorithm>

using XHandles::Owned;

namespace {
constexpr int deepPixel = 4; // bytes
constexpr int leastDepth = 24;

xcb_screen_t *screenOf(xcb_connection_t *connection, int number)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 1 && number > 0; --number)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

/// "x,y,width,height"; empty where the text is none.
QRect rectangleOf(const QString &text)
{
    QList<int> numbers;
    for (const QString &word : text.split(u',')) {
        bool isNumber = false;
        numbers.append(word.trimmed().toInt(&isNumber));
        if (!isNumber)
            return {};
    }
    return numbers.size() == 4 ? QRect(numbers[0], numbers[1], numbers[2], numbers[3]) : QRect();
}
} // namespace

LookedAtPlace::LookedAtPlace(XHandles::Connection connection, xcb_screen_t *screen)
    : m_connection(std::move(connection))
    , m_screen(screen)
{
}

std::unique_ptr<LookedAtPlace> LookedAtPlace::open(const QString &place, QString *error)
{
    int number = 0;
    XHandles::Connection connection(xcb_connect(nullptr, &number));
    xcb_screen_t *const screen
        = xcb_connection_has_error(connection.get()) ? nullptr : screenOf(connection.get(), number);
    if (!screen) {
        const QString display = qEnvironmentVariable("DISPLAY");
        *error = display.isEmpty() ? QStringLiteral("DISPLAY names no X server")
                                   : QStringLiteral("there is no X server at %1").arg(display);
        return nullptr;
    }
    std::unique_ptr<LookedAtPlace> looked(new LookedAtPlace(std::move(connection), screen));
    return looked->prepare(place, error) ? std::move(looked) : nullptr;
}

bool LookedAtPlace::prepare(const QString &place, QString *error)
{
    bool isNumber = false;
    m_window = place.toUInt(&isNumber, 0);
    if (place == QLatin1String("auto")) {
        makeWindow();
    } else if (!isNumber) {
        m_window = m_screen->root;
        m_part = rectangleOf(place);
        if (m_part.isEmpty()) {
            *error = QStringLiteral("it is neither a window's number, nor x,y,width,height, nor \"auto\"");
            return false;
        }
    }
    QString doubt;
    findArea(&doubt);
    // What is not shown yet may be so later.
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), m_window), nullptr));
    if (!geometry || (!m_part.isEmpty() && !doubt.isEmpty())) {
        *error = doubt;
        return false;
    }
    if (geometry->depth < leastDepth) {
        *error = QStringLiteral("it has %1 bits a pixel, and %2 or more are needed")
                     .arg(geometry->depth)
                     .arg(leastDepth);
        return false;
    }
    return true;
}

/// No window manager has a part in it: it stays where it is.
void LookedAtPlace::makeWindow()
{
    m_madeWindow = m_window = xcb_generate_id(m_connection.get());
    const quint32 values[] = {m_screen->black_pixel, 1};
    xcb_create_window(m_connection.get(), XCB_COPY_FROM_PARENT, m_window, m_screen->root, 0, 0,
        MediaClock::pictureWidth, MediaClock::pictureHeight, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        m_screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(m_connection.get(), m_window);
    xcb_flush(m_connection.get());
}

/// What can be looked at of the place now, in its own coordinates.
QRect LookedAtPlace::findArea(QString *doubt)
{
    xcb_connection_t *const connection = m_connection.get();
    const auto attributesCookie = xcb_get_window_attributes(connection, m_window);
    const auto geometryCookie = xcb_get_geometry(connection, m_window);
    const auto placeCookie = xcb_translate_coordinates(connection, m_window, m_screen->root, 0, 0);
    const Owned<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(connection, attributesCookie, nullptr));
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, geometryCookie, nullptr));
    const Owned<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection, placeCookie, nullptr));
    if (!attributes || !geometry || !place) {
        *doubt = QStringLiteral("the window is not there");
        return {};
    }
    if (attributes->map_state != XCB_MAP_STATE_VIEWABLE) {
        *doubt = QStringLiteral("the window is not shown");
        return {};
    }
    m_onScreen = {place->dst_x, place->dst_y};
    const QRect screen(-m_onScreen, QSize(m_screen->width_in_pixels, m_screen->height_in_pixels));
    QRect area = QRect(0, 0, geometry->width, geometry->height) & screen;
    if (!m_part.isEmpty())
        area &= m_part;
    if (area.isEmpty())
        *doubt = QStringLiteral("it is outside of the screen");
    return area;
}

LookedAtPlace::Grab LookedAtPlace::grab(const QRect &wanted)
{
    Grab grab;
    grab.at = SenseProgram::now();
    QRect found = findArea(&grab.doubt);
    m_area = found;
    if (!wanted.isEmpty())
        found &= wanted;
    if (!grab.doubt.isEmpty() || found.isEmpty())
        return grab;
    const double before = SenseProgram::now();
    const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(m_connection.get(),
        xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, qint16(found.x()),
            qint16(found.y()), quint16(found.width()), quint16(found.height()), ~0U),
        nullptr));
    const double after = SenseProgram::now();
    grab.at = (before + after) / 2;
    grab.within = (after - before) / 2;
    grab.area = found;
    if (!image || !take(*image, &grab)) {
        grab.area = {};
        grab.doubt = QStringLiteral("the X server does not give the picture");
    }
    return grab;
}

bool LookedAtPlace::take(const xcb_get_image_reply_t &image, Grab *grab) const
{
    const auto pixels = size_t(grab->area.width()) * size_t(grab->area.height());
    if (size_t(xcb_get_image_data_length(&image)) < pixels * deepPixel)
        return false;
    const quint8 *const data = xcb_get_image_data(&image);
    grab->grey.resize(pixels);
    // Marks are black and white: the three colours, each 8 bits, count the same, wherever they are.
    const bool isBigEndian = xcb_get_setup(m_connection.get())->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
    const int first = isBigEndian ? 1 : 0;
    for (size_t i = 0; i < pixels; ++i) {
        const quint8 *const pixel = data + i * deepPixel + first;
        grab->grey[i] = uchar((pixel[0] + pixel[1] + pixel[2]) / 3);
    }
    return true;
}

/// The child of the root in which a window is: its frame, or itself.
xcb_window_t LookedAtPlace::onRoot(xcb_window_t window)
{
    while (true) {
        const Owned<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection.get(), xcb_query_tree(m_connection.get(), window), nullptr));
        if (!tree)
            return XCB_NONE;
        if (tree->parent == m_screen->root || tree->parent == XCB_NONE)
            return window;
        window = tree->parent;
    }
}

bool LookedAtPlace::isCovered(const QRect &part)
{
    const QRect seen = part.isEmpty() ? m_area : part & m_area;
    const int middle = seen.center().y();
    const QList<QPoint> points = part.isEmpty()
        ? QList<QPoint>{seen.center()}
        : QList<QPoint>{{seen.left(), middle}, seen.center(), {seen.right(), middle}};
    if (m_window == m_screen->root || seen.isEmpty())
        return false;
    const xcb_window_t own = onRoot(m_window);
    return std::any_of(points.cbegin(), points.cend(), [&](const QPoint &point) {
        const QPoint place = m_onScreen + point;
        const Owned<xcb_translate_coordinates_reply_t> found(
            xcb_translate_coordinates_reply(m_connection.get(),
                xcb_translate_coordinates(
                    m_connection.get(), m_screen->root, m_screen->root, qint16(place.x()), qint16(place.y())),
                nullptr));
        return found && found->child != own;
    });
}

bool LookedAtPlace::isDrawnInto()
{
    if (m_madeWindow == 0)
        return false;
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(m_connection.get(), xcb_query_tree(m_connection.get(), m_madeWindow), nullptr));
    return tree && tree->children_len > 0;
}

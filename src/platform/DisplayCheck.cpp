// SPDX-License-Identifier: MIT
#include "DisplayCheck.h"

#include <QByteArray>
#include <QLibrary>

namespace {
/// What follows the option, which may have one dash or two.
QByteArray argumentOf(const QByteArray &option, const QByteArray &otherwise, int argc, char *argv[])
{
    QByteArray value = otherwise;
    for (int i = 1; i + 1 < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == option || argument == '-' + option)
            value = argv[i + 1];
    }
    return value;
}

QByteArray requestedPlatform(int argc, char *argv[])
{
    return argumentOf("-platform", qgetenv("QT_QPA_PLATFORM"), argc, argv);
}

/// True also when the client library cannot be asked: QApplication then gives its own answer.
bool x11DisplayOpens()
{
    QLibrary xcb(QStringLiteral("xcb"), 1);
    const auto connect = reinterpret_cast<void *(*)(const char *, int *)>(xcb.resolve("xcb_connect"));
    const auto hasError = reinterpret_cast<int (*)(void *)>(xcb.resolve("xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<void (*)(void *)>(xcb.resolve("xcb_disconnect"));
    if (!connect || !hasError || !disconnect)
        return true;
    void *connection = connect(nullptr, nullptr);
    const bool opens = hasError(connection) == 0;
    disconnect(connection);
    return opens;
}
} // namespace

void DisplayCheck::useNamedDisplay(int argc, char *argv[])
{
    const QByteArray display = argumentOf("-display", {}, argc, argv);
    if (!display.isEmpty())
        qputenv("DISPLAY", display);
}

void DisplayCheck::preferX11()
{
    const bool wayland
        = qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
    if (wayland && qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
}

QString DisplayCheck::problem(int argc, char *argv[])
{
    const QByteArray platform = requestedPlatform(argc, argv);
    const bool x11 = platform == "xcb" || platform.startsWith("xcb:");
    if (!platform.isEmpty() && !x11)
        return {};
    const QByteArray display = qgetenv("DISPLAY");
    if (!x11 && display.isEmpty() && qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        return {};
    if (display.isEmpty())
        return QStringLiteral("No display: DISPLAY is not set. Start the program in a graphical session.");
    if (!x11DisplayOpens())
        return QStringLiteral("No display: the X server \"%1\" cannot be reached.")
            .arg(QString::fromLocal8Bit(display));
    return {};
}

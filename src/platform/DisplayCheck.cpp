// SPDX-License-Identifier: MIT
#include "DisplayCheck.h"

#include <QByteArray>
#include <QDir>
#include <QLibrary>
#include <QLibraryInfo>

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

bool onWayland()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// Whether the session's compositor answers, and the toolkit has what it takes to show windows there.
bool waylandOpens()
{
    const QDir platforms(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QLatin1String("/platforms"));
    if (platforms.entryList({QStringLiteral("libqwayland*.so")}).isEmpty())
        return false;
    QLibrary wayland(QStringLiteral("wayland-client"), 0);
    const auto connect = reinterpret_cast<void *(*)(const char *)>(wayland.resolve("wl_display_connect"));
    const auto disconnect = reinterpret_cast<void (*)(void *)>(wayland.resolve("wl_display_disconnect"));
    if (!connect || !disconnect)
        return false;
    void *connection = connect(nullptr);
    if (connection)
        disconnect(connection);
    return connection;
}

QString waylandProblem()
{
    return QStringLiteral(
        "No display: no X server is reached by DISPLAY (\"%1\"), nor the Wayland session \"%2\". "
        "Set DISPLAY to the session's X server (Xwayland), or install the package qt6-wayland, "
        "without which there are no windows, and with which there is no video.")
        .arg(qEnvironmentVariable("DISPLAY"), qEnvironmentVariable("WAYLAND_DISPLAY"));
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
    const bool wayland = onWayland() || qgetenv("XDG_SESSION_TYPE") == "wayland";
    if (!wayland || !qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    if (x11DisplayOpens())
        qputenv("QT_QPA_PLATFORM", "xcb");
    else if (onWayland() && waylandOpens())
        qunsetenv("DISPLAY");
}

QString DisplayCheck::problem(int argc, char *argv[])
{
    const QByteArray platform = requestedPlatform(argc, argv);
    const bool x11 = platform == "xcb" || platform.startsWith("xcb:");
    if (!platform.isEmpty() && !x11)
        return {};
    const QByteArray display = qgetenv("DISPLAY");
    if (!x11 && onWayland() && (display.isEmpty() || !x11DisplayOpens()))
        return waylandOpens() ? QString() : waylandProblem();
    if (display.isEmpty())
        return QStringLiteral("No display: DISPLAY is not set. Start the program in a graphical session.");
    if (!x11DisplayOpens())
        return QStringLiteral("No display: the X server \"%1\" cannot be reached.")
            .arg(QString::fromLocal8Bit(display));
    return {};
}

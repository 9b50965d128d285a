// SPDX-License-Identifier: MIT
#include "DisplayCheck.h"

#include <QByteArray>
#include <QDir>
#include <QGuiApplication>
#include <QLibrary>

#include <algorithm>

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

/// In the order in which they are tried, without their options.
QStringList requestedPlatforms(int argc, char *argv[])
{
    QStringList platforms
        = QString::fromLocal8Bit(argumentOf("-platform", qgetenv("QT_QPA_PLATFORM"), argc, argv))
              .split(u';', Qt::SkipEmptyParts);
    for (QString &platform : platforms)
        platform = platform.section(u':', 0, 0);
    return platforms;
}

bool onWayland()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// Whether the toolkit has what it takes to show windows on Wayland.
bool hasWaylandPlugin()
{
    QStringList folders = QCoreApplication::libraryPaths();
    for (QString &folder : folders)
        folder += QLatin1String("/platforms");
    folders.append(qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH"));
    return std::any_of(folders.cbegin(), folders.cend(), [](const QString &folder) {
        return !folder.isEmpty() && !QDir(folder).entryList({QStringLiteral("libqwayland*.so")}).isEmpty();
    });
}

/// Whether the session's compositor answers.
bool waylandAnswers()
{
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

bool waylandOpens()
{
    return hasWaylandPlugin() && waylandAnswers();
}

/// Empty when there is none.
QString waylandProblem()
{
    if (waylandOpens())
        return {};
    const QString reason = hasWaylandPlugin()
        ? QStringLiteral(
            "the Wayland session \"%1\" cannot be reached. Start the program in a graphical session, "
            "or set DISPLAY (\"%2\") to one's X server.")
        : QStringLiteral("windows on the Wayland session \"%1\" need the package qt6-wayland, which is not "
                         "installed, and there is no video in them. There is with the session's X server "
                         "(Xwayland), when DISPLAY (\"%2\") names it and QT_QPA_PLATFORM is not set.");
    return QStringLiteral("No display: ")
        + reason.arg(qEnvironmentVariable("WAYLAND_DISPLAY", QStringLiteral("wayland-0")),
            qEnvironmentVariable("DISPLAY"));
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

QString x11Problem()
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return QStringLiteral("No display: DISPLAY is not set. Start the program in a graphical session.");
    if (!x11DisplayOpens())
        return QStringLiteral("No display: the X server \"%1\" cannot be reached.")
            .arg(QString::fromLocal8Bit(display));
    return {};
}

/// Of a platform that was asked for; others than these two show windows without a display, or say themselves why not.
QString problemOf(const QString &platform)
{
    if (platform == QLatin1String("xcb"))
        return x11Problem();
    return platform.startsWith(QLatin1String("wayland")) ? waylandProblem() : QString();
}

/// Where no platform was asked for.
QString problemOfSession()
{
    const QString x11 = x11Problem();
    return x11.isEmpty() || !onWayland() ? x11 : waylandProblem();
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
    const QStringList platforms = requestedPlatforms(argc, argv);
    if (platforms.isEmpty())
        return problemOfSession();
    QString first;
    for (const QString &platform : platforms) {
        const QString problem = problemOf(platform);
        if (problem.isEmpty())
            return {};
        if (first.isEmpty())
            first = problem;
    }
    return first;
}

void DisplayCheck::forgetUnusedX11()
{
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        qunsetenv("DISPLAY");
}

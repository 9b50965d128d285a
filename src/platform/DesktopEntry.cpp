// SPDX-License-Identifier: MIT
#include "DesktopEntry.h"

#include <QGuiApplication>
#include <QIcon>

namespace {
const auto entryName = QStringLiteral("org.kelvo.TestGui");
} // namespace

// The icons are part of a static library, which nothing else would take them from.
static void initIcons()
{
    Q_INIT_RESOURCE(desktop_entry);
}

void DesktopEntry::apply()
{
    QGuiApplication::setDesktopFileName(entryName);
    // To find and draw it in all sizes takes a tenth of the start: the window comes first.
    QMetaObject::invokeMethod(
        qGuiApp, [] { QGuiApplication::setWindowIcon(icon()); }, Qt::QueuedConnection);
}

QIcon DesktopEntry::icon()
{
    initIcons();
    QIcon own;
    for (const int size : {16, 24, 32, 48, 64, 128})
        own.addFile(QStringLiteral(":/icons/%1x%1/%2.png").arg(size).arg(entryName));
    return QIcon::fromTheme(entryName, own);
}

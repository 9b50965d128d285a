// SPDX-License-Identifier: MIT
#include "ClockedMedium.h"

#include <QCoreApplication>
#include <QDir>

namespace {
bool isVideo(const QString &format)
{
    return ClockedMedium::videoFormats().contains(format);
}
} // namespace

QStringList ClockedMedium::soundFormats()
{
    return {QStringLiteral("wav"), QStringLiteral("flac"), QStringLiteral("mp3"), QStringLiteral("m4a"),
        QStringLiteral("opus"), QStringLiteral("ogg")};
}

QStringList ClockedMedium::videoFormats()
{
    return {QStringLiteral("mp4"), QStringLiteral("webm"), QStringLiteral("avi")};
}

QString ClockedMedium::fileName(int item, const QString &format)
{
    return QStringLiteral("%1-%2.%3")
        .arg(isVideo(format) ? QStringLiteral("video") : QStringLiteral("song"))
        .arg(item, 2, 10, QLatin1Char('0'))
        .arg(format);
}

QString ClockedMedium::program()
{
    return QDir::cleanPath(
        QCoreApplication::applicationDirPath() + QStringLiteral("/" KELVO_PROGRAMS "/kelvo-media-maker"));
}

QStringList ClockedMedium::arguments() const
{
    return {format, QString::number(item), QString::number(seconds), title};
}

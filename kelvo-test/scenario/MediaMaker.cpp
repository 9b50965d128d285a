// SPDX-License-Identifier: MIT
#include "MediaMaker.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {
constexpr int mostTime = 60'000; // milliseconds

QStringList argumentsFor(const Medium &medium)
{
    const QString tone = QStringLiteral("sine=frequency=%1:sample_rate=44100:duration=%2")
                             .arg(medium.frequency)
                             .arg(medium.seconds);
    QStringList arguments{QStringLiteral("-nostdin"), QStringLiteral("-v"), QStringLiteral("error"),
        QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), tone};
    if (medium.kind == Medium::Video) {
        const QString picture
            = QStringLiteral("testsrc2=size=320x240:rate=25:duration=%1").arg(medium.seconds);
        arguments += {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), picture,
            QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"), QStringLiteral("-g"),
            QStringLiteral("25")};
    }
    // Without it nothing but the end of the file would tell where what is in it.
    if (medium.format == QLatin1String("mp4") || medium.format == QLatin1String("m4a"))
        arguments += {QStringLiteral("-movflags"), QStringLiteral("+faststart")};
    return arguments + QStringList{QStringLiteral("-metadata"), QStringLiteral("title=") + medium.title};
}

bool run(const QStringList &arguments, QString *error)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("ffmpeg"), arguments);
    const bool ended = process.waitForFinished(mostTime);
    if (ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return true;
    const QString words = QString::fromLocal8Bit(process.readAll()).trimmed();
    *error = QStringLiteral("ffmpeg, which makes media of this format, failed: ")
        + (words.isEmpty() ? process.errorString() : words);
    return false;
}
} // namespace

QString MediaMaker::make(const Medium &medium, QString *error)
{
    const QStringList arguments = argumentsFor(medium);
    const QByteArray mark
        = QCryptographicHash::hash(arguments.join(u'\n').toUtf8(), QCryptographicHash::Sha256)
              .toHex()
              .left(16);
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + QStringLiteral("/kelvo-test/media"));
    const QString path = folder.filePath(QString::fromLatin1(mark) + u'.' + medium.format);
    if (QFileInfo(path).isFile())
        return path;
    folder.mkpath(QStringLiteral("."));
    // Under another name first: whoever else makes it now, or is interrupted, leaves nothing half made.
    const QTemporaryDir unfinished(folder.filePath(QStringLiteral("new-XXXXXX")));
    const QString made = unfinished.filePath(QStringLiteral("medium.") + medium.format);
    if (!unfinished.isValid()) {
        *error
            = QStringLiteral("no media can be kept in %1: %2").arg(folder.path(), unfinished.errorString());
        return {};
    }
    if (!run(arguments + QStringList{made}, error))
        return {};
    if (!QFile::rename(made, path) && !QFileInfo(path).isFile()) {
        *error = QStringLiteral("no media can be kept in %1").arg(folder.path());
        return {};
    }
    return path;
}

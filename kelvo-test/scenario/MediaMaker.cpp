// SPDX-License-Identifier: MIT
#include "MediaMaker.h"

#include "ClockedMedium.h"
#include "UserFolders.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
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

/// What makes a medium: a program and its arguments, to which the path of the file is added.
struct Making
{
    QString program;
    QStringList arguments;
};

Making makingOf(const Medium &medium)
{
    if (medium.clock == 0)
        return {QStringLiteral("ffmpeg"), argumentsFor(medium)};
    return {ClockedMedium::program(),
        ClockedMedium{medium.clock, medium.format, medium.seconds, medium.title}.arguments()};
}

/// The same for the same medium, made by the same program.
QString markOf(const Making &making)
{
    const QFileInfo program(making.program);
    const QStringList words = making.arguments
        + QStringList{program.isFile() ? program.lastModified().toString(Qt::ISODateWithMs) : QString()};
    return QString::fromLatin1(
        QCryptographicHash::hash(words.join(u'\n').toUtf8(), QCryptographicHash::Sha256).toHex().left(16));
}

bool run(const Making &making, const QString &path, QString *error)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(making.program, making.arguments + QStringList{path});
    const bool ended = process.waitForFinished(mostTime);
    if (ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return true;
    const QString words = QString::fromLocal8Bit(process.readAll()).trimmed();
    *error = QStringLiteral("%1, which makes media of this format, failed: ")
                 .arg(QFileInfo(making.program).fileName())
        + (words.isEmpty() ? process.errorString() : words);
    return false;
}
} // namespace

QString MediaMaker::make(const Medium &medium, QString *error)
{
    const Making making = makingOf(medium);
    const QDir folder(UserFolders::cache(QStringLiteral("media")));
    QString path = folder.filePath(markOf(making) + u'.' + medium.format);
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
    if (!run(making, made, error))
        return {};
    if (!QFile::rename(made, path) && !QFileInfo(path).isFile()) {
        *error = QStringLiteral("no media can be kept in %1").arg(folder.path());
        return {};
    }
    return path;
}

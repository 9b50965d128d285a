// SPDX-License-Identifier: MIT
#include "IndexSettings.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {
QByteArray absolute(const QString &path)
{
    return QFile::encodeName(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
}

// A user without such a folder has it set to the home folder, which is not meant to be looked through.
QByteArray userFolder(QStandardPaths::StandardLocation location)
{
    const QString path = QStandardPaths::writableLocation(location);
    return path.isEmpty() || QDir::cleanPath(path) == QDir::homePath() ? QByteArray() : absolute(path);
}
} // namespace

IndexSettings IndexSettings::fromEnvironment()
{
    IndexSettings settings;
    if (qEnvironmentVariableIsSet("KELVO_MEDIA_DIRS")) {
        // As bytes: the name of a folder need not be valid in the locale's encoding.
        const QList<QByteArray> folders = qgetenv("KELVO_MEDIA_DIRS").split(':');
        for (const QByteArray &folder : folders) {
            if (folder.startsWith('/'))
                settings.folders.append(
                    folder.size() > 1 && folder.endsWith('/') ? folder.chopped(1) : folder);
            else if (!folder.isEmpty())
                settings.folders.append(absolute(QFile::decodeName(folder)));
        }
    } else {
        settings.folders
            = {userFolder(QStandardPaths::MusicLocation), userFolder(QStandardPaths::MoviesLocation)};
        settings.folders.removeAll(QByteArray());
    }
    settings.downloadFolder = userFolder(QStandardPaths::DownloadLocation);
    // The other words there are libraries on other machines.
    settings.useDesktopIndex = qgetenv("KELVO_TRACKER").simplified().split(' ').contains("bus");
    return settings;
}

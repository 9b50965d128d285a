// SPDX-License-Identifier: MIT
#include "UserFolders.h"

#include "KelvoMessageHandler.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// A base folder of the XDG Base Directory Specification, by which relative paths in such variables count for nothing.
QString base(const char *variable, const char *usual)
{
    const QString named = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(named) ? named : QDir::homePath() + QLatin1String(usual);
}

QString dataBase()
{
    return base("XDG_DATA_HOME", "/.local/share");
}

QString cacheBase()
{
    return base("XDG_CACHE_HOME", "/.cache");
}

QString stateBase()
{
    return base("XDG_STATE_HOME", "/.local/state");
}

QString ours(const QString &base, const QString &what)
{
    return base + QStringLiteral("/kelvo/") + what;
}

/// 0, or why it cannot be: an error number.
int renameTo(const QByteArray &to, const QByteArray &from, const struct stat &old)
{
    // A folder takes the place of an empty folder at most. A link to one could take that of anything.
    const int result = S_ISDIR(old.st_mode)
        ? std::rename(from.constData(), to.constData())
        : ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE);
    return result == 0 ? 0 : errno;
}

void move(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    struct stat old = {};
    if (::lstat(source.constData(), &old) != 0 || !(S_ISDIR(old.st_mode) || S_ISLNK(old.st_mode)))
        return;
    QDir().mkpath(QFileInfo(to).path());
    const int problem = renameTo(QFile::encodeName(to), source, old);
    // Another program, which starts now, too, may have been faster.
    if (problem == 0)
        qCInfo(lcKelvo).noquote() << "What was in" << from << "is in" << to << "now";
    else if (problem != ENOENT)
        qCWarning(lcKelvo).noquote() << "What is in" << from << "stays there, not in" << to << "-"
                                     << std::strerror(problem);
    // Unless something else is in it.
    ::rmdir(QFile::encodeName(QFileInfo(from).path()).constData());
}
} // namespace

QString UserFolders::data(const QString &what)
{
    return ours(dataBase(), what);
}

QString UserFolders::cache(const QString &what)
{
    return ours(cacheBase(), what);
}

QString UserFolders::state(const QString &what)
{
    return ours(stateBase(), what);
}

bool UserFolders::makePrivate(const QString &folder)
{
    if (!QDir().mkpath(folder))
        return false;
    const QByteArray path = QFile::encodeName(folder);
    struct stat status = {};
    constexpr mode_t others = S_IRWXG | S_IRWXO;
    if (::stat(path.constData(), &status) == 0 && status.st_uid == ::geteuid() && (status.st_mode & others))
        ::chmod(path.constData(), status.st_mode & S_IRWXU);
    return true;
}

void UserFolders::takeOverOld()
{
    move(cacheBase() + QStringLiteral("/kelvo-test-gui/pause-frames"), cache(QStringLiteral("pause-frames")));
    move(cacheBase() + QStringLiteral("/kelvo-test/media"), cache(QStringLiteral("media")));
}

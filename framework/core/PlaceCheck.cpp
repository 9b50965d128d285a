// SPDX-License-Identifier: MIT
#include "PlaceCheck.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using Names = std::array<char, 16 * 1024>;

/// Empty when nobody has that number.
QByteArray userName(uid_t user)
{
    Names names;
    struct passwd entry = {};
    struct passwd *found = nullptr;
    return ::getpwuid_r(user, &entry, names.data(), names.size(), &found) == 0 && found
        ? QByteArray(found->pw_name)
        : QByteArray();
}

/// A group that has the user's name, and nobody else in it.
bool isOwnGroup(gid_t group, uid_t user)
{
    const QByteArray name = userName(user);
    Names names;
    struct group entry = {};
    struct group *found = nullptr;
    if (name.isEmpty() || ::getgrgid_r(group, &entry, names.data(), names.size(), &found) != 0 || !found
        || name != found->gr_name)
        return false;
    for (char **member = found->gr_mem; *member; ++member) {
        if (name != *member)
            return false;
    }
    return true;
}

/// Within a user namespace that does not know the file's real owner, root for instance, all such files seem to belong to
/// this one. Who made the namespace chose what is seen in it.
bool isUnknownHere(uid_t owner)
{
    QFile unknown(QStringLiteral("/proc/sys/kernel/overflowuid"));
    QFile known(QStringLiteral("/proc/self/uid_map"));
    return unknown.open(QIODevice::ReadOnly) && unknown.readAll().trimmed().toUInt() == owner
        && known.open(QIODevice::ReadOnly) && known.readAll().simplified() != "0 0 4294967295";
}

QString ownerDefect(const QString &path, uid_t owner)
{
    if (owner == 0 || owner == ::geteuid() || isUnknownHere(owner))
        return {};
    const QByteArray name = userName(owner);
    return QStringLiteral("%1 belongs to somebody else (%2)")
        .arg(path, name.isEmpty() ? QString::number(owner) : QString::fromLocal8Bit(name));
}

QString writerDefect(const QString &path, const struct stat &status)
{
    const bool isKept = S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    if (isKept)
        return {};
    if (status.st_mode & S_IWOTH)
        return QStringLiteral("everybody may write to %1 (chmod o-w)").arg(path);
    if ((status.st_mode & S_IWGRP) && !isOwnGroup(status.st_gid, status.st_uid))
        return QStringLiteral("a group may write to %1 (chmod g-w)").arg(path);
    return {};
}

QString defectOf(const QString &path)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return QStringLiteral("%1 cannot be looked at").arg(path);
    const QString owner = ownerDefect(path, status.st_uid);
    return owner.isEmpty() ? writerDefect(path, status) : owner;
}
} // namespace

QString placeDefect(const QString &library)
{
    const QString file = QFileInfo(library).canonicalFilePath();
    if (file.isEmpty())
        return QStringLiteral("there is no such file");
    const QString folder = QFileInfo(file).path();
    const QString folderOfName = QFileInfo(QFileInfo(library).absolutePath()).canonicalFilePath();
    QString defect = defectOf(file);
    if (defect.isEmpty())
        defect = defectOf(folder);
    if (defect.isEmpty() && folderOfName != folder)
        defect = defectOf(folderOfName);
    return defect;
}

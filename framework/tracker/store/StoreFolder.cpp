// SPDX-License-Identifier: MIT
#include "StoreFolder.h"

#include "UserFolders.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {
const QLatin1String databaseName("/meta.db");
const QLatin1String lockName("/owner.lock");
const QLatin1String unfinishedName("/unfinished");
const QLatin1String probeName("/.probe");
// What the store's library writes into "user_version" and expects to find there.
constexpr quint32 storeVersion = 27;
// An empty store takes 3 MB and its log as much again.
constexpr quint64 minimumSpace = 8 * 1024 * 1024;

QString reason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

StoreError noAccess(const QString &folder, const QString &why)
{
    return {
        StoreError::NoAccess, QStringLiteral("The tracker store cannot be written: %1: %2").arg(folder, why)};
}

StoreError damaged(const QString &what)
{
    return {StoreError::Damaged, QStringLiteral("The tracker store is damaged: %1").arg(what)};
}

// All that is in the folder but the lock, which is held by its place.
QStringList storeFiles(const QString &folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    names.removeOne(QString(lockName).mid(1));
    return names;
}

/// A descriptor that is closed, with errno as it was.
class Descriptor
{
public:
    Descriptor(const QByteArray &path, int flags)
        : m_descriptor(::open(path.constData(), flags | O_CLOEXEC, 0600))
    {
    }
    ~Descriptor()
    {
        const int problem = errno;
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        errno = problem;
    }
    Q_DISABLE_COPY_MOVE(Descriptor)
    int number() const { return m_descriptor; }

private:
    const int m_descriptor;
};

/// False with errno. Enough for whatever the library does to open a store.
bool hasMemory()
{
    constexpr size_t size = size_t(64) * 1024 * 1024;
    void *memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory != MAP_FAILED && ::munmap(memory, size) == 0;
}

/// False with errno.
bool canBeReadThrough(const QByteArray &path)
{
    const Descriptor file(path, O_RDWR);
    if (file.number() < 0)
        return false;
    QByteArray block(256 * 1024, Qt::Uninitialized);
    ssize_t size = 0;
    do
        size = ::read(file.number(), block.data(), size_t(block.size()));
    while (size > 0);
    return size == 0;
}

/// False with errno.
bool canBeWritten(const QByteArray &path)
{
    const QByteArray page(4096, 'x');
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    const bool isWritten = file.number() >= 0
        && ::write(file.number(), page.constData(), size_t(page.size())) == page.size()
        && ::fsync(file.number()) == 0;
    const int problem = errno;
    ::unlink(path.constData());
    errno = problem;
    return isWritten;
}

const QByteArray magic("SQLite format 3\0", 16);

// The header of an SQLite 3 database, https://www.sqlite.org/fileformat.html#the_database_header
StoreError inspectHeader(const QByteArray &header, qint64 fileSize, bool hasVersion)
{
    if (fileSize == 0)
        return damaged(QStringLiteral("its database is empty"));
    if (header.size() < 100 || !header.startsWith(magic))
        return damaged(QStringLiteral("its database is no database"));
    const auto *bytes = reinterpret_cast<const uchar *>(header.constData());
    const quint32 stated = qFromBigEndian<quint16>(bytes + 16);
    const qint64 pageSize = stated == 1 ? 65536 : stated;
    if (pageSize < 512 || fileSize % pageSize != 0)
        return damaged(QStringLiteral("its database is cut off"));
    if (qint64(qFromBigEndian<quint32>(bytes + 28)) * pageSize > fileSize)
        return damaged(QStringLiteral("its database is cut off"));
    const quint32 version = qFromBigEndian<quint32>(bytes + 60);
    if (hasVersion && version != storeVersion)
        return {StoreError::OtherVersion,
            QStringLiteral("The tracker store has version %1, not %2").arg(version).arg(storeVersion)};
    return {};
}
} // namespace

QString StoreFolder::defaultPath()
{
    return UserFolders::data(QStringLiteral("tracker"));
}

StoreFolder::Lock::~Lock()
{
    ::close(m_fd);
}

std::unique_ptr<StoreFolder::Lock> StoreFolder::Lock::acquire(const QString &folder, StoreError *error)
{
    const QByteArray path = QFile::encodeName(folder + lockName);
    const int fd = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) {
        *error = noAccess(folder, reason());
        return nullptr;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0)
        return std::unique_ptr<Lock>(new Lock(fd));
    if (errno != EWOULDBLOCK)
        *error = noAccess(folder, reason());
    ::close(fd);
    return nullptr;
}

StoreError StoreFolder::prepare(const QString &folder)
{
    if (!UserFolders::makePrivate(folder))
        return noAccess(folder, QStringLiteral("the folder cannot be made"));
    const QByteArray path = QFile::encodeName(folder);
    if (::access(path.constData(), R_OK | W_OK | X_OK) != 0)
        return noAccess(folder, reason());
    struct statvfs disk = {};
    if (::statvfs(path.constData(), &disk) != 0)
        return noAccess(folder, reason());
    if (disk.f_flag & ST_RDONLY)
        return noAccess(folder, QStringLiteral("read-only file system"));
    if (quint64(disk.f_bavail) * disk.f_frsize < minimumSpace)
        return {StoreError::NoSpace, QStringLiteral("The disk of the tracker store is full: %1").arg(folder)};
    return {};
}

StoreError StoreFolder::inspect(const QString &folder)
{
    const QDir files(folder);
    const QStringList names = files.entryList({QStringLiteral("*.db")}, QDir::Files);
    for (const QString &name : names) {
        QFile file(files.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            return noAccess(folder, file.errorString());
        const QByteArray header = file.read(100);
        if (file.error() != QFile::NoError)
            return noAccess(folder, file.errorString());
        // While the last owner's log is still there, the file itself may be an old state: only its mark counts.
        const bool hasLog = QFileInfo(file.fileName() + QLatin1String("-wal")).size() > 0;
        if (hasLog && header.startsWith(magic))
            continue;
        if (StoreError error = inspectHeader(header, file.size(), QLatin1Char('/') + name == databaseName))
            return error;
    }
    return {};
}

StoreError StoreFolder::probe(const QString &folder)
{
    if (!hasMemory())
        return noAccess(folder, reason());
    const QDir files(folder);
    const QStringList names = files.entryList({QStringLiteral("*.db*")}, QDir::Files);
    for (const QString &name : names) {
        if (!canBeReadThrough(QFile::encodeName(files.filePath(name))))
            return noAccess(folder, reason());
    }
    if (canBeWritten(QFile::encodeName(folder + probeName)))
        return {};
    if (errno == ENOSPC || errno == EDQUOT)
        return {StoreError::NoSpace, QStringLiteral("The disk of the tracker store is full: %1").arg(folder)};
    return noAccess(folder, reason());
}

bool StoreFolder::hasStore(const QString &folder)
{
    struct stat file = {};
    // What cannot be looked at is there: a new store, noted as unfinished, would take its place.
    return ::stat(QFile::encodeName(folder + databaseName).constData(), &file) == 0
        || (errno != ENOENT && errno != ENOTDIR);
}

bool StoreFolder::setUnfinished(const QString &folder, bool unfinished)
{
    QFile note(folder + unfinishedName);
    return unfinished ? note.open(QIODevice::WriteOnly) : note.remove();
}

void StoreFolder::removeUnfinished(const QString &folder)
{
    if (!QFile::exists(folder + unfinishedName))
        return;
    const QDir files(folder);
    const QStringList names = storeFiles(folder);
    const bool removed = std::count_if(names.begin(), names.end(), [&files](const QString &name) {
        return QLatin1Char('/') + name != unfinishedName && !QFile::remove(files.filePath(name));
    }) == 0;
    // Last, and only when nothing else is left: it would be taken for a store of which something is missing.
    if (removed)
        setUnfinished(folder, false);
}

bool StoreFolder::canBeListed(const QString &folder)
{
    const Descriptor file(QFile::encodeName(folder), O_RDONLY | O_DIRECTORY);
    return file.number() >= 0 || errno == ENOENT || errno == ENOTDIR;
}

QByteArray StoreFolder::identity(const QString &folder)
{
    QByteArray result;
    const QDir files(folder);
    const QStringList names = files.entryList({QStringLiteral("*.db")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        struct stat file = {};
        if (::stat(QFile::encodeName(files.filePath(name)).constData(), &file) == 0)
            result += QByteArray::number(quint64(file.st_dev)) + ':'
                + QByteArray::number(quint64(file.st_ino)) + ' ';
    }
    return result;
}

QString StoreFolder::moveAside(const QString &folder)
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = folder + QLatin1String(".damaged-") + stamp;
    for (int number = 2; QFile::exists(target); ++number)
        target = QStringLiteral("%1.damaged-%2-%3").arg(folder, stamp).arg(number);
    if (!UserFolders::makePrivate(target))
        return {};
    bool moved = true;
    const QDir files(folder);
    QStringList names = storeFiles(folder);
    // The database itself goes last: for as long as it is there, what is not all gone is found to be damaged again.
    std::stable_partition(names.begin(), names.end(),
        [](const QString &name) { return QLatin1Char('/') + name != databaseName; });
    for (const QString &name : names)
        moved = QFile::rename(files.filePath(name), target + QLatin1Char('/') + name) && moved;
    return moved ? target : QString();
}

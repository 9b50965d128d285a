// SPDX-License-Identifier: MIT
#include "FolderTree.h"

#include "KelvoMessageHandler.h"
#include "MediaTypes.h"
#include "TextRepair.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
QByteArray parentOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray joined(const QByteArray &folder, const QByteArray &name)
{
    return folder == "/" ? folder + name : folder + '/' + name;
}

FileStamp stampOf(const struct stat &file)
{
    return {quint64(file.st_ino), qint64(file.st_size),
        qint64(file.st_mtim.tv_sec) * 1'000'000'000 + file.st_mtim.tv_nsec};
}

const KnownFile *find(const std::vector<KnownFile> &files, const QByteArray &name)
{
    const auto found = std::lower_bound(files.begin(), files.end(), name,
        [](const KnownFile &file, const QByteArray &wanted) { return file.name < wanted; });
    return found != files.end() && found->name == name ? &*found : nullptr;
}

/// Whether there is nothing; other errors leave open what there is.
bool saysGone(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

/// Lasts until somebody changes it, which is noticed.
bool isForbidden(int error)
{
    return error == EACCES || error == EPERM;
}

/// Null at the end, or with the error.
const dirent *nextEntry(DIR *folder, int *error)
{
    errno = 0;
    const dirent *entry = ::readdir(folder);
    if (!entry)
        *error = errno;
    return entry;
}

void sortByName(std::vector<KnownFile> &files)
{
    const auto byName = [](const KnownFile &a, const KnownFile &b) {
        return a.name < b.name;
    };
    if (!std::is_sorted(files.begin(), files.end(), byName))
        std::sort(files.begin(), files.end(), byName);
}
} // namespace

FolderTree::FolderTree(std::function<bool()> stop, std::function<void(const QByteArray &)> folderSeen)
    : m_stop(std::move(stop))
    , m_folderSeen(std::move(folderSeen))
{
}

void FolderTree::insert(const QByteArray &path, const KnownFile &file)
{
    std::vector<KnownFile> &files = m_folders[parentOf(path)].files;
    KnownFile entry = file;
    entry.name = path.mid(path.lastIndexOf('/') + 1);
    const auto place = std::lower_bound(files.begin(), files.end(), entry,
        [](const KnownFile &a, const KnownFile &b) { return a.name < b.name; });
    if (place != files.end() && place->name == entry.name)
        *place = entry;
    else
        files.insert(place, entry);
}

void FolderTree::load(const std::vector<std::pair<QByteArray, KnownFile>> &files)
{
    m_folders.clear();
    m_paths.clear();
    for (const auto &[path, file] : files) {
        m_folders[parentOf(path)].files.push_back(file);
        m_folders[parentOf(path)].files.back().name = path.mid(path.lastIndexOf('/') + 1);
    }
    for (Folder &folder : m_folders)
        sortByName(folder.files);
}

int FolderTree::fileCount() const
{
    qsizetype count = 0;
    for (const Folder &folder : m_folders)
        count += std::count_if(folder.files.begin(), folder.files.end(),
            [](const KnownFile &file) { return file.kind != MediaKind::Ignored; });
    return int(count);
}

FolderTree::Listing FolderTree::list(const QByteArray &path) const
{
    Listing listing;
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir(path.constData()), ::closedir);
    if (!folder) {
        listing.error = errno;
        return listing;
    }
    while (const dirent *entry = nextEntry(folder.get(), &listing.error)) {
        struct stat file = {};
        if (entry->d_name[0] == '.') // hidden
            continue;
        if (::fstatat(::dirfd(folder.get()), entry->d_name, &file, 0) != 0) {
            // A link whose target is missing is nothing.
            if (!saysGone(errno))
                listing.unknown.emplace_back(entry->d_name);
        } else if (S_ISDIR(file.st_mode))
            listing.subfolders.emplace_back(entry->d_name);
        else if (S_ISREG(file.st_mode) && file.st_size > 0)
            listing.files.push_back({entry->d_name, stampOf(file), 0, MediaKind::Ignored});
    }
    return listing;
}

void FolderTree::compareAll(const QList<QByteArray> &roots, Difference *difference)
{
    m_compared.clear();
    m_paths.clear();
    m_hasGaps = false;
    for (Folder &folder : m_folders)
        folder.seen = false;
    for (const QByteArray &root : roots)
        compareFolder(root, true, difference);
    if (!m_stop())
        forgetUnseen(difference);
}

void FolderTree::compare(const QSet<QByteArray> &folders, Difference *difference)
{
    m_compared.clear();
    for (const QByteArray &folder : folders)
        compareFolder(folder, false, difference);
}

void FolderTree::compareFolder(const QByteArray &path, bool deep, Difference *difference)
{
    struct stat self = {};
    if (m_stop() || m_compared.contains(path))
        return;
    m_compared.insert(path);
    const int problem = ::stat(path.constData(), &self) == 0 ? 0 : errno;
    if (problem != 0 && !saysGone(problem)) {
        keep(path, problem);
        return;
    }
    if (problem != 0 || !S_ISDIR(self.st_mode)) {
        forget(path, difference);
        return;
    }
    if (isAlias(path))
        return;
    m_folderSeen(path); // before it is read, so that nothing that comes after the reading is missed
    Listing listing = list(path);
    const auto known = m_folders.constFind(path);
    const Folder before = known != m_folders.constEnd() ? *known : Folder();
    if (listing.error != 0) {
        keep(path, listing.error);
        return;
    }
    m_unreadable.remove(path);
    takeOverUnknown(path, before, &listing);
    compareFiles(path, &before, listing.files, difference);
    m_folders[path] = {std::move(listing.files), listing.subfolders, true};
    for (const QByteArray &name : before.subfolders) {
        if (!std::binary_search(listing.subfolders.begin(), listing.subfolders.end(), name))
            forget(joined(path, name), difference);
    }
    for (const QByteArray &name : listing.subfolders) {
        const QByteArray subfolder = joined(path, name);
        if (deep || !m_folders.value(subfolder).seen)
            compareFolder(subfolder, true, difference);
    }
}

// Cannot be looked into: all that is known of it, and of what lies below, stays as it is.
void FolderTree::keep(const QByteArray &path, int error)
{
    if (!m_unreadable.contains(path))
        qCWarning(lcKelvo).noquote() << "Cannot look into the folder" << TextRepair::decode(path) << ':'
                                     << std::strerror(error);
    m_unreadable.insert(path);
    m_hasGaps = m_hasGaps || !isForbidden(error);
    m_folders[path].seen = true;
    const QByteArray below = joined(path, {});
    for (auto folder = m_folders.begin(); folder != m_folders.end(); ++folder)
        folder->seen = folder->seen || folder.key().startsWith(below);
}

// What is there but cannot be looked at stays what it was.
void FolderTree::takeOverUnknown(const QByteArray &path, const Folder &before, Listing *listing)
{
    for (const QByteArray &name : listing->unknown) {
        if (const KnownFile *file = find(before.files, name))
            listing->files.push_back(*file);
        else if (m_folders.contains(joined(path, name)))
            listing->subfolders.push_back(name);
    }
    sortByName(listing->files);
    std::sort(listing->subfolders.begin(), listing->subfolders.end());
}

// Whether the folder is looked into on another way already.
bool FolderTree::isAlias(const QByteArray &path)
{
    struct stat self = {};
    if (::stat(path.constData(), &self) != 0)
        return false;
    QByteArray &way = m_paths[{quint64(self.st_dev), quint64(self.st_ino)}];
    struct stat other = {};
    if (!way.isEmpty() && way != path && ::stat(way.constData(), &other) == 0 && other.st_dev == self.st_dev
        && other.st_ino == self.st_ino)
        return true;
    way = path;
    return false;
}

void FolderTree::compareFiles(
    const QByteArray &path, const Folder *known, std::vector<KnownFile> &listed, Difference *difference)
{
    for (KnownFile &file : listed) {
        const KnownFile *before = find(known->files, file.name);
        if (before && before->isCurrent && before->stamp.sameContent(file.stamp)) {
            file.number = before->number;
            file.kind = before->kind;
            continue;
        }
        file = classify(path, file, known);
        if (file.kind != MediaKind::Ignored)
            (file.number ? difference->changed : difference->added).push_back({path, file});
    }
    for (const KnownFile &file : known->files) {
        if (file.kind != MediaKind::Ignored && !find(listed, file.name))
            difference->missing.push_back({joined(path, file.name), file});
    }
    // What is to be read gets its place when it has been written into the store.
    std::erase_if(
        listed, [](const KnownFile &file) { return file.kind != MediaKind::Ignored && file.number == 0; });
}

KnownFile FolderTree::classify(const QByteArray &path, KnownFile file, const Folder *known) const
{
    const KnownFile *before = find(known->files, file.name);
    if (before && before->kind != MediaKind::Ignored) {
        // The store decides what it was; its entry keeps its kind until the file has been read.
        file.kind = before->kind;
        file.number = before->number;
        return file;
    }
    const MediaTypes::Verdict verdict = MediaTypes::fromName(file.name);
    file.kind = verdict.needsContent ? MediaTypes::sniff(joined(path, file.name)) : verdict.kind;
    return file;
}

void FolderTree::forget(const QByteArray &path, Difference *difference)
{
    if (!m_folders.contains(path))
        return;
    const Folder folder = m_folders.take(path);
    for (const KnownFile &file : folder.files) {
        if (file.kind != MediaKind::Ignored)
            difference->missing.push_back({joined(path, file.name), file});
    }
    for (const QByteArray &name : folder.subfolders)
        forget(joined(path, name), difference);
}

// Folders that the store knows from an earlier time and that no walk has come to.
void FolderTree::forgetUnseen(Difference *difference)
{
    QList<QByteArray> gone;
    for (auto folder = m_folders.cbegin(); folder != m_folders.cend(); ++folder) {
        if (!folder->seen)
            gone.append(folder.key());
    }
    for (const QByteArray &path : gone)
        forget(path, difference);
}

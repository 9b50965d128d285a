// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <map>
#include <vector>

/// The media folders as the index knows them, and the comparison with what is on the disk. Worker thread.
class FolderTree
{
public:
    /// A file that has to be read.
    struct Found
    {
        QByteArray folder;
        KnownFile file; ///< with the number of its resource when the index knows it, otherwise 0
    };
    /// A file that is not there any more.
    struct Missing
    {
        QByteArray path;
        KnownFile file;
    };
    struct Difference
    {
        std::vector<Found> added;
        std::vector<Found> changed;
        std::vector<Missing> missing;
    };

    /// `stop` is asked now and then; `folderSeen` hears of every folder that is looked into.
    FolderTree(std::function<bool()> stop, std::function<void(const QByteArray &)> folderSeen);

    /// Takes what the store holds in place of what was known.
    void load(const std::vector<std::pair<QByteArray, KnownFile>> &files);
    void insert(const QByteArray &path, const KnownFile &file);
    int fileCount() const;
    /// Whether the last comparison of everything, or one since, met what could not be read but may be before long.
    bool hasGaps() const { return m_hasGaps; }

    /// Compares everything below the given folders.
    void compareAll(const QList<QByteArray> &roots, Difference *difference);
    /// Compares the folders themselves, and everything below those that are new or gone.
    void compare(const QSet<QByteArray> &folders, Difference *difference);

private:
    struct Folder
    {
        std::vector<KnownFile> files;
        std::vector<QByteArray> subfolders; ///< names
        bool seen = false; ///< looked into by this process
    };
    struct Listing
    {
        std::vector<KnownFile> files;
        std::vector<QByteArray> subfolders;
        std::vector<QByteArray> unknown; ///< names of what cannot be looked at
        int error = 0;
    };

    Listing list(const QByteArray &path) const;
    void compareFolder(const QByteArray &path, bool deep, Difference *difference);
    void compareFiles(
        const QByteArray &path, const Folder *known, std::vector<KnownFile> &listed, Difference *difference);
    void keep(const QByteArray &path, int error);
    void takeOverUnknown(const QByteArray &path, const Folder &before, Listing *listing);
    void forget(const QByteArray &path, Difference *difference);
    void forgetUnseen(Difference *difference);
    bool isAlias(const QByteArray &path);
    KnownFile classify(const QByteArray &path, KnownFile file, const Folder *known) const;

    std::function<bool()> m_stop;
    std::function<void(const QByteArray &)> m_folderSeen;
    QHash<QByteArray, Folder> m_folders;
    // By device and inode: a folder that is reached on several ways, by links, is looked into on one of them.
    std::map<std::pair<quint64, quint64>, QByteArray> m_paths;
    QSet<QByteArray> m_compared; // in this pass
    QSet<QByteArray> m_unreadable; // already said
    bool m_hasGaps = false;
};

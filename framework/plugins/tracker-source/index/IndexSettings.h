// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

/// What the indexer looks through.
struct IndexSettings
{
    /// Absolute paths; a folder need not exist yet.
    QList<QByteArray> folders;
    /// What lies in here was downloaded; empty: there is no such folder.
    QByteArray downloadFolder;
    /// Take over the desktop's index, where it runs, instead of looking into files.
    bool useDesktopIndex = false;

    static IndexSettings fromEnvironment();
};

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "RowBlock.h"
#include "RowReader.h"

#include <QByteArray>
#include <QString>

#include <vector>

/// The built-in queries: which resource file holds each one and what its columns are.
struct CatalogQuery
{
    enum Placeholder : quint8 { NoPlaceholder, AlbumName, ArtistName };

    struct Column
    {
        const char *key = nullptr;
        CellType type = CellType::Text;
        /// What an empty text stands for.
        Placeholder placeholder = NoPlaceholder;
        /// In the shortcut.
        CellSource source = {};
    };

    QByteArray text;
    /// The same rows from what is kept with songs, albums and artists (see KeptRows); has no rows where nothing is kept.
    QByteArray shortcut;
    std::vector<Column> columns; ///< in the order of the SELECT list
    bool hasSubject = false; ///< the text has a place "~uri"

    std::vector<CellType> types() const;
    std::vector<CellSource> sources() const;

    /// The query of a KelvoTrackerModel::QueryType; one without columns for a number that is none. Lives as long as the
    /// program: results, which may live as long, share its texts. Any thread.
    static const CatalogQuery &find(int type);
    /// The text of a query's resource file.
    KELVO_TRACKER_EXPORT static QByteArray read(const char *name);
};

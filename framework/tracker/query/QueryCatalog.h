// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"
#include "RowBlock.h"

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
    };

    QByteArray text;
    std::vector<Column> columns; ///< in the order of the SELECT list
    bool hasSubject = false; ///< the text has a place "~uri"

    std::vector<CellType> types() const;

    /// The query of a KelvoTrackerModel::QueryType; one without columns for a number that is none.
    static CatalogQuery find(int type);
    /// The text of a query's resource file.
    KELVO_TRACKER_EXPORT static QByteArray read(const char *name);
};

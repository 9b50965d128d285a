// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>
#include <vector>

class QAbstractItemModel;

/// Which column of an underlying model holds what.
struct PlaylistColumns
{
    enum Role { Id, Title, Url, Duration, Artist, Album, MimeType, RoleCount };

    /// A column shown after the four that every playlist has.
    struct Extra
    {
        int column = -1;
        /// Artist, Album or MimeType (the playlist has these itself), or RoleCount: only the model has it.
        Role role = RoleCount;
        QString header;
        bool operator==(const Extra &) const = default;
    };

    /// Column of each role in the model, -1 when it has none.
    std::array<int, RoleCount> byRole{-1, -1, -1, -1, -1, -1, -1};
    /// Those that the playlist has itself come first, so that the others can go together with the model.
    std::vector<Extra> extras;

    static PlaylistColumns of(const QAbstractItemModel &model);
    static QString headerOf(Role role);
    /// Without the columns that only the model has.
    PlaylistColumns withoutModel() const;
};

// SPDX-License-Identifier: MIT
#include "PlaylistColumns.h"

#include <QAbstractItemModel>
#include <QStringList>

#include <algorithm>

namespace {
using Role = PlaylistColumns::Role;

// The names that column headers use for each role, best first. The "song..." and "playlist..." names are
// those of the results of a metadata query.
const QStringList &namesOf(Role role)
{
    static const std::array<QStringList, PlaylistColumns::RoleCount> names{
        QStringList{"id", "songId", "playlistId"},
        QStringList{"title", "songTitle", "playlistName"},
        QStringList{"url", "uri", "songUri", "songUrl", "playlistUri", "playlistUrl"},
        QStringList{"duration", "songLength", "length", "playlistLength"},
        QStringList{"artist", "artistName"},
        QStringList{"album", "albumName"},
        QStringList{"mimeType"},
    };
    return names[role];
}

// Header texts; empty where a model gives only the section's number, as models without headers do.
QStringList headersOf(const QAbstractItemModel &model)
{
    QStringList headers;
    const int n = model.columnCount();
    for (int column = 0; column < n; ++column) {
        QString text = model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString().trimmed();
        headers.append(text == QString::number(column + 1) ? QString() : text);
    }
    return headers;
}

int columnNamed(const QStringList &names, const QStringList &headers)
{
    for (const QString &name : names) {
        for (int column = 0; column < int(headers.size()); ++column) {
            if (headers.at(column).compare(name, Qt::CaseInsensitive) == 0)
                return column;
        }
    }
    return -1;
}

// A column at its usual place counts as the role when nothing says otherwise: the model has no useful headers
// at all, or this column has none (a header may become known late, column by column).
void fillByPosition(std::array<int, PlaylistColumns::RoleCount> &byRole, const QStringList &headers)
{
    const bool keyed = byRole[Role::Title] >= 0 || byRole[Role::Url] >= 0;
    for (int role : {Role::Id, Role::Title, Role::Url, Role::Duration}) {
        const int column = role; // The roles are in the order of KelvoPlaylist::Column.
        const bool free
            = column < headers.size() && std::find(byRole.begin(), byRole.end(), column) == byRole.end();
        if (byRole[role] < 0 && free && (!keyed || headers.at(column).isEmpty()))
            byRole[role] = column;
    }
}

std::vector<PlaylistColumns::Extra> extrasOf(const PlaylistColumns &columns, const QStringList &headers)
{
    std::vector<PlaylistColumns::Extra> extras;
    for (Role role : {Role::Artist, Role::Album, Role::MimeType}) {
        if (const int column = columns.byRole[role]; column >= 0)
            extras.push_back({column, role, headers.at(column)});
    }
    const auto &used = columns.byRole;
    for (int column = 0; column < headers.size(); ++column) {
        if (std::find(used.begin(), used.end(), column) == used.end())
            extras.push_back({column, Role::RoleCount, headers.at(column)});
    }
    return extras;
}
} // namespace

PlaylistColumns PlaylistColumns::of(const QAbstractItemModel &model)
{
    PlaylistColumns columns;
    const QStringList headers = headersOf(model);
    for (int role = 0; role < RoleCount; ++role)
        columns.byRole[role] = columnNamed(namesOf(Role(role)), headers);
    fillByPosition(columns.byRole, headers);
    columns.extras = extrasOf(columns, headers);
    return columns;
}

QString PlaylistColumns::headerOf(Role role)
{
    return namesOf(role).first();
}

PlaylistColumns PlaylistColumns::withoutModel() const
{
    PlaylistColumns columns;
    std::copy_if(extras.begin(), extras.end(), std::back_inserter(columns.extras),
        [](const Extra &extra) { return extra.role != RoleCount; });
    return columns;
}

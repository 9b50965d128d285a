// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QString>
#include <QUrl>

/// What a renderer's media change is about: the item that now plays.
struct KelvoContent
{
    /// Item uuid within its playlist (KelvoMediaInfo::uuid()); empty for media without a playlist
    QString uuid;
    QUrl url; ///< of what plays: within a list that is one item, of its entry
    QString mimeType; ///< IANA media type, empty when not known
};

Q_DECLARE_METATYPE(KelvoContent)

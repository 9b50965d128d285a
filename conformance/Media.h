// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QUrl>

/// What a renderer is given to play while it is held to the contract.
struct Media
{
    QString kind; ///< in words, for the card: "files"
    QList<QUrl> shortItems; ///< three different ones of half a second to two seconds
    QUrl longItem; ///< seekable, with a title
    int longSeconds = 10;
    QUrl failingItem; ///< cannot be played
    QUrl unseekableItem; ///< plays and cannot seek; empty: there is no such thing

    /// Those in a folder that writeTo() has filled, by its file: or http: URL.
    static Media inFolder(const QUrl &folder, const QString &kind);
    /// Those that a simulated renderer plays, which are nowhere.
    static Media simulated();

    /// Writes the files into a folder that is there: sound that every player decodes. False, and the reason, when that
    /// cannot be done.
    static bool writeTo(const QString &folder, QString *error);
};

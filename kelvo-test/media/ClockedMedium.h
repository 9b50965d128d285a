// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// A song or video that carries its clock (MediaClock), as a program of its own makes it: what stands on GStreamer is not
/// loaded into those that only want such media.
struct ClockedMedium
{
    /// How that program ends. What went wrong is on its standard error.
    enum ExitCode : int {
        Made = 0,
        CannotBeMade = 1, ///< something is missing that makes this format
        CannotBeWritten = 2, ///< the file; others cannot be there either
    };

    int item = 1; ///< from 1 to MediaClock::mostItems
    QString format; ///< one of formats()
    double seconds = 30;
    QString title; ///< told in the medium. In WebM, GStreamer 1.22 puts one with spaces into quotes

    /// Names of formats, which are the ends of the files' names, too.
    static QStringList soundFormats();
    static QStringList videoFormats();

    /// "song-03.flac".
    static QString fileName(int item, const QString &format);

    /// The program that makes it.
    static QString program();
    /// Its arguments but the last, which is the path of the file; that is written over.
    QStringList arguments() const;
};

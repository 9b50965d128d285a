// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <string>

/// What a recording says of itself in its first line.
struct RecordingHeader
{
    static constexpr int FormatVersion = 1;

    QString program;
    QString version;
    QString revision; ///< of the build
    QDateTime started; ///< the time 0 of its events
    QStringList plugins; ///< that run, by their file names
    qint64 pid = 0;

    std::string line() const;
};

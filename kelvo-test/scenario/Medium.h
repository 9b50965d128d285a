// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

/// How a server treats who asks for a medium. Moments are seconds of the medium: the byte that is there counts, however
/// fast it was read.
struct MediaFault
{
    int status = 200; ///< what the server answers; of others than 200 nothing is sent
    std::optional<double> stallAt; ///< sends nothing more from there on, and keeps the connection
    std::optional<double> cutAt; ///< closes the connection there
    double speed = 0; ///< times as fast as the medium plays; 0: as fast as the reader takes it
    std::optional<qint64> length; ///< claims this many bytes
    std::chrono::milliseconds delay{0}; ///< before the answer

    bool operator==(const MediaFault &) const = default;
};

/// Something to play: made for the purpose, or told by its address.
struct Medium
{
    enum Kind { Sound, Video, File, Address };

    QString name;
    Kind kind = Sound;
    int clock = 0; ///< the item whose clock it carries (MediaClock); 0: none
    QString format; ///< of what is made: the end of the file's name, such as "wav"
    int frequency = 440; ///< Hz
    double seconds = 10;
    QString title; ///< told in the medium
    QString path; ///< of a file
    QUrl address;
    MediaFault fault; ///< from the start
};

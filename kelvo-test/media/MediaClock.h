// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// The clock in test media: how what is heard or seen tells which item plays, and where in it.
///
/// An item is a number from 1 to mostItems. Each has an hour of its own: item 3 begins at 03:00:00:00, so that any reader
/// of linear time code shows which item plays. What is longer than an hour runs on into the next; the user bits of every
/// frame of the code name the item all the same.
///
/// Sound: linear time code (SMPTE 12M, 25 frames a second) on the left, a tone for measuring levels on the right.
/// Picture: a row of squares in the lower left corner, dark and bright (GStreamer's "simplevideomark"), which holds the item
/// and the number of the picture. Picture n and frame n of the code begin at the same moment, n / 25 s after the beginning.
namespace MediaClock {
constexpr int framesPerSecond = 25;
constexpr int sampleRate = 48'000; ///< of what is made; code is read at any rate
constexpr int samplesPerFrame = sampleRate / framesPerSecond;
constexpr int mostItems = 23; ///< the hours of a day but that which a clock not set has
constexpr qint64 framesPerHour = 3600LL * framesPerSecond;
constexpr qint64 framesPerDay = 24 * framesPerHour;

constexpr int codeChannel = 0;
constexpr int toneChannel = 1;
constexpr int channels = 2;
constexpr double codeLevel = -12; ///< dBFS, of its peaks
constexpr double toneLevel = -18; ///< dBFS: a sine of full scale has 0
constexpr int toneFrequency = 1000; ///< Hz

/// Of the squares, in pixels of a picture in its own size.
constexpr int markSize = 16;
constexpr int markGuards = 4; ///< squares that are always the same, before the others
constexpr int markBits = 32;
constexpr int pictureWidth = 640;
constexpr int pictureHeight = 360;

/// A moment of an item.
struct Moment
{
    int item = 0;
    qint64 frame = 0; ///< from its beginning

    double seconds() const { return double(frame) / framesPerSecond; }
    bool operator==(const Moment &) const = default;
};

/// What one frame of the code says.
struct Code
{
    qint64 frameOfDay = 0;
    quint32 userBits = 0;
};

Code codeOf(const Moment &moment);
/// Item 0 for a code that is none of ours.
Moment momentOf(const Code &code);

/// What the squares hold.
quint64 markOf(const Moment &moment);
/// Item 0 for what no picture of ours holds.
Moment momentOfMark(quint64 mark);

/// The share of full scale at that level.
double amplitudeOf(double decibels);
} // namespace MediaClock

// SPDX-License-Identifier: MIT
#pragma once

#include "MediaClock.h"

#include <span>
#include <vector>

/// A mark (MediaClock) that was found in a picture.
struct FrameMark
{
    MediaClock::Moment moment; ///< item 0: it is there, and cannot be read
    double left = 0; ///< pixels
    int top = 0; ///< first row in which it was found, pixels
    int bottom = 0; ///< last one
    double square = 0; ///< width of one of its squares, pixels
};

/// Finds marks wherever they are in a picture, in whatever size they are shown: bars beside the picture, a frame around it
/// and the size of the window do not matter.
namespace FrameMarkReader {
/// Smallest width of a square that can be read. Pixels.
constexpr int smallestSquare = 4;

/// Of 8 bits a pixel, row after row without gaps.
struct Picture
{
    std::span<const uchar> pixels;
    int width = 0;
    int height = 0;
};

std::vector<FrameMark> find(const Picture &picture);
} // namespace FrameMarkReader

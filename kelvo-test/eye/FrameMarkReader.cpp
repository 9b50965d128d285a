// SPDX-License-Identifier: MIT
#include "FrameMarkReader.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {
constexpr int middle = 128;
/// What lies between them may be either: two pictures that are shown at once, or none of ours.
constexpr int darkest = 100;
constexpr int brightest = 156;
constexpr int squares = MediaClock::markGuards + MediaClock::markBits;
/// Items are small numbers: the first bits are dark.
constexpr int darkBits = 3;
/// No row of squares is lower than that share of their width.
constexpr double leastHeight = 0.4;
constexpr int rowStep = 2;

using Row = std::span<const uchar>;

bool isBright(uchar pixel)
{
    return pixel >= middle;
}

/// Where the brightness changes: the first pixel of each piece but the first.
std::vector<int> edgesOf(Row row)
{
    std::vector<int> edges;
    for (size_t i = 1; i < row.size(); ++i) {
        if (isBright(row[i]) != isBright(row[i - 1]))
            edges.push_back(int(i));
    }
    return edges;
}

/// Squares of one row of pixels, their places kept by the edges between them.
class Ruler
{
public:
    Ruler(double left, double square)
        : m_left(left)
        , m_square(square)
    {
    }

    /// By the edge that is nearest to the end of that square, if there is one near.
    void adjust(int number, const std::vector<int> &edges)
    {
        const double end = m_left + m_square * (number + 1);
        const auto next = std::lower_bound(edges.cbegin(), edges.cend(), end);
        for (const auto &edge : {next, next == edges.cbegin() ? next : next - 1}) {
            if (edge != edges.cend() && std::abs(*edge - end) < m_square / 3)
                m_square = (*edge - m_left) / (number + 1);
        }
    }
    double centreOf(int number) const { return m_left + m_square * (number + 0.5); }
    double left() const { return m_left; }
    double square() const { return m_square; }

private:
    const double m_left;
    double m_square;
};

std::optional<bool> bitAt(Row row, double place)
{
    const auto pixel = size_t(std::max(0.0, place));
    if (pixel >= row.size() || (row[pixel] > darkest && row[pixel] < brightest))
        return std::nullopt;
    return isBright(row[pixel]);
}

/// A mark whose first bright square is between the first two of these edges; nothing where there is none.
std::optional<FrameMark> markAt(Row row, const std::vector<int> &edges, size_t first)
{
    const int begin = edges[first];
    const double square = (edges[first + 3] - begin) / 3.0;
    const auto isOneSquare = [&](size_t edge) {
        return std::abs(edges[edge + 1] - edges[edge] - square) <= 1 + square / 8;
    };
    const double left = begin - square;
    const bool isGuard = square >= FrameMarkReader::smallestSquare && isOneSquare(first)
        && isOneSquare(first + 1) && isOneSquare(first + 2) && left > -2 && isBright(row[size_t(begin)]);
    if (!isGuard || left + square * squares > double(row.size()) + square / 2)
        return std::nullopt;
    Ruler ruler(left, square);
    quint64 data = 0;
    for (int number = 0; number < squares; ++number) {
        const std::optional<bool> bit = bitAt(row, ruler.centreOf(number));
        const bool isForeseen = number >= MediaClock::markGuards + darkBits
            || bit == (number < MediaClock::markGuards && number % 2 == 1);
        if (!isForeseen)
            return std::nullopt;
        if (!bit)
            return FrameMark{{}, left, 0, 0, ruler.square()};
        if (number >= MediaClock::markGuards)
            data = data << 1 | quint64(*bit);
        ruler.adjust(number, edges);
    }
    return FrameMark{MediaClock::momentOfMark(data), left, 0, 0, ruler.square()};
}

/// Each row of a mark tells it again: they must agree.
void join(std::vector<FrameMark> &marks, const FrameMark &found, int row)
{
    const auto same = std::find_if(marks.begin(), marks.end(), [&](const FrameMark &mark) {
        return std::abs(mark.left - found.left) < mark.square && row - mark.bottom <= mark.square;
    });
    if (same == marks.end()) {
        marks.push_back(found);
        marks.back().top = marks.back().bottom = row;
        return;
    }
    same->bottom = row;
    if (same->moment != found.moment)
        same->moment = {};
}

/// Texts and symbols around a picture have places that look like the begin of a mark, and are much smaller.
void dropOrnaments(std::vector<FrameMark> &marks)
{
    double largest = 0; // square of those that can be read
    for (const FrameMark &mark : marks) {
        if (mark.moment.item > 0)
            largest = std::max(largest, mark.square);
    }
    std::erase_if(marks,
        [largest](const FrameMark &mark) { return mark.moment.item == 0 && mark.square < largest / 2; });
}
} // namespace

std::vector<FrameMark> FrameMarkReader::find(const Picture &picture)
{
    std::vector<FrameMark> marks;
    for (int row = 0; row < picture.height; row += rowStep) {
        const Row pixels = picture.pixels.subspan(size_t(row) * size_t(picture.width), size_t(picture.width));
        const std::vector<int> edges = edgesOf(pixels);
        double end = 0; // of the last mark: its own squares are no other one
        for (size_t first = 0; first + 3 < edges.size(); ++first) {
            const std::optional<FrameMark> mark
                = edges[first] < end ? std::nullopt : markAt(pixels, edges, first);
            if (!mark)
                continue;
            join(marks, *mark, row);
            end = mark->left + mark->square * squares;
        }
    }
    std::erase_if(marks,
        [](const FrameMark &mark) { return mark.bottom - mark.top + rowStep < leastHeight * mark.square; });
    dropOrnaments(marks);
    return marks;
}

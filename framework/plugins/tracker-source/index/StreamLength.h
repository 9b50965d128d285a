// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <atomic>

/// Finds out how long a medium is by going through all of it, for files whose headers do not say so. One thread at a
/// time but for interrupt().
class StreamLength
{
public:
    enum Way {
        Parsing, ///< frame by frame, 30 ms for a song of five minutes
        Decoding, ///< exact to the last sample, and ten times as slow
    };

    /// Milliseconds; 0 when that fails, was called off or would take too long.
    qint64 count(const QByteArray &path, Way way) const;
    /// Any thread. Ends a counting and all later ones.
    void interrupt() { m_interrupted = true; }

private:
    std::atomic<bool> m_interrupted{false};
};

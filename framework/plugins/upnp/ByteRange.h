// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// What part of a resource a request is for, by its "Range" (RFC 9110, 14.1.2). What makes no sense, counts in other units
/// than bytes, or asks for several parts means the whole, as that RFC lets a server do.
struct ByteRange
{
    enum Kind {
        Whole,
        Part,
        Beyond, ///< nothing of what was asked for is there
    };

    Kind kind = Whole;
    qint64 from = 0;
    qint64 length = 0; ///< bytes that are to be sent

    /// @param range  the header's value; null when there is none
    /// @param size  of the resource, in bytes
    static ByteRange of(const QByteArray &range, qint64 size);
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>

/// The most memory that this process has had at a time so far, or since beginPeakMemory(), in bytes; -1: not known.
inline qint64 peakMemory()
{
    constexpr qint64 kilobyte = 1024;
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').constFirst().toLongLong() * kilobyte;
    }
    return -1;
}

/// What this process has had until now does not count any more. Returns what it has now, in bytes.
inline qint64 beginPeakMemory()
{
    QFile references(QStringLiteral("/proc/self/clear_refs"));
    if (references.open(QIODevice::WriteOnly))
        references.write("5");
    references.close();
    return peakMemory();
}

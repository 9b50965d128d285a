// SPDX-License-Identifier: MIT
#pragma once

#include "MediaClock.h"
#include "TimeCodeWave.h"

#include <QProcess>

#include <cmath>
#include <vector>

/// Plays the sound of test media by another program of the desktop; ends with this.
class CodePlayer : public QProcess
{
public:
    /// @param share  of the amplitude
    CodePlayer(int item, double from, double seconds, double share = 1)
    {
        // So much lies with the server that a busy machine leaves no gaps; it is dropped with the player.
        start(QStringLiteral("pacat"),
            {QStringLiteral("--raw"), QStringLiteral("--rate=48000"), QStringLiteral("--channels=2"),
                QStringLiteral("--format=s16le"), QStringLiteral("--latency-msec=1000")});
        TimeCodeWave wave(item, std::llround(from * MediaClock::sampleRate));
        std::vector<qint16> samples = wave.read(std::llround(seconds * MediaClock::sampleRate));
        for (qint16 &sample : samples)
            sample = qint16(sample * share);
        write(
            reinterpret_cast<const char *>(samples.data()), qint64(samples.size()) * qint64(sizeof(qint16)));
        closeWriteChannel();
    }
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// A WAV file with a steady tone and a title, of which each part is made when it is asked for: 16 bits, one channel.
class ToneWave
{
public:
    static constexpr int Rate = 22'050; ///< samples a second
    static constexpr int BytesPerSecond = 2 * Rate;

    ToneWave(int frequency, double seconds, const QString &title);

    qint64 size() const { return m_head.size() + m_dataSize; }
    /// Where the sound begins. Bytes.
    qint64 headSize() const { return m_head.size(); }
    /// At most so many bytes from there on; fewer at the end.
    QByteArray read(qint64 from, qint64 most) const;

private:
    qint64 m_dataSize = 0;
    QByteArray m_head;
    QByteArray m_second; ///< of the tone: whole periods, because its frequency is a whole number
};

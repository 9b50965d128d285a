// SPDX-License-Identifier: MIT
#include "ToneWave.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {
template <typename Number> QByteArray little(Number number)
{
    QByteArray bytes(sizeof number, Qt::Uninitialized);
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// A part of a RIFF file; those of odd length are followed by a zero that does not count.
QByteArray chunk(const char *name, const QByteArray &content)
{
    return name + little(quint32(content.size())) + content + QByteArray(content.size() % 2, '\0');
}

QByteArray format()
{
    constexpr quint16 pcm = 1;
    constexpr quint16 channels = 1;
    constexpr quint16 bytes = 2;
    return chunk("fmt ",
        little(pcm) + little(channels) + little(quint32(ToneWave::Rate))
            + little(quint32(ToneWave::BytesPerSecond)) + little(bytes) + little(quint16(8 * bytes)));
}
} // namespace

ToneWave::ToneWave(int frequency, double seconds, const QString &title)
    : m_dataSize(2 * std::llround(seconds * Rate))
{
    constexpr double loudness = 0.3 * 32767;
    const QByteArray facts = chunk("LIST", "INFO" + chunk("INAM", title.toUtf8() + '\0'));
    const QByteArray inside = "WAVE" + format() + facts + "data" + little(quint32(m_dataSize));
    m_head = "RIFF" + little(quint32(inside.size() + m_dataSize)) + inside;
    m_second.resize(BytesPerSecond);
    for (int i = 0; i < Rate; ++i) {
        const double angle = 2 * std::numbers::pi * frequency * i / Rate;
        qToLittleEndian(qint16(std::lround(loudness * std::sin(angle))), m_second.data() + 2 * qsizetype(i));
    }
}

QByteArray ToneWave::read(qint64 from, qint64 most) const
{
    const qint64 end = std::min(from + most, size());
    QByteArray part = m_head.mid(from, std::max<qint64>(0, end - from));
    while (from + part.size() < end) {
        const qint64 at = (from + part.size() - m_head.size()) % BytesPerSecond;
        part += m_second.mid(at, end - from - part.size());
    }
    return part;
}

// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <memory>
#include <vector>

struct LTCEncoder;

/// The sound of an item, as MediaClock says: made one part after the other, without an end.
class TimeCodeWave
{
public:
    /// @param skipped  samples of its beginning that are left out
    explicit TimeCodeWave(int item, qint64 skipped = 0);
    ~TimeCodeWave();
    Q_DISABLE_COPY_MOVE(TimeCodeWave)

    /// The next so many samples of both channels, which take turns: 16 bits.
    std::vector<qint16> read(qsizetype samples);

private:
    struct Closer
    {
        void operator()(LTCEncoder *encoder) const;
    };
    qint16 nextOfCode();
    qint16 nextOfTone();
    void encodeFrame();

    const std::unique_ptr<LTCEncoder, Closer> m_encoder;
    const quint8 *m_code = nullptr; ///< what is left of the present frame, in the encoder's memory
    int m_codeLeft = 0;
    qint64 m_toneSample = 0;
};

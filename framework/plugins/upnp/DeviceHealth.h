// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Whether a device that was announced answers, and so whether it is worth showing. Times in milliseconds of any
/// steady clock.
///
/// A device is shown as soon as it is announced. It counts as not responding after two failed polls in a row, and
/// is hidden 10 s after its last sign of life. One answer makes it whole again. When nothing is heard of it any more either,
/// it is not worth asking after five minutes.
class DeviceHealth
{
public:
    enum State { Present, Responding, NotResponding };

    explicit DeviceHealth(qint64 now)
        : m_lastSign(now)
        , m_nextPoll(now + FirstPoll)
    {
    }

    void answered(qint64 now)
    {
        m_state = Responding;
        m_failures = 0;
        m_lastSign = now;
        m_nextPoll = now + PollInterval;
    }
    void failed(qint64 now)
    {
        if (++m_failures >= 2)
            m_state = NotResponding;
        m_nextPoll = now + (m_state == NotResponding ? PatientInterval : RetryInterval);
    }
    /// A poll is on its way: the next one is due when it has ended.
    void polling() { m_nextPoll = Never; }
    /// Somebody else found it not answering: ask at once.
    void doubt(qint64 now)
    {
        if (m_nextPoll != Never)
            m_nextPoll = qMin(m_nextPoll, now);
    }

    State state() const { return m_state; }
    bool isPollDue(qint64 now) const { return now >= m_nextPoll; }
    bool isShown(qint64 now) const { return m_state != NotResponding || now - m_lastSign < HideAfter; }
    bool isForgotten(qint64 now) const { return now - m_lastSign >= ForgetAfter; }

private:
    static constexpr qint64 FirstPoll = 1000;
    static constexpr qint64 PollInterval = 4000;
    static constexpr qint64 RetryInterval = 1000;
    static constexpr qint64 PatientInterval = 3000;
    static constexpr qint64 HideAfter = 10'000;
    static constexpr qint64 ForgetAfter = 300'000;
    static constexpr qint64 Never = 0x7fff'ffff'ffff'ffff;

    State m_state = Present;
    int m_failures = 0;
    qint64 m_lastSign;
    qint64 m_nextPoll;
};

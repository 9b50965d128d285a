// SPDX-License-Identifier: MIT
#pragma once

#include "MprisSnapshot.h"

#include <QObject>
#include <QTimer>

class MprisCalls;

/// Asks a player for all its properties, one question being under way at a time.
class MprisQuestions : public QObject
{
    Q_OBJECT
public:
    /// @param calls  lives longer than this
    explicit MprisQuestions(MprisCalls *calls, QObject *parent = nullptr);

    void ask();
    void askIn(int milliseconds);
    /// The answer that may be on its way is out of date.
    void outdate() { ++m_generation; }

Q_SIGNALS:
    void answered(const MprisSnapshot &now);
    /// There was none, or it was out of date.
    void unanswered();

private:
    MprisCalls *const m_calls;
    quint64 m_generation = 0; ///< answers to earlier questions are out of date
    bool m_isAsking = false;
    bool m_isToAskAgain = false;
    QTimer m_nextQuestion;
};

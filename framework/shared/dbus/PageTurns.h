// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QPointer>

#include <deque>
#include <functional>

/// Keeps the requests that are under way to one process at the same time below what it answers at a time: a thousand
/// of its lists may be wanted at once.
class PageTurns : public QObject
{
    Q_OBJECT
public:
    static constexpr int AtOnce = 32;

    using QObject::QObject;

    /// Calls begin() at once, or as soon as others have given their turns back; never when the asker is gone by then.
    void take(QObject *asker, std::function<void()> begin);
    void giveBack();
    /// Who waits will not get a turn.
    void dropWaiting() { m_waiting.clear(); }

private:
    struct Waiting
    {
        QPointer<QObject> asker;
        std::function<void()> begin;
    };

    int m_taken = 0;
    std::deque<Waiting> m_waiting;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "StoreConnection.h"

#include <QString>

#include <deque>
#include <functional>
#include <memory>

class StoreSession;

/// Small updates of the store, in their order. What a disk that is full or fails has refused waits here, in memory, and is
/// tried again. One thread.
class UpdateQueue
{
public:
    using Update = std::function<void(StoreConnection &, StoreError *)>;

    /// Behind those that wait. What fails for a reason that does not pass goes into the log and is gone.
    void run(const std::shared_ptr<StoreSession> &session, Update update);
    /// Tries what waits again, until something is refused again.
    void runWaiting(const std::shared_ptr<StoreSession> &session);
    bool isEmpty() const { return m_waiting.empty(); }
    /// Gives up what waits, and says so.
    void discard();

private:
    enum Outcome { Done, Refused, Closed };
    Outcome tryUpdate(const std::shared_ptr<StoreSession> &session, const Update &update);

    std::deque<Update> m_waiting;
    QString m_reason; ///< of the last refusal
};

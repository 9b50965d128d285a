// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

/// Waits until a command is told to have failed, that was given to a device as it began to hang; false when it is not told
/// in time. Each request is given three seconds; before the command's there may be a question that was under way when the
/// device began to hang.
inline bool failsInTime(const QSignalSpy &errors, const QElapsedTimer &sinceItHangs)
{
    constexpr int patience = 3000; // milliseconds
    constexpr int lateness = 1500;
    if (!QTest::qWaitFor([&errors] { return errors.size() == 1; }, 2 * patience + lateness))
        return false;
    const qint64 took = sinceItHangs.elapsed();
    qInfo("told after %lld ms", took);
    return took >= patience - 100 && took < 2 * patience + lateness;
}

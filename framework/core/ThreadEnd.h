// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>
#include <QThread>

#include <chrono>
#include <memory>

/// Deletes a thread once it has ended, which the caller asks it to do after this. GUI thread.
///
/// Nobody waits for it but the end of the application, and that no longer than longestWait: see leaveRunning().
KELVO_CORE_EXPORT void deleteWhenEnded(
    std::unique_ptr<QThread> thread, std::chrono::milliseconds longestWait = std::chrono::seconds(5));

/// Leaves alone what does not end, with a warning in the log that names it: nobody waits for it any more, and the process
/// ends without destroying what it may use. The exit code stays. Any thread.
KELVO_CORE_EXPORT void leaveRunning(const QString &name);
/// The same of a thread; deleting a QThread that runs would end the program.
KELVO_CORE_EXPORT void leaveRunning(std::unique_ptr<QThread> thread);

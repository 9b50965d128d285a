// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QThread>

#include <chrono>
#include <memory>

/// Deletes a thread once it has ended, which the caller asks it to do after this. GUI thread.
///
/// Nobody waits for it but the end of the application, and that no longer than longestWait: a thread that hangs is left
/// alone with a warning in the log, because deleting a running QThread ends the program.
KELVO_CORE_EXPORT void deleteWhenEnded(
    std::unique_ptr<QThread> thread, std::chrono::milliseconds longestWait = std::chrono::seconds(5));

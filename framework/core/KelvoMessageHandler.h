// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QLoggingCategory>

class QTextStream;

/// The log category of the framework and its back ends ("kelvo"): use qCDebug(lcKelvo), qCWarning(lcKelvo).
KELVO_CORE_EXPORT const QLoggingCategory &lcKelvo();

/// Set-up of the framework's logging.
class KELVO_CORE_EXPORT KelvoMessageHandler
{
public:
    /// Switches the framework's debug lines on or off (warnings are always written), and names a stream that
    /// receives a copy of every message of the process, one line each; null means no copy. The messages
    /// themselves go where Qt sends them. The stream is not owned and must outlive its use: call again with
    /// null before it goes. GUI thread; messages of other threads are written to the stream under a lock.
    static void initKelvoLogging(bool enabled, QTextStream *stream);
};

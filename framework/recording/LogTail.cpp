// SPDX-License-Identifier: MIT
#include "LogTail.h"

#include "EventLine.h"
#include "EventRing.h"

#include <QString>
#include <QtGlobal>

#include <algorithm>

namespace {
constexpr EventRing::Limits keptOfLog{5'000, quint64(1024) * 1024};

std::chrono::steady_clock::time_point logBegin;
QtMessageHandler handlerBefore = nullptr;

/// Never destroyed: destructors of others log until the very end.
EventRing &logRing()
{
    static EventRing &ring = *new EventRing(keptOfLog);
    return ring;
}

void keep(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QString formatted = qFormatLogMessage(type, context, message);
    if (!formatted.isNull()) {
        std::string line;
        EventLine::appendSeconds(line, std::chrono::steady_clock::now() - logBegin);
        line += ' ';
        line += formatted.toStdString();
        // One line each, however many a message has.
        std::replace(line.begin(), line.end(), '\n', ' ');
        line += '\n';
        logRing().append(line);
    }
    if (handlerBefore)
        handlerBefore(type, context, message);
}
} // namespace

void LogTail::install(std::chrono::steady_clock::time_point begin)
{
    // Somebody may have put a handler on top of this one, which a second installation would call in a circle.
    static const bool installed = [begin] {
        logBegin = begin;
        logRing();
        handlerBefore = qInstallMessageHandler(keep);
        return true;
    }();
    Q_UNUSED(installed)
}

const EventRing &LogTail::lines()
{
    return logRing();
}

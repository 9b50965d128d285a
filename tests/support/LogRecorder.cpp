// SPDX-License-Identifier: MIT
#include "LogRecorder.h"

#include <mutex>

namespace {
std::mutex recordedMutex;
QStringList recorded;
QStringList recordedWarnings;
QtMessageHandler previous = nullptr;

void record(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    {
        const std::scoped_lock lock(recordedMutex);
        recorded.append(message);
        if (type == QtWarningMsg || type == QtCriticalMsg)
            recordedWarnings.append(message);
    }
    if (previous)
        previous(type, context, message);
}
} // namespace

LogRecorder::LogRecorder()
{
    clear();
    m_previous = qInstallMessageHandler(record);
    previous = m_previous;
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(m_previous);
    previous = nullptr;
}

QStringList LogRecorder::lines() const
{
    const std::scoped_lock lock(recordedMutex);
    return recorded;
}

QStringList LogRecorder::warnings() const
{
    const std::scoped_lock lock(recordedMutex);
    return recordedWarnings;
}

bool LogRecorder::containsInOrder(const QStringList &expected) const
{
    const QStringList all = lines();
    auto position = all.cbegin();
    for (const QString &line : expected) {
        position = std::find(position, all.cend(), line);
        if (position == all.cend())
            return false;
        ++position;
    }
    return true;
}

void LogRecorder::clear()
{
    const std::scoped_lock lock(recordedMutex);
    recorded.clear();
    recordedWarnings.clear();
}

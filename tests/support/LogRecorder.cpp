// SPDX-License-Identifier: MIT
#include "LogRecorder.h"

#include <QMutex>
#include <QMutexLocker>

namespace {
QBasicMutex mutex;
QStringList recorded;
QStringList recordedWarnings;
QtMessageHandler previous = nullptr;

void record(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    {
        QMutexLocker lock(&mutex);
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
    QMutexLocker lock(&mutex);
    return recorded;
}

QStringList LogRecorder::warnings() const
{
    QMutexLocker lock(&mutex);
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
    QMutexLocker lock(&mutex);
    recorded.clear();
    recordedWarnings.clear();
}

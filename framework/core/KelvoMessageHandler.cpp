// SPDX-License-Identifier: MIT
#include "KelvoMessageHandler.h"

#include <QTextStream>

#include <mutex>

Q_LOGGING_CATEGORY(lcKelvo, "kelvo", QtInfoMsg)

namespace {
std::mutex streamMutex;
QTextStream *copyStream = nullptr;
QtMessageHandler nextHandler = nullptr;

void copyMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    {
        const std::scoped_lock lock(streamMutex);
        if (copyStream) {
            *copyStream << qFormatLogMessage(type, context, message) << '\n';
            copyStream->flush();
        }
    }
    if (nextHandler)
        nextHandler(type, context, message);
}

void setCopyStream(QTextStream *stream)
{
    const std::scoped_lock lock(streamMutex);
    copyStream = stream;
}
} // namespace

void KelvoMessageHandler::initKelvoLogging(bool enabled, QTextStream *stream)
{
    const_cast<QLoggingCategory &>(lcKelvo()).setEnabled(QtDebugMsg, enabled);
    setCopyStream(stream);
    // Installed on first need and left in place: a test framework's handler may have been installed on top since,
    // and taking ours out would take that one out, too.
    if (stream && !nextHandler)
        nextHandler = qInstallMessageHandler(copyMessage);
}

// SPDX-License-Identifier: MIT
#include "FuzzSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <glib.h>

namespace {
void dropMessage(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg) {
        fprintf(stderr, "%s\n", qPrintable(message));
        abort();
    }
}
GLogWriterOutput dropGlibMessage(GLogLevelFlags, const GLogField *, gsize, void *)
{
    return G_LOG_WRITER_HANDLED;
}
} // namespace

/// Readers complain of nearly all that they are given here, which would take longer than the reading.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qInstallMessageHandler(dropMessage);
    g_log_set_writer_func(dropGlibMessage, nullptr, nullptr);
    static const QCoreApplication application(*argc, *argv);
    return 0;
}

QByteArray Fuzz::bytes(const uint8_t *data, size_t size)
{
    return {reinterpret_cast<const char *>(data), qsizetype(size)};
}

QString Fuzz::file(const QByteArray &data, const QString &name)
{
    QFile file(QDir::temp().filePath(name));
    require(file.open(QIODevice::WriteOnly) && file.write(data) == data.size());
    return file.fileName();
}

bool Fuzz::isClean(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.unicode() < 0x20 || c.unicode() >= 0xfffe || c.isLowSurrogate())
            return false;
        if (c.isHighSurrogate() && (++i == text.size() || !text.at(i).isLowSurrogate()))
            return false;
    }
    return true;
}

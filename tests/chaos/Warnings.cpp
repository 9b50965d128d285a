// SPDX-License-Identifier: MIT
#include "Warnings.h"

#include <QMutex>
#include <QRegularExpression>

#include <cstdio>
#include <cstdlib>

namespace {
QMutex mutex;
QStringList unexpected;
int expected = 0;

/// What a step that is no fault of the console makes it say.
const QRegularExpression &expectations()
{
    static const QRegularExpression all(QStringLiteral(
        // The user asks for what cannot be.
        "^Please select item to extend!$|addToPlaylist\\(const QAbstractItemModel&, int, int\\)"
        "|No playlist of this process has the id|^Playlist \".*\" has no items? -?\\d+ |can only be "
        "read$|has no property \".*\" that can be set$"
        // What this platform of the toolkit cannot, and what two consoles with one home have to share.
        "|^This plugin does not support |The tracker store is in use by another process"
        // Devices that leave something out, or are gone.
        "|^GLib: Could not find variable|^gupnp-control-point: "
        // Renderers that lie.
        "|^Illegal colorkey value:"));
    return all;
}

void take(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    const QMutexLocker lock(&mutex);
    if (expectations().match(message).hasMatch()) {
        ++expected;
        return;
    }
    unexpected.append(message);
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", message.toUtf8().constData());
        std::abort();
    }
}
} // namespace

void Warnings::install()
{
    qInstallMessageHandler(take);
}

QStringList Warnings::takeUnexpected()
{
    const QMutexLocker lock(&mutex);
    return std::exchange(unexpected, {});
}

int Warnings::expectedCount()
{
    const QMutexLocker lock(&mutex);
    return expected;
}

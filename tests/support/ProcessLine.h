// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

/// The next whole line that a process writes, without its end; empty when none comes in time (milliseconds between two
/// pieces). What a program writes at once may come in pieces, the end of a line by itself.
inline QByteArray nextLine(QProcess &process, int patience = 10'000)
{
    while (!process.canReadLine() && process.waitForReadyRead(patience)) { }
    return process.canReadLine() ? process.readLine().chopped(1) : QByteArray();
}

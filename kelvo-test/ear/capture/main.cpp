// SPDX-License-Identifier: MIT
// kelvo-ear DEVICE
// Listens to a source of the sound server and writes a line for what it hears of media with a clock (Hearing). kelvo-test
// starts this where it wants to hear, and ends it.
#include "CapturePipeline.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.size() != 1) {
        std::fputs("usage: kelvo-ear DEVICE\n", stderr);
        return 1;
    }
    gst_init(nullptr, nullptr);
    const QString reason = CapturePipeline(words.constFirst()).run();
    std::fprintf(stderr, "%s\n", reason.toUtf8().constData());
    return 1;
}

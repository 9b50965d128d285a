// SPDX-License-Identifier: MIT
// kelvo-eye PLACE
// Looks at a window or a part of the screen and writes a line for what it sees of media with a clock (Sighting). kelvo-test
// starts this where it wants to see, and ends it.
#include "EndSignal.h"
#include "ScreenWatch.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.size() != 1) {
        std::fputs("usage: kelvo-eye WINDOW | X,Y,WIDTH,HEIGHT | auto\n", stderr);
        return 1;
    }
    QString error;
    std::unique_ptr<LookedAtPlace> place = LookedAtPlace::open(words.constFirst(), &error);
    if (!place) {
        std::fprintf(stderr, "%s\n", error.toUtf8().constData());
        return 1;
    }
    ScreenWatch(std::move(place)).run(EndSignal::watch());
    return 0;
}

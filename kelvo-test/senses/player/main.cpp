// SPDX-License-Identifier: MIT
// kelvo-bare-player sound SINK FILE | picture WINDOW FILE
// Plays a medium by a pipeline that does nothing else, and writes ten times a second where it is: "at TIME POSITION", both
// in seconds, the time by the steady clock. kelvo-test starts this to know how well it hears and sees, and ends it.
#include "BarePipeline.h"
#include "EndSignal.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    const bool isSound = words.value(0) == QLatin1String("sound");
    if (words.size() != 3 || (!isSound && words.at(0) != QLatin1String("picture"))) {
        std::fputs("usage: kelvo-bare-player sound SINK FILE | picture WINDOW FILE\n", stderr);
        return 1;
    }
    gst_init(nullptr, nullptr);
    const std::atomic<bool> &isEnded = EndSignal::watch();
    BarePipeline pipeline = isSound ? BarePipeline::sound(words.at(1), words.at(2))
                                    : BarePipeline::picture(words.at(1).toUInt(), words.at(2));
    const QString problem = pipeline.run(isEnded);
    std::fputs(problem.toUtf8().constData(), stderr);
    return problem.isEmpty() ? 0 : 1;
}

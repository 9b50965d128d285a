// SPDX-License-Identifier: MIT
// kelvo-media-maker FORMAT ITEM SECONDS TITLE FILE
// Makes one medium with a clock in it. kelvo-test starts this where such media are wanted, and ends it to call it off.
#include "MediaClock.h"
#include "MediaPipeline.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace {
ClockedMedium::ExitCode complain(const QString &text, ClockedMedium::ExitCode code)
{
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
    return code;
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    ClockedMedium medium;
    medium.format = words.value(0);
    medium.item = words.value(1).toInt();
    medium.seconds = words.value(2).toDouble();
    medium.title = words.value(3);
    gst_init(nullptr, nullptr);
    const std::optional<Recipe> recipe = Recipe::of(medium.format);
    const bool isRight = words.size() == 5 && recipe && medium.item >= 1
        && medium.item <= MediaClock::mostItems && medium.seconds > 0;
    if (!isRight)
        return complain(QStringLiteral("usage: kelvo-media-maker FORMAT ITEM SECONDS TITLE FILE"),
            ClockedMedium::CannotBeMade);
    if (const QString missing = recipe->missing(); !missing.isEmpty())
        return complain(missing, ClockedMedium::CannotBeMade);
    MediaPipeline pipeline(*recipe, medium, words.at(4));
    const ClockedMedium::ExitCode code = pipeline.run();
    return code == ClockedMedium::Made ? code : complain(pipeline.error(), code);
}

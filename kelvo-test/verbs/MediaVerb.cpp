// SPDX-License-Identifier: MIT
#include "MediaVerb.h"

#include "MediaFolder.h"
#include "Output.h"
#include "VerbOptions.h"

namespace {
constexpr int longest = 24 * 3600; // seconds: the code begins again then

QStringList allFormats()
{
    return ClockedMedium::soundFormats() + ClockedMedium::videoFormats();
}

VerbOptions mediaOptions()
{
    const QString many = QString::number(MediaClock::mostItems);
    VerbOptions options(QStringLiteral("media"), QStringLiteral("DIR"),
        QStringLiteral(
            "Makes media that tell by themselves which of them plays, and where in it, for devices that need "
            "files:\nsongs with time code on the left and a tone on the right, videos with marked pictures "
            "besides.\ndocs/media.md tells how to read them. At most ")
            + many + QStringLiteral(" at a time: each has an hour of its own."));
    options.add(QStringLiteral("seconds"), QStringLiteral("number"),
        QStringLiteral("How long each is; 30 when not given."), QStringLiteral("30"));
    options.add(QStringLiteral("format"), QStringLiteral("names"),
        QStringLiteral("Of these, with commas: %1; all when not given.")
            .arg(allFormats().join(QStringLiteral(", "))));
    options.add(QStringLiteral("songs"), QStringLiteral("number"),
        QStringLiteral("How many songs of each format; 1 when not given."), QStringLiteral("1"));
    options.add(QStringLiteral("videos"), QStringLiteral("number"),
        QStringLiteral("How many videos of each format; 1 when not given."), QStringLiteral("1"));
    options.addExample(QStringLiteral("kelvo-test media /media/stick"),
        QStringLiteral("a song and a video of each format, half a minute long"));
    options.addExample(QStringLiteral("kelvo-test media music --format mp3,flac --songs 5 --seconds 180"),
        QStringLiteral("ten songs of three minutes"));
    return options;
}

/// Songs first, formats in the order of the list; numbered from 1.
QList<ClockedMedium> mediaOf(const QStringList &chosen, int songs, int videos, int seconds)
{
    QList<ClockedMedium> media;
    for (const QString &format : allFormats()) {
        const int wanted = ClockedMedium::videoFormats().contains(format) ? videos : songs;
        for (int i = 0; i < wanted && chosen.contains(format); ++i) {
            const int item = int(media.size()) + 1;
            media.append({item, format, double(seconds), ClockedMedium::fileName(item, format)});
        }
    }
    return media;
}

QString problemOf(const QStringList &chosen, const QList<ClockedMedium> &media)
{
    for (const QString &format : chosen) {
        if (!allFormats().contains(format))
            return QStringLiteral("there is no format \"%1\": choose of %2")
                .arg(format, allFormats().join(QStringLiteral(", ")));
    }
    if (media.isEmpty())
        return QStringLiteral("no songs and no videos: there is nothing to make");
    if (media.size() > MediaClock::mostItems)
        return QStringLiteral(
            "these are %1 media, and there are hours for %2: choose fewer formats, songs or videos")
            .arg(media.size())
            .arg(MediaClock::mostItems);
    return {};
}

/// What the words ask for; nothing where that cannot be, with a problem.
QList<ClockedMedium> wishesOf(VerbOptions &options, QString *problem)
{
    const auto seconds = options.number(QStringLiteral("seconds"), 1, longest);
    const auto songs = options.number(QStringLiteral("songs"), 0, MediaClock::mostItems);
    const auto videos = options.number(QStringLiteral("videos"), 0, MediaClock::mostItems);
    *problem = options.problem();
    if (!problem->isEmpty())
        return {};
    const QStringList chosen = options.isSet(QStringLiteral("format"))
        ? options.value(QStringLiteral("format")).split(u',')
        : allFormats();
    QList<ClockedMedium> media = mediaOf(chosen, *songs, *videos, *seconds);
    *problem = problemOf(chosen, media);
    return media;
}
} // namespace

QString MediaVerb::name() const
{
    return QStringLiteral("media");
}

QString MediaVerb::summary() const
{
    return QStringLiteral("makes media with a clock in them");
}

QString MediaVerb::help() const
{
    return mediaOptions().help();
}

int MediaVerb::run(const QStringList &arguments)
{
    VerbOptions options = mediaOptions();
    QString problem;
    QList<ClockedMedium> media;
    if (!options.parse(arguments))
        problem = options.problem();
    else if (options.positional().size() != 1)
        problem = QStringLiteral("media takes one folder");
    else
        media = wishesOf(options, &problem);
    if (!problem.isEmpty()) {
        Output::complain(problem);
        return CouldNotRun;
    }
    return MediaFolder(options.positional().constFirst()).make(media) ? Held : CouldNotRun;
}

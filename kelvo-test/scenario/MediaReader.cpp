// SPDX-License-Identifier: MIT
#include "MediaReader.h"

#include "ClockedMedium.h"
#include "MediaClock.h"
#include "Spelling.h"
#include "YamlNode.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {
constexpr double longestMedium = 3600; // seconds
constexpr int lowest = 20;
constexpr int highest = 20'000; // Hz

QStringList formatsOf(const Medium &medium)
{
    const bool isVideo = medium.kind == Medium::Video;
    if (medium.clock > 0)
        return isVideo ? ClockedMedium::videoFormats() : ClockedMedium::soundFormats();
    return isVideo ? QStringList{QStringLiteral("mp4"), QStringLiteral("webm"), QStringLiteral("mkv")}
                   : QStringList{QStringLiteral("wav"), QStringLiteral("flac"), QStringLiteral("ogg"),
                       QStringLiteral("opus"), QStringLiteral("mp3"), QStringLiteral("m4a")};
}

/// Whether it is to carry a clock, instead of what it plainly holds.
bool wantsClock(const YamlNode &entry, const QString &plain)
{
    const QString clock = QStringLiteral("timecode");
    return entry.word({plain, clock}) == clock;
}

void checkName(const YamlNode &node)
{
    static const QRegularExpression form(QStringLiteral("^[A-Za-z][A-Za-z0-9_-]{0,39}$"));
    if (!form.match(node.name()).hasMatch())
        node.fail(
            QStringLiteral("\"%1\" is no name: letters, digits, - and _, a letter first").arg(node.name()));
}

QString pathOf(const YamlNode &node)
{
    const QFileInfo file(QFileInfo(node.place().file).dir(), node.text());
    if (!file.isFile())
        node.fail(QStringLiteral("there is no file \"%1\"").arg(file.filePath()));
    return file.absoluteFilePath();
}

QUrl addressOf(const YamlNode &node)
{
    QUrl url(node.text(), QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        node.fail(QStringLiteral("\"%1\" is no address such as http://host/song.mp3").arg(node.text()));
    return url;
}

void takeKind(Medium &medium, const YamlNode &entry)
{
    if (entry.name() == QLatin1String("sound")) {
        medium.kind = Medium::Sound;
        medium.clock = wantsClock(entry, QStringLiteral("tone")) ? 1 : 0;
    } else if (entry.name() == QLatin1String("video")) {
        medium.kind = Medium::Video;
        medium.clock = wantsClock(entry, QStringLiteral("test")) ? 1 : 0;
    } else if (entry.name() == QLatin1String("file")) {
        medium.kind = Medium::File;
        medium.path = pathOf(entry);
    } else if (entry.name() == QLatin1String("url")) {
        medium.kind = Medium::Address;
        medium.address = addressOf(entry);
    }
}

void takeDetail(Medium &medium, const YamlNode &entry)
{
    if (entry.name() == QLatin1String("seconds"))
        medium.seconds = entry.number(0.1, longestMedium);
    else if (entry.name() == QLatin1String("frequency"))
        medium.frequency = entry.integer(lowest, highest);
    else if (entry.name() == QLatin1String("title"))
        medium.title = entry.text();
    else if (entry.name() == QLatin1String("fault"))
        medium.fault = MediaReader::fault(entry);
}

Medium readMedium(const YamlNode &node)
{
    static const QStringList kinds{
        QStringLiteral("sound"), QStringLiteral("video"), QStringLiteral("file"), QStringLiteral("url")};
    checkName(node);
    Medium medium;
    medium.name = medium.title = node.name();
    QStringList given;
    const std::vector<YamlNode> entries = node.entries(kinds
        + QStringList{QStringLiteral("seconds"), QStringLiteral("frequency"), QStringLiteral("title"),
            QStringLiteral("format"), QStringLiteral("fault")});
    for (const YamlNode &entry : entries) {
        if (kinds.contains(entry.name()))
            given.append(entry.name());
        takeKind(medium, entry);
        takeDetail(medium, entry);
    }
    if (given.size() != 1)
        node.fail(QStringLiteral("\"%1\" must be one of: sound, video, file, url").arg(node.name()));
    medium.format = medium.kind == Medium::Video ? QStringLiteral("mp4") : QStringLiteral("wav");
    if (const auto format = node.find(QStringLiteral("format")))
        medium.format = format->word(formatsOf(medium));
    return medium;
}
} // namespace

QList<Medium> MediaReader::media(const YamlNode &node)
{
    QList<Medium> media;
    int clocks = 0;
    for (const YamlNode &entry : node.entries()) {
        Medium medium = readMedium(entry);
        // Each has an hour of its own, in the order of the file.
        if (medium.clock > 0)
            medium.clock = ++clocks;
        if (clocks > MediaClock::mostItems)
            entry.fail(QStringLiteral("at most %1 media carry a time code").arg(MediaClock::mostItems));
        media.append(medium);
    }
    return media;
}

QList<NamedPlaylist> MediaReader::playlists(const YamlNode &node, const QList<Medium> &media)
{
    QList<NamedPlaylist> playlists;
    for (const YamlNode &entry : node.entries()) {
        checkName(entry);
        if (entry.name() == QLatin1String("none"))
            entry.fail(QStringLiteral("\"none\" stands for no playlist"));
        NamedPlaylist playlist{entry.name(), {}};
        for (const YamlNode &item : entry.items())
            playlist.media.append(mediumName(item, media, true));
        playlists.append(playlist);
    }
    return playlists;
}

MediaFault MediaReader::fault(const YamlNode &node, const QStringList &more)
{
    MediaFault fault;
    const QStringList known{QStringLiteral("status"), QStringLiteral("stall"), QStringLiteral("cut"),
        QStringLiteral("speed"), QStringLiteral("length"), QStringLiteral("delay")};
    for (const YamlNode &entry : node.entries(known + more)) {
        if (entry.name() == QLatin1String("status"))
            fault.status = entry.integer(200, 599);
        else if (entry.name() == QLatin1String("stall"))
            fault.stallAt = double(entry.time().count()) / 1000;
        else if (entry.name() == QLatin1String("cut"))
            fault.cutAt = double(entry.time().count()) / 1000;
        else if (entry.name() == QLatin1String("speed"))
            fault.speed = entry.number(0.01, 1000);
        else if (entry.name() == QLatin1String("length"))
            fault.length = entry.integer(0, 2'000'000'000);
        else if (entry.name() == QLatin1String("delay"))
            fault.delay = entry.time();
    }
    return fault;
}

QString MediaReader::mediumName(const YamlNode &node, const QList<Medium> &media, bool mayBeAddress)
{
    const QString text = node.text();
    QStringList names;
    for (const Medium &medium : media)
        names.append(u'$' + medium.name);
    if (names.contains(text))
        return text.mid(1);
    if (text.startsWith(u'$') || !mayBeAddress)
        node.fail(QStringLiteral("there is no medium \"%1\"%2").arg(text, Spelling::suggestion(text, names)));
    return addressOf(node).toString();
}

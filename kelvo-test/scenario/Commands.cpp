// SPDX-License-Identifier: MIT
#include "Commands.h"

#include "ItemList.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"

#include <algorithm>

namespace {
using Arguments = QVariantMap;

const auto none = QStringLiteral("none");

Parameter list()
{
    return {QStringLiteral("list"), Parameter::PlaylistName};
}
Parameter uri()
{
    return {QStringLiteral("uri"), Parameter::MediumName};
}
Parameter index()
{
    return {QStringLiteral("index"), Parameter::Index};
}
Parameter seconds()
{
    return {QStringLiteral("seconds"), Parameter::Seconds};
}
Parameter text(const QString &name)
{
    return {name, Parameter::Text};
}
Parameter word(const QString &name, const QStringList &words, const QString &otherwise = {})
{
    return {name, Parameter::Word, words, otherwise};
}

int integer(const Arguments &arguments, const char *name)
{
    return arguments.value(QLatin1String(name)).toInt();
}
QString string(const Arguments &arguments, const char *name)
{
    return arguments.value(QLatin1String(name)).toString();
}
KelvoGeneralSourcePlaylist &playlistOf(Stage &stage, const Arguments &arguments)
{
    return stage.playlist(string(arguments, "list"));
}

void assignPlaylist(Stage &stage, const Arguments &arguments)
{
    const QString name = string(arguments, "list");
    stage.renderer().assignPlaylist(name == none ? nullptr : &stage.playlist(name));
}

void setPosition(Stage &stage, const Arguments &arguments)
{
    const bool isRelative = string(arguments, "mode") == QLatin1String("relative");
    stage.renderer().setPosition(integer(arguments, "seconds"),
        isRelative ? KelvoRenderer::SeekRelative : KelvoRenderer::SeekAbsolute);
}

void setProperties(Stage &stage, const Arguments &arguments)
{
    for (auto property = arguments.cbegin(); property != arguments.cend(); ++property)
        stage.renderer().setKelvoProperty(property.key(), property.value());
}

void setRepeatMode(Stage &stage, const Arguments &arguments)
{
    const QString mode = string(arguments, "mode");
    playlistOf(stage, arguments)
        .setRepeatMode(mode == QLatin1String("all") ? KelvoPlaylist::RepeatAll
                : mode == QLatin1String("one")      ? KelvoPlaylist::RepeatOne
                                                    : KelvoPlaylist::RepeatOff);
}

void sort(Stage &stage, const Arguments &arguments)
{
    const bool isByTitle = string(arguments, "by") == QLatin1String("title");
    const bool isDescending = string(arguments, "order") == QLatin1String("descending");
    const int title = isDescending ? KelvoPlaylist::TitleDescending : KelvoPlaylist::TitleAscending;
    const int duration = isDescending ? KelvoPlaylist::DurationDescending : KelvoPlaylist::DurationAscending;
    playlistOf(stage, arguments)
        .sort(isByTitle ? KelvoPlaylist::SortKeyTitle : KelvoPlaylist::SortKeyDuration,
            isByTitle ? title : duration);
}

QList<Command> playbackCommands()
{
    return {
        {QStringLiteral("play"), {},
            [](Stage &stage, const Arguments &) {
                stage.renderer().play();
            }},
        {QStringLiteral("stop"), {},
            [](Stage &stage, const Arguments &) {
                stage.renderer().stop();
            }},
        {QStringLiteral("pause"), {},
            [](Stage &stage, const Arguments &) {
                stage.renderer().pause();
            }},
        {QStringLiteral("resume"), {},
            [](Stage &stage, const Arguments &) {
                stage.renderer().resume();
            }},
        {QStringLiteral("next"), {},
            [](Stage &stage, const Arguments &) {
                stage.renderer().next();
            }},
        {QStringLiteral("previous"), {},
            [](Stage &stage, const Arguments &) {
                stage.renderer().previous();
            }},
        {QStringLiteral("playUri"), {uri()},
            [](Stage &stage, const Arguments &given) {
                stage.renderer().playUri(stage.url(string(given, "uri")));
            }},
        {QStringLiteral("playUriWithType"), {uri(), text(QStringLiteral("type"))},
            [](Stage &stage, const Arguments &given) {
                stage.renderer().playUriWithType(stage.url(string(given, "uri")), string(given, "type"));
            }},
        {QStringLiteral("pauseAt"), {seconds()},
            [](Stage &stage, const Arguments &given) {
                stage.renderer().pauseAt(uint(integer(given, "seconds")));
            }},
        {QStringLiteral("gotoIndex"), {index()},
            [](Stage &stage, const Arguments &given) {
                stage.renderer().gotoIndex(uint(integer(given, "index")));
            }},
        {QStringLiteral("setPosition"),
            {seconds(),
                word(QStringLiteral("mode"), {QStringLiteral("absolute"), QStringLiteral("relative")},
                    QStringLiteral("absolute"))},
            setPosition},
        {QStringLiteral("assignPlaylist"), {list()}, assignPlaylist},
        {QStringLiteral("setKelvoProperty"), {{QStringLiteral("properties"), Parameter::Properties}},
            setProperties},
    };
}

QList<Command> otherCommands()
{
    return {
        {QStringLiteral("shuffle"), {list()},
            [](Stage &stage, const Arguments &given) { playlistOf(stage, given).shuffle(); }, false},
        {QStringLiteral("unshuffle"), {list()},
            [](Stage &stage, const Arguments &given) { playlistOf(stage, given).unshuffle(); }, false},
        {QStringLiteral("clear"), {list()},
            [](Stage &stage, const Arguments &given) { playlistOf(stage, given).clear(); }, false},
        {QStringLiteral("setRepeatMode"),
            {list(),
                word(QStringLiteral("mode"),
                    {QStringLiteral("all"), QStringLiteral("off"), QStringLiteral("one")})},
            setRepeatMode, false},
        {QStringLiteral("sort"),
            {list(), word(QStringLiteral("by"), {QStringLiteral("title"), QStringLiteral("duration")}),
                word(QStringLiteral("order"), {QStringLiteral("ascending"), QStringLiteral("descending")},
                    QStringLiteral("ascending"))},
            sort, false},
        {QStringLiteral("removeItem"), {list(), index()},
            [](Stage &stage, const Arguments &given) {
                playlistOf(stage, given).removeItem(uint(integer(given, "index")));
            },
            false},
        {QStringLiteral("addItem"), {list(), {QStringLiteral("item"), Parameter::MediumName}},
            [](Stage &stage, const Arguments &given) {
                ItemList::append(playlistOf(stage, given), stage.url(string(given, "item")));
            },
            false},
        {QStringLiteral("loadPlugin"), {text(QStringLiteral("file"))},
            [](Stage &stage, const Arguments &given) { stage.registry().loadPlugin(string(given, "file")); },
            false},
        {QStringLiteral("unloadPlugin"), {text(QStringLiteral("file"))},
            [](Stage &stage, const Arguments &given) {
                stage.registry().unloadPlugin(string(given, "file"));
            },
            false},
    };
}
} // namespace

const QList<Command> &Command::all()
{
    static const QList<Command> commands = playbackCommands() + otherCommands();
    return commands;
}

const Command *Command::find(const QString &name)
{
    const auto found = std::find_if(
        all().cbegin(), all().cend(), [&name](const Command &command) { return command.name == name; });
    return found == all().cend() ? nullptr : &*found;
}

QStringList Command::names()
{
    QStringList names;
    for (const Command &command : all())
        names.append(command.name);
    return names;
}

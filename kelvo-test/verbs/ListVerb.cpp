// SPDX-License-Identifier: MIT
#include "ListVerb.h"

#include "KelvoPlaylist.h"
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoSource.h"
#include "Output.h"
#include "Session.h"
#include "VerbOptions.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {
VerbOptions listOptions()
{
    VerbOptions options(QStringLiteral("list"), {},
        QStringLiteral("Shows the renderers, sources and playlists that are there after a while, and the "
                       "back ends with their\n"
                       "state and, where one failed, the reason."));
    options.add(QStringLiteral("json"), {}, QStringLiteral("Writes one JSON object instead of text."));
    options.add(QStringLiteral("wait"), QStringLiteral("time"),
        QStringLiteral("How long to wait for what comes and goes; 2s when not given."), QStringLiteral("2s"));
    options.addExample(QStringLiteral("kelvo-test list --wait 5s"),
        QStringLiteral("also those devices of the network that answer late"));
    options.addExample(QStringLiteral("KELVO_PLUGINS=simulator kelvo-test list --json"),
        QStringLiteral("the simulated renderers alone, for a program to read"));
    return options;
}

QJsonObject named(const QString &uuid, const QString &name)
{
    return {{QStringLiteral("uuid"), uuid}, {QStringLiteral("name"), name}};
}

QJsonObject pluginObject(const KelvoPluginStatus &status)
{
    return {{QStringLiteral("file"), status.fileName}, {QStringLiteral("path"), status.path},
        {QStringLiteral("name"), status.name}, {QStringLiteral("version"), status.version},
        {QStringLiteral("brings"), QJsonArray::fromStringList(status.brings)},
        {QStringLiteral("state"), status.stateText()}, {QStringLiteral("error"), status.error}};
}

/// The back ends that could run, and those that were asked for and are not there.
QStringList pluginFiles(const KelvoPluginLoader &loader)
{
    QStringList files = loader.available();
    for (QString file : qEnvironmentVariable("KELVO_PLUGINS").split(u',', Qt::SkipEmptyParts)) {
        file = file.trimmed();
        if (!file.endsWith(QLatin1String(".so")))
            file += QLatin1String(".so");
        if (!files.contains(file) && !loader.failure(file).isEmpty())
            files.append(file);
    }
    return files;
}

QJsonObject inventory(const KelvoRegistry &registry)
{
    QJsonArray renderers;
    for (const KelvoRenderer *renderer : registry.renderers())
        renderers.append(named(renderer->uuid(), renderer->name()));
    QJsonArray sources;
    for (const KelvoSource *source : registry.sources())
        sources.append(named(source->uuid(), source->name()));
    QJsonArray playlists;
    for (const KelvoPlaylist *playlist : registry.allPlaylists()) {
        QJsonObject object = named(playlist->uuid(), playlist->name());
        object.insert(QStringLiteral("items"), playlist->count());
        object.insert(QStringLiteral("writable"), playlist->isWritable());
        playlists.append(object);
    }
    const KelvoPluginLoader &loader = *registry.pluginLoader();
    QJsonArray plugins;
    for (const QString &file : pluginFiles(loader)) {
        KelvoPluginStatus status = loader.status(file);
        status.fileName = file;
        if (status.error.isEmpty())
            status.error = loader.failure(file);
        plugins.append(pluginObject(status));
    }
    return {{QStringLiteral("renderers"), renderers}, {QStringLiteral("sources"), sources},
        {QStringLiteral("playlists"), playlists}, {QStringLiteral("plug-ins"), plugins}};
}

void showNamed(Output &output, const QString &title, const QJsonArray &objects)
{
    output.line(title + (objects.isEmpty() ? QStringLiteral(": none") : QStringLiteral(":")));
    for (const QJsonValueConstRef value : objects) {
        const QString uuid = value[QLatin1String("uuid")].toString();
        const QString name = value[QLatin1String("name")].toString();
        output.line(QStringLiteral("  %1  %2")
                        .arg(uuid, -36)
                        .arg(name.isEmpty() ? QStringLiteral("(no name)") : name));
    }
}

void showPlugins(Output &output, const QJsonArray &objects)
{
    output.line(objects.isEmpty() ? QStringLiteral("Back ends: none") : QStringLiteral("Back ends:"));
    for (const QJsonValueConstRef value : objects) {
        const QString state = value[QLatin1String("state")].toString();
        const QString error = value[QLatin1String("error")].toString();
        const QString text
            = QStringLiteral("  %1  %2").arg(value[QLatin1String("file")].toString(), -36).arg(state);
        output.line(error.isEmpty() ? text : text + QStringLiteral(": ") + error,
            error.isEmpty() ? Output::Tone::Plain : Output::Tone::Bad);
    }
}

void show(const QJsonObject &inventory)
{
    Output output;
    showNamed(output, QStringLiteral("Renderers"), inventory[QLatin1String("renderers")].toArray());
    showNamed(output, QStringLiteral("Sources"), inventory[QLatin1String("sources")].toArray());
    showNamed(output, QStringLiteral("Playlists"), inventory[QLatin1String("playlists")].toArray());
    showPlugins(output, inventory[QLatin1String("plug-ins")].toArray());
}
} // namespace

QString ListVerb::name() const
{
    return QStringLiteral("list");
}

QString ListVerb::summary() const
{
    return QStringLiteral("shows the renderers, sources, playlists and back ends");
}

QString ListVerb::help() const
{
    return listOptions().help();
}

int ListVerb::run(const QStringList &arguments)
{
    VerbOptions options = listOptions();
    const auto wait = options.parse(arguments) ? options.time(QStringLiteral("wait")) : std::nullopt;
    if (!wait || !options.positional().isEmpty()) {
        Output::complain(
            options.problem().isEmpty() ? QStringLiteral("list takes no arguments") : options.problem());
        return CouldNotRun;
    }
    Session session;
    session.waitFor(*wait);
    const QJsonObject inventory = ::inventory(*session.registry());
    if (options.isSet(QStringLiteral("json")))
        std::fputs(QJsonDocument(inventory).toJson().constData(), stdout);
    else
        show(inventory);
    return Held;
}

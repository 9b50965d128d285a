// SPDX-License-Identifier: MIT
#include "PlayVerb.h"

#include "Output.h"
#include "Player.h"
#include "Session.h"
#include "VerbOptions.h"

#include <QDir>
#include <QEventLoop>
#include <QTimer>
#include <QUrl>

namespace {
VerbOptions playOptions()
{
    VerbOptions options(QStringLiteral("play"), QStringLiteral("URL..."),
        QStringLiteral("Plays on a renderer until nothing more plays, and shows its states, positions, facts "
                       "and errors.\n"
                       "Several URLs play as a playlist. What is no URL is the name of a file. At a "
                       "terminal, keys work as\n"
                       "in a player. Ends with 0 when all was played, with 1 after errors."));
    options.add(QStringLiteral("on"), QStringLiteral("renderer"),
        QStringLiteral("Its name, its uuid, or a glob that fits it alone."));
    options.add(QStringLiteral("wait"), QStringLiteral("time"),
        QStringLiteral("How long to wait for the renderer; 5s when not given."), QStringLiteral("5s"));
    options.add(QStringLiteral("for"), QStringLiteral("time"), QStringLiteral("Stops after that time."));
    options.addExample(
        QStringLiteral("kelvo-test play song.flac http://host/stream.mp3 --on KelvoGstRenderer"),
        QStringLiteral("a file, and then a stream"));
    return options;
}

QList<QUrl> urlsOf(const QStringList &texts)
{
    QList<QUrl> urls;
    for (const QString &text : texts)
        urls.append(QUrl::fromUserInput(text, QDir::currentPath(), QUrl::AssumeLocalFile));
    return urls;
}

int refuse(const QString &problem)
{
    Output::complain(problem);
    return Verb::CouldNotRun;
}

int playOn(
    Session &session, KelvoRenderer *renderer, const QStringList &texts, std::chrono::milliseconds atMost)
{
    Output output;
    Player player(renderer, &output);
    const QPointer<KelvoRenderer> guarded(renderer);
    QEventLoop loop;
    QObject::connect(&player, &Player::finished, &loop, &QEventLoop::quit);
    QObject::connect(&session, &Session::interrupted, &loop, &QEventLoop::quit);
    if (atMost.count() > 0)
        QTimer::singleShot(atMost, &loop, &QEventLoop::quit);
    player.play(urlsOf(texts));
    loop.exec();
    if (guarded && !player.isStopped())
        session.silence(guarded);
    return player.hasFailed() ? Verb::Failed : Verb::Held;
}
} // namespace

QString PlayVerb::name() const
{
    return QStringLiteral("play");
}

QString PlayVerb::summary() const
{
    return QStringLiteral("plays URLs or files on a renderer");
}

QString PlayVerb::help() const
{
    return playOptions().help();
}

int PlayVerb::run(const QStringList &arguments)
{
    VerbOptions options = playOptions();
    if (!options.parse(arguments))
        return refuse(options.problem());
    const auto wait = options.time(QStringLiteral("wait"));
    const auto atMost = options.isSet(QStringLiteral("for")) ? options.time(QStringLiteral("for"))
                                                             : std::chrono::milliseconds(0);
    if (!wait || !atMost)
        return refuse(options.problem());
    if (options.positional().isEmpty())
        return refuse(QStringLiteral("play needs a URL or the name of a file"));
    if (!options.isSet(QStringLiteral("on")))
        return refuse(QStringLiteral("play needs a renderer: --on NAME (\"kelvo-test list\" shows them)"));
    Session session;
    const RendererChoice choice = session.chooseOne(options.value(QStringLiteral("on")), *wait);
    if (!choice.problem.isEmpty())
        return refuse(choice.problem);
    return playOn(session, choice.renderers.constFirst(), options.positional(), *atMost);
}

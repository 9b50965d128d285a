// SPDX-License-Identifier: MIT
#include "Session.h"

#include "Ear.h"
#include "Eye.h"
#include "KelvoBuild.h"
#include "KelvoPluginLoader.h"
#include "KelvoRenderer.h"
#include "KelvoShared.h"
#include "Quantities.h"
#include "Recorder.h"
#include "RendererPattern.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <iterator>

using namespace std::chrono_literals;

namespace {
constexpr auto lookInterval = 20ms;
/// Back ends bring what they have at once, and devices of a network answer in a burst.
constexpr std::chrono::milliseconds settlingTime = 500ms;
constexpr std::chrono::milliseconds silencingTime = 2s;

QString titled(const KelvoRenderer *renderer)
{
    return QStringLiteral("\"%1\" (%2)").arg(renderer->name(), renderer->uuid());
}

QString listOf(const QList<KelvoRenderer *> &renderers)
{
    QStringList texts;
    std::transform(renderers.cbegin(), renderers.cend(), std::back_inserter(texts), titled);
    return texts.join(QStringLiteral(", "));
}
} // namespace

Session::Session(const QString &recording, QObject *parent)
    : QObject(parent)
    , m_recorder(Recorder::start(registry(),
          {QCoreApplication::applicationName(), QCoreApplication::applicationVersion(),
              KelvoBuild::revision()},
          recording.isEmpty() ? Recorder::fileOfEnvironment() : recording))
{
    const auto news = [this] {
        m_sinceNews.start();
    };
    connect(&m_interruption, &Interruption::requested, this, &Session::interrupted);
    connect(registry(), &KelvoRegistry::rendererAdded, this, news);
    connect(registry(), &KelvoRegistry::rendererRemoved, this, news);
    connect(registry()->pluginLoader(), &KelvoPluginLoader::pluginLoaded, this, news);
    connect(registry()->pluginLoader(), &KelvoPluginLoader::pluginFailed, this, news);
    KelvoShared::instance()->initTracking(registry());
}

Session::~Session() = default;

bool Session::waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds atMost)
{
    QElapsedTimer time;
    time.start();
    QEventLoop loop;
    QTimer look;
    const auto check = [&] {
        if (condition() || time.elapsed() >= atMost.count() || isInterrupted())
            loop.quit();
    };
    connect(&look, &QTimer::timeout, &loop, check);
    connect(registry(), &KelvoRegistry::rendererAdded, &loop, check);
    connect(registry(), &KelvoRegistry::rendererRemoved, &loop, check);
    connect(&m_interruption, &Interruption::requested, &loop, &QEventLoop::quit);
    if (condition())
        return true;
    look.start(lookInterval);
    loop.exec();
    return !isInterrupted() && condition();
}

void Session::waitFor(std::chrono::milliseconds time)
{
    waitUntil([] { return false; }, time);
}

bool Session::isSettled() const
{
    return m_sinceNews.isValid() && m_sinceNews.elapsed() >= settlingTime.count();
}

RendererChoice Session::choose(const QStringList &patterns, std::chrono::milliseconds atMost)
{
    const auto matches = [this](const QString &text) {
        return RendererPattern(text).matchesAmong(registry()->renderers());
    };
    waitUntil(
        [&] {
            return std::all_of(patterns.cbegin(), patterns.cend(), [&](const QString &text) {
                return !matches(text).isEmpty() && (!RendererPattern(text).isOpen() || isSettled());
            });
        },
        atMost);
    RendererChoice choice;
    for (const QString &text : patterns) {
        const RendererPattern pattern(text);
        const QList<KelvoRenderer *> found = matches(text);
        if (found.isEmpty())
            return {{}, whyNone(pattern, atMost)};
        if (found.size() > 1 && !pattern.isOpen())
            return {{},
                QStringLiteral("Several renderers are named \"%1\"; say which by its uuid: %2")
                    .arg(text, listOf(found))};
        for (KelvoRenderer *renderer : found) {
            if (!choice.renderers.contains(renderer))
                choice.renderers.append(renderer);
        }
    }
    return choice;
}

RendererChoice Session::chooseOne(const QString &pattern, std::chrono::milliseconds atMost)
{
    RendererChoice choice = choose({pattern}, atMost);
    if (choice.renderers.size() > 1) {
        choice.problem = QStringLiteral("\"%1\" stands for several renderers, one is needed: %2")
                             .arg(pattern, listOf(choice.renderers));
        choice.renderers.clear();
    }
    return choice;
}

QString Session::whyNone(const RendererPattern &pattern, std::chrono::milliseconds waited) const
{
    if (isInterrupted())
        return QStringLiteral("Interrupted while waiting for the renderer \"%1\"").arg(pattern.text());
    const QString there = listOf(registry()->renderers());
    return QStringLiteral("There is no renderer \"%1\" after %2; there %3")
        .arg(pattern.text(), Quantities::text(waited),
            there.isEmpty() ? QStringLiteral("is none at all (\"kelvo-test list\" shows the back ends)")
                            : QStringLiteral("are: ") + there);
}

void Session::silence(KelvoRenderer *renderer)
{
    const QPointer<KelvoRenderer> guarded(renderer);
    bool isStopped = false;
    QObject context;
    connect(renderer, &KelvoRenderer::stateChanged, &context,
        [&](KelvoRenderer::State state) { isStopped = state == KelvoRenderer::Stopped; });
    renderer->stop();
    // Not waitUntil(): this happens after an interruption, too.
    QElapsedTimer time;
    time.start();
    QEventLoop loop;
    QTimer look;
    connect(&look, &QTimer::timeout, &loop, [&] {
        if (isStopped || !guarded || time.elapsed() >= silencingTime.count())
            loop.quit();
    });
    look.start(lookInterval);
    loop.exec();
}

void Session::noteHeard(const QString &uuid, const Hearing &hearing)
{
    const auto known = [](const std::optional<double> &value) {
        return value ? QVariant(*value) : QVariant();
    };
    m_recorder->noteHeard(uuid, hearing.kindText(),
        {std::max(0.0, Ear::now() - hearing.at), hearing.item, known(hearing.position), hearing.speed,
            known(hearing.level), hearing.doubt});
}

void Session::noteSeen(const QString &uuid, const Sighting &sighting)
{
    const bool isThere = sighting.moment.item > 0;
    m_recorder->noteSeen(uuid, sighting.kindText(),
        {std::max(0.0, Eye::now() - sighting.at), sighting.moment.item,
            isThere ? QVariant(sighting.moment.seconds()) : QVariant(), sighting.speed, sighting.leftOut,
            sighting.doubt});
}

QByteArray Session::recording() const
{
    return QByteArray::fromStdString(m_recorder->recording());
}

// SPDX-License-Identifier: MIT
#include "DiscoveredSubject.h"

#include "Acquaintance.h"
#include "KelvoRegistry.h"
#include "RendererProbe.h"

#include <QDeadlineTimer>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace {
// Milliseconds.
constexpr qint64 leastPatience = 12'000;
constexpr qint64 leastQuiet = 300;
constexpr qint64 mostQuiet = 3000;
constexpr int patienceForRest = 10'000;
constexpr int simulatedQuiet = 100;

/// Lets real time pass until the condition holds or the time is up.
template <typename Condition> bool waitUntil(const Condition &condition, int milliseconds)
{
    const QDeadlineTimer limit(milliseconds);
    while (!condition()) {
        if (limit.hasExpired())
            return false;
        Subject::wait(5);
    }
    return true;
}
} // namespace

DiscoveredSubject::DiscoveredSubject(QString pluginFile, QString uuid, QList<Media> media)
    : m_pluginFile(std::move(pluginFile))
    , m_uuid(std::move(uuid))
    , m_offered(std::move(media))
{
}

bool DiscoveredSubject::meet()
{
    Acquaintance acquaintance(*this);
    const Finding finding = acquaintance.carryOut([&] { acquaintance.meet(m_offered); });
    m_name = acquaintance.name;
    m_roundTrip = acquaintance.roundTrip;
    m_isSimulated = acquaintance.isSimulated;
    if (finding.kind == Finding::NotTried)
        m_problem = finding.reason;
    else if (m_isSimulated)
        m_media = Media::simulated();
    else if (acquaintance.playable >= 0)
        m_media = m_offered.at(acquaintance.playable);
    else
        m_problem = QStringLiteral("it plays none of the media");
    for (auto refusal = acquaintance.refusals.cbegin(); refusal != acquaintance.refusals.cend(); ++refusal)
        refuses(refusal.key(), refusal.value());
    if (m_media.unseekableItem.isEmpty())
        cannotTry(Ability::TellUnseekable, QStringLiteral("none of the media is unseekable"));
    return m_problem.isEmpty();
}

QHash<QString, QString> DiscoveredSubject::originsOf(KelvoRegistry &registry)
{
    QHash<QString, QString> origins;
    QStringList plugins = registry.pluginLoader()->loaded();
    // The last one started first, as at the end of a program.
    std::reverse(plugins.begin(), plugins.end());
    for (const QString &plugin : std::as_const(plugins)) {
        QStringList before;
        for (const KelvoRenderer *renderer : registry.renderers())
            before.append(renderer->uuid());
        registry.unloadPlugin(plugin);
        for (const QString &uuid : std::as_const(before)) {
            if (!registry.findRendererByUuid(uuid))
                origins.insert(uuid, plugin);
        }
    }
    return origins;
}

KelvoRenderer *DiscoveredSubject::findIn(const KelvoRegistry &registry) const
{
    return registry.findRendererByUuid(m_uuid);
}

void DiscoveredSubject::prepare(KelvoRenderer &renderer)
{
    if (m_isSimulated) {
        m_time.takeOver(renderer);
        return;
    }
    // A player of another process plays what it may have been given before, and tells so a little later.
    RendererProbe probe(renderer);
    qsizetype known = -1;
    QDeadlineTimer quiet;
    waitUntil(
        [&] {
            if (std::exchange(known, probe.events.size()) != probe.events.size())
                quiet.setRemainingTime(quietTime());
            return quiet.hasExpired();
        },
        int(mostQuiet));
    silence(renderer);
}

void DiscoveredSubject::finish(KelvoRenderer &renderer)
{
    if (!m_isSimulated)
        silence(renderer);
}

void DiscoveredSubject::silence(KelvoRenderer &renderer)
{
    const QPointer<KelvoRenderer> guarded(&renderer);
    RendererProbe probe(renderer);
    // Asked again and again: what the answer says may be news to the renderer itself.
    const auto isStopped = [&] {
        if (!guarded)
            return true;
        guarded->getStatus(&probe, "statusAnswer(QString,uint,int,QString)");
        waitUntil([&] { return !probe.statusAnswers.isEmpty() || !guarded; }, patienceForRest);
        const bool stopped = !probe.statusAnswers.isEmpty()
            && probe.statusAnswers.constLast().state == KelvoRenderer::Stopped;
        probe.statusAnswers.clear();
        return stopped;
    };
    if (isStopped())
        return;
    guarded->stop();
    waitUntil(isStopped, patienceForRest);
}

void DiscoveredSubject::letTimePass(KelvoRenderer *renderer)
{
    if (m_isSimulated)
        m_time.pass(renderer);
    else
        Subject::letTimePass(renderer);
}

int DiscoveredSubject::quietTime() const
{
    return m_isSimulated ? simulatedQuiet : int(std::clamp(3 * m_roundTrip, leastQuiet, mostQuiet));
}

qint64 DiscoveredSubject::patience() const
{
    return m_isSimulated ? leastPatience : leastPatience + 8 * m_roundTrip;
}

// SPDX-License-Identifier: MIT
#include "SilenceReason.h"

#include "KelvoWords.h"

#include <algorithm>

namespace {
using Cause = SilenceReason::Cause;
using Found = PlaybackFacts::Found;
using Verdict = SilenceReason::Verdict;

/// A recording of any content is read in bounded memory.
constexpr qsizetype mostObjects = 10000;

/// Stands for a source or playlist among the renderers.
constexpr qsizetype noRenderer = -1;

// KelvoError::Code, which never changes.
enum ErrorCode {
    Timeout = 203,
    DeviceGone = 204,
    EmptyPlaylist = 301,
    NothingPlayable = 304,
    NothingToPlay = 305
};

/// The reasons of one renderer, each tried in turn.
class Reasoning
{
public:
    Reasoning(const PlaybackFacts &facts, const QString &name, double now)
        : m_facts(facts)
        , m_name(name)
        , m_now(now)
    {
    }

    Verdict verdict() const
    {
        // What outweighs what: a device that is gone says nothing of its volume any more.
        for (const auto &reason :
            {&Reasoning::gone, &Reasoning::noCommand, &Reasoning::failed, &Reasoning::noAnswer,
                &Reasoning::policy, &Reasoning::paused, &Reasoning::stopped, &Reasoning::buffering,
                &Reasoning::transitioning, &Reasoning::clockStands, &Reasoning::muted}) {
            if (const std::optional<Verdict> verdict = (this->*reason)())
                return *verdict;
        }
        return make(Cause::NotSilent,
            QStringLiteral("Nothing keeps %1 silent as far as can be seen: it is Playing since %2.")
                .arg(m_name, at(m_facts.state.since)),
            {m_facts.commands.play, m_facts.state.since, m_facts.clock.last});
    }

private:
    bool is(QLatin1String state) const { return m_facts.state.name == state; }
    bool isQuestionOpen() const
    {
        const Found &question = m_facts.commands.question;
        return question && sinceThen(question) >= SilenceReason::Patience;
    }
    double sinceThen(const Found &moment) const { return std::max(m_now - moment->time, 0.0); }
    QString lasting(const Found &moment) const
    {
        return QStringLiteral("for %1").arg(KelvoWords::seconds(sinceThen(moment)));
    }

    static QString at(const Found &moment)
    {
        return moment ? KelvoWords::seconds(moment->time) : QStringLiteral("the beginning");
    }

    static Verdict make(Cause cause, const QString &sentence, const QList<Found> &evidence)
    {
        Verdict verdict{cause, sentence, {}};
        for (const Found &moment : evidence) {
            if (moment)
                verdict.evidence.append(*moment);
        }
        std::stable_sort(verdict.evidence.begin(), verdict.evidence.end(),
            [](const auto &one, const auto &other) { return one.event < other.event; });
        return verdict;
    }

    std::optional<Verdict> gone() const
    {
        if (!m_facts.vanished)
            return {};
        return make(Cause::Gone, QStringLiteral("%1 vanished at %2.").arg(m_name, at(m_facts.vanished)),
            {m_facts.state.since, m_facts.vanished});
    }

    std::optional<Verdict> noCommand() const
    {
        const bool playsByItself = !m_facts.state.name.isEmpty() && !is(KelvoWords::stopped);
        if (m_facts.commands.play || playsByItself || isQuestionOpen())
            return {};
        const QString sentence = m_facts.state.error && m_facts.state.errorCode == NothingToPlay
            ? QStringLiteral("%1 has nothing to play, and no command to play arrived.")
            : QStringLiteral("No command to play arrived at %1.");
        return make(Cause::NoCommand, sentence.arg(m_name),
            {m_facts.appeared, m_facts.state.since, m_facts.commands.stop});
    }

    std::optional<Verdict> failed() const
    {
        const PlaybackFacts::State &state = m_facts.state;
        if (!state.error || is(KelvoWords::playing) || is(KelvoWords::paused))
            return {};
        const QList<Found> evidence{m_facts.commands.play, state.error, state.since};
        switch (state.errorCode) {
        case Timeout:
        case DeviceGone:
            return make(Cause::NoAnswer,
                QStringLiteral("%1 does not answer: %2 at %3.")
                    .arg(m_name, state.error->text, at(state.error)),
                evidence);
        case EmptyPlaylist:
        case NothingPlayable:
        case NothingToPlay:
            return make(Cause::NothingToPlay,
                QStringLiteral("%1 has nothing to play: %2 at %3.")
                    .arg(m_name, state.error->text, at(state.error)),
                evidence);
        default:
            return make(Cause::Failed,
                QStringLiteral("%1 could not play: %2 at %3.")
                    .arg(m_name, state.error->text, at(state.error)),
                evidence);
        }
    }

    std::optional<Verdict> noAnswer() const
    {
        const PlaybackFacts::Commands &commands = m_facts.commands;
        if (isQuestionOpen()) {
            return make(Cause::NoAnswer,
                QStringLiteral("%1 does not answer: %2 was asked at %3, and nothing came %4.")
                    .arg(m_name, commands.question->text, at(commands.question), lasting(commands.question)),
                {commands.play, m_facts.state.since, commands.question});
        }
        if (!commands.play || m_facts.heard || is(KelvoWords::playing) || commands.stop
            || sinceThen(commands.play) < SilenceReason::Patience)
            return {};
        return make(Cause::NoAnswer,
            QStringLiteral("%1 does not answer: told to play at %2, it said nothing %3.")
                .arg(m_name, at(commands.play), lasting(commands.play)),
            {commands.play});
    }

    std::optional<Verdict> policy() const
    {
        if (!m_facts.levels.policy || is(KelvoWords::stopped))
            return {};
        const QString what = is(KelvoWords::paused) ? QStringLiteral("paused by a policy")
                                                    : QStringLiteral("overridden by a policy");
        return make(Cause::Policy,
            QStringLiteral("%1 is %2 outside of the program since %3.")
                .arg(m_name, what, at(m_facts.levels.policy)),
            {m_facts.levels.policy, m_facts.state.since});
    }

    std::optional<Verdict> paused() const
    {
        if (!is(KelvoWords::paused))
            return {};
        const Found &by = m_facts.commands.pausedBy;
        if (!by) {
            return make(Cause::Paused,
                QStringLiteral("%1 is Paused since %2, and no command asked for that.")
                    .arg(m_name, at(m_facts.state.since)),
                {m_facts.commands.play, m_facts.state.since});
        }
        return make(Cause::PausedByCommand,
            QStringLiteral("%1 is Paused since %2, as %3 at %4 told it.")
                .arg(m_name, at(m_facts.state.since), by->text, at(by)),
            {by, m_facts.state.since});
    }

    std::optional<Verdict> stopped() const
    {
        if (!is(KelvoWords::stopped))
            return {};
        const PlaybackFacts::Commands &commands = m_facts.commands;
        if (commands.stop) {
            return make(Cause::StoppedByCommand,
                QStringLiteral("%1 was stopped by stop() at %2.").arg(m_name, at(commands.stop)),
                {commands.stop, m_facts.state.since});
        }
        if (m_facts.state.completed) {
            return make(Cause::Completed,
                QStringLiteral("%1 has played all there was, until %2.")
                    .arg(m_name, at(m_facts.state.completed)),
                {commands.play, m_facts.state.since, m_facts.state.completed});
        }
        return make(Cause::Stopped,
            QStringLiteral("Told to play at %1, %2 is Stopped since %3 without an error.")
                .arg(at(commands.play), m_name, at(m_facts.state.since)),
            {commands.play, m_facts.state.since});
    }

    std::optional<Verdict> buffering() const
    {
        if (!m_facts.levels.buffering)
            return {};
        return make(Cause::Buffering,
            QStringLiteral("%1 is buffering at %2 % %3.")
                .arg(m_name, QString::number(qRound(m_facts.levels.fraction * 100)),
                    lasting(m_facts.levels.buffering)),
            {m_facts.commands.play, m_facts.state.since, m_facts.levels.buffering});
    }

    std::optional<Verdict> transitioning() const
    {
        if (is(KelvoWords::playing))
            return {};
        if (!m_facts.state.since) {
            return make(Cause::Transitioning,
                QStringLiteral("Told to play at %1, %2 has not told a state yet, %3.")
                    .arg(at(m_facts.commands.play), m_name, lasting(m_facts.commands.play)),
                {m_facts.commands.play, m_facts.heard});
        }
        const QString told = m_facts.commands.play
            ? QStringLiteral("Told to play at %1, %2").arg(at(m_facts.commands.play), m_name)
            : m_name;
        return make(Cause::Transitioning,
            QStringLiteral("%1 is still %2 since %3, %4.")
                .arg(told, m_facts.state.name, at(m_facts.state.since), lasting(m_facts.state.since)),
            {m_facts.commands.play, m_facts.state.since});
    }

    std::optional<Verdict> clockStands() const
    {
        const PlaybackFacts::Clock &clock = m_facts.clock;
        if (!clock.since || clock.answers < 3
            || clock.last->time - clock.since->time < SilenceReason::Patience)
            return {};
        return make(Cause::ClockStands,
            QStringLiteral("%1 says Playing, but its clock stands at %2 since %3.")
                .arg(m_name, KelvoWords::seconds(clock.position), at(clock.since)),
            {m_facts.state.since, clock.since, clock.last});
    }

    std::optional<Verdict> muted() const
    {
        const PlaybackFacts::Levels &levels = m_facts.levels;
        if (!levels.volume0 && !levels.muted)
            return {};
        const Found &found = levels.muted ? levels.muted : levels.volume0;
        return make(Cause::Muted,
            QStringLiteral("%1 plays, but %2 since %3.")
                .arg(m_name, levels.muted ? QStringLiteral("is muted") : QStringLiteral("its volume is 0"),
                    at(found)),
            {m_facts.state.since, found});
    }

    const PlaybackFacts &m_facts;
    const QString m_name;
    const double m_now;
};
} // namespace

void SilenceReason::add(qint64 index, const RecordedEvent &event)
{
    setTime(event.time);
    if (event.uuid.isEmpty())
        return;
    auto known = m_indexes.constFind(event.uuid);
    if (known == m_indexes.constEnd()) {
        if (m_indexes.size() == mostObjects)
            return;
        const bool isOther = event.kind == KelvoWords::appears && event.name != QLatin1String("renderer");
        // Sources and playlists are told things, too, some before they appear.
        if (!isOther && !KelvoWords::isOfRenderer(event))
            return;
        known = m_indexes.insert(event.uuid, isOther ? noRenderer : m_renderers.size());
        if (!isOther)
            m_renderers.append({event.uuid, {}});
    }
    if (*known != noRenderer)
        m_renderers[*known].facts.add(index, event);
}

void SilenceReason::setTime(double time)
{
    m_now = std::max(m_now, time);
}

QList<SilenceReason::Name> SilenceReason::renderers() const
{
    QList<Name> names;
    for (const Renderer &renderer : m_renderers)
        names.append({renderer.uuid, renderer.facts.name});
    return names;
}

Verdict SilenceReason::verdict(const QString &uuid) const
{
    const Renderer *renderer = choose(uuid);
    if (!renderer) {
        return {Cause::NoRenderer,
            uuid.isEmpty() ? QStringLiteral("No renderer is there.")
                           : QStringLiteral("No renderer %1 is there.").arg(uuid),
            {}};
    }
    const QString name = renderer->facts.name.isEmpty() ? renderer->uuid : renderer->facts.name;
    return Reasoning(renderer->facts, name, m_now).verdict();
}

const SilenceReason::Renderer *SilenceReason::choose(const QString &uuid) const
{
    if (!uuid.isEmpty()) {
        const auto known = m_indexes.constFind(uuid);
        return known == m_indexes.constEnd() || *known == noRenderer ? nullptr : &m_renderers.at(*known);
    }
    const Renderer *chosen = nullptr;
    for (const Renderer &renderer : m_renderers) {
        const Found &play = renderer.facts.commands.play;
        const Found toldBefore = chosen ? chosen->facts.commands.play : Found();
        if (!chosen || (play && (!toldBefore || play->event > toldBefore->event)))
            chosen = &renderer;
    }
    return chosen;
}

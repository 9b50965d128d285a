// SPDX-License-Identifier: MIT
#include "SoundWatch.h"

#include "Ear.h"
#include "KelvoContent.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {
constexpr int lookInterval = 10; // milliseconds
constexpr double answerTime = 2; // seconds
constexpr qsizetype mostHeard = 1000;
constexpr double longestDropOut = 2; // seconds
} // namespace

SoundWatch::SoundWatch(KelvoRenderer *renderer, const Ear *ear, QObject *parent)
    : QObject(parent)
    , m_renderer(renderer)
{
    begin();
    m_sound.beginListening();
    connect(renderer, &KelvoRenderer::stateChanged, this, [this](KelvoRenderer::State state) {
        if (!m_states.contains(state))
            m_states.insert(state, Ear::now() - m_begin);
    });
    connect(renderer, &KelvoRenderer::mediaChanged, this, [this](int, const KelvoContent &content) {
        m_medium = content.url;
        if (!m_announced.contains(m_medium))
            m_announced.insert(m_medium, Ear::now() - m_begin);
    });
    connect(renderer, &KelvoRenderer::kelvoPropertyChanged, this,
        [this](const QString &name, const QVariant &value) {
            if (name == KelvoRenderer::PropertyVolume)
                m_volume = value.toInt();
        });
    connect(ear, &Ear::heard, this, &SoundWatch::take);
}

void SoundWatch::begin()
{
    m_begin = Ear::now();
    m_states.clear();
    m_announced.clear();
    m_heard.clear();
    m_sound.beginCommand(m_begin);
}

void SoundWatch::take(const Hearing &hearing)
{
    m_sound.take(hearing);
    // What was heard before is told now.
    if (hearing.at < m_begin - Ear::ClockError || m_heard.size() == mostHeard)
        return;
    m_heard.append(hearing);
    m_heard.last().at -= m_begin;
}

std::optional<double> SoundWatch::saidAt(KelvoRenderer::State state) const
{
    return m_states.contains(state) ? std::optional(m_states.value(state)) : std::nullopt;
}

std::optional<double> SoundWatch::announcedAt(const QUrl &medium) const
{
    return m_announced.contains(medium) ? std::optional(m_announced.value(medium)) : std::nullopt;
}

std::optional<Hearing> SoundWatch::find(const std::function<bool(const Hearing &)> &is) const
{
    const auto found = std::find_if(m_heard.cbegin(), m_heard.cend(), is);
    return found == m_heard.cend() ? std::nullopt : std::optional(*found);
}

std::optional<Hearing> SoundWatch::heard(Hearing::Kind kind) const
{
    return find([kind](const Hearing &hearing) { return hearing.kind == kind; });
}

std::optional<Hearing> SoundWatch::heardOf(int item) const
{
    return find([item](const Hearing &hearing) { return hearing.item == item; });
}

std::optional<Hearing> SoundWatch::heardAwayFrom(double place) const
{
    return find([place](const Hearing &hearing) {
        const bool isNew = hearing.kind == Hearing::Begins || hearing.kind == Hearing::Jumps;
        return isNew && hearing.position && std::abs(*hearing.position - place) > longestDropOut;
    });
}

const HeardSound &SoundWatch::sound()
{
    m_sound.settle(Ear::now());
    return m_sound;
}

bool SoundWatch::waitUntil(const std::function<bool()> &condition, double seconds)
{
    const double end = Ear::now() + seconds;
    QEventLoop loop;
    QTimer look;
    connect(&look, &QTimer::timeout, &loop, [&] {
        if (m_isStopped || condition() || Ear::now() > end)
            loop.quit();
    });
    look.start(lookInterval);
    loop.exec();
    return !m_isStopped && condition();
}

void SoundWatch::wait(double seconds)
{
    waitUntil([] { return false; }, seconds);
}

std::optional<SoundWatch::Position> SoundWatch::askPosition()
{
    const QVariant position = askProperty(KelvoRenderer::PropertyPosition);
    return position.isValid() ? std::optional(Position{position.toDouble(), m_heardThen}) : std::nullopt;
}

QVariant SoundWatch::askProperty(const QString &name)
{
    m_answer.reset();
    m_renderer->kelvoProperty(name, this, "takeAnswer(QString,QVariant)");
    waitUntil([this] { return m_answer.has_value(); }, answerTime);
    return m_answer.value_or(QVariant());
}

void SoundWatch::takeAnswer(const QString &, const QVariant &value)
{
    m_answer = value;
    m_heardThen = sound().position();
}

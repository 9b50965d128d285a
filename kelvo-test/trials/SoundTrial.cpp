// SPDX-License-Identifier: MIT
#include "SoundTrial.h"

#include "Ear.h"
#include "ItemList.h"

#include <cmath>

using R = KelvoRenderer;

namespace {
constexpr double patience = 10; // seconds, for each thing that should come
constexpr double settling = 1; // seconds, until a volume is heard
constexpr int loudest = 99;
const auto seconds = QStringLiteral("s");

// The most by which what is said and what comes out may differ.
constexpr double mostLate = 0.2; // seconds, reports against sound
constexpr double mostMisplaced = 0.1; // seconds, positions
constexpr double mostMissed = 0.2; // seconds, places that were asked for
constexpr double longestGap = 1.5; // seconds
constexpr double mostOffCurve = 1.5; // decibels

/// Of the curve that mixers have: the amplitude goes with the third power.
double decibelsOf(int volume)
{
    return 60 * std::log10(double(volume) / loudest);
}

std::optional<HeardSound::Measured> timeOf(const std::optional<Hearing> &hearing)
{
    if (!hearing)
        return std::nullopt;
    return HeardSound::Measured{hearing->at, hearing->within + Ear::ClockError};
}

std::optional<HeardSound::Measured> positionOf(const std::optional<Hearing> &hearing)
{
    if (!hearing || !hearing->position)
        return std::nullopt;
    return HeardSound::Measured{*hearing->position, Hearing::PositionError + hearing->within};
}
} // namespace

SoundTrial::SoundTrial(KelvoRenderer *renderer, const Ear *ear, Media media)
    : m_renderer(renderer)
    , m_media(std::move(media))
    , m_watch(renderer, ear)
{
}

QList<SoundRow> SoundTrial::run()
{
    m_rows.clear();
    const QVariant volume = m_watch.askProperty(R::PropertyVolume);
    start();
    comparePositions();
    compareLevels();
    pause();
    pauseAt();
    seek();
    next();
    if (volume.isValid())
        m_renderer->setKelvoProperty(R::PropertyVolume, volume);
    return m_rows;
}

void SoundTrial::add(const QString &id, const QString &what, const QString &unit, std::optional<double> said,
    std::optional<HeardSound::Measured> cameOut, double limit)
{
    SoundRow row;
    row.id = id;
    row.what = what;
    row.unit = unit;
    row.said = said;
    row.limit = limit;
    if (cameOut) {
        row.cameOut = cameOut->value;
        row.error = cameOut->error;
    } else {
        row.doubt = m_watch.sound().doubt();
        if (row.doubt.isEmpty())
            row.doubt = QStringLiteral("it was not heard in time");
    }
    m_rows.append(row);
}

bool SoundTrial::waitForSound()
{
    return m_watch.waitUntil([this] { return m_watch.heard(Hearing::Goes).has_value(); }, patience);
}

bool SoundTrial::waitForSilence()
{
    return m_watch.waitUntil([this] { return m_watch.sound().isAtRest(); }, patience);
}

void SoundTrial::start()
{
    m_watch.begin();
    m_renderer->playUri(m_media.first);
    waitForSound();
    const std::optional<Hearing> first = m_watch.heard(Hearing::Begins);
    add(QStringLiteral("start"), QStringLiteral("from playUri to Playing, and to sound"), seconds,
        m_watch.saidAt(R::Playing), timeOf(first), mostLate);
    const int said = m_watch.medium() == m_media.first ? 1 : m_watch.medium() == m_media.second ? 2 : 0;
    const bool isRead = first && first->item > 0;
    add(QStringLiteral("item"), QStringLiteral("which item plays"), {},
        said > 0 ? std::optional<double>(said) : std::nullopt,
        isRead ? std::optional(HeardSound::Measured{double(first->item), 0}) : std::nullopt, 0);
}

void SoundTrial::comparePositions()
{
    const std::optional<SoundWatch::Position> position = m_watch.askPosition();
    add(QStringLiteral("position"), QStringLiteral("position while it plays"), seconds,
        position ? std::optional(position->told) : std::nullopt,
        position ? position->heard : m_watch.sound().position(), mostMisplaced);
}

void SoundTrial::setVolume(int volume)
{
    m_watch.begin();
    m_renderer->setKelvoProperty(R::PropertyVolume, volume);
    m_watch.wait(settling);
    m_watch.waitUntil([this] { return m_watch.sound().level().has_value(); }, settling);
}

void SoundTrial::compareLevels()
{
    setVolume(loudest);
    const std::optional<HeardSound::Measured> full = m_watch.sound().level();
    for (const int volume : {50, 25}) {
        setVolume(volume);
        std::optional<HeardSound::Measured> level = m_watch.sound().level();
        if (level && full)
            level = {level->value - full->value, level->error + full->error};
        const bool isTold = m_watch.volume() == volume;
        add(QStringLiteral("level-%1").arg(volume),
            QStringLiteral("level at volume %1 against %2, by the cubic curve").arg(volume).arg(loudest),
            QStringLiteral("dB"), isTold ? std::optional(decibelsOf(volume)) : std::nullopt,
            full ? level : std::nullopt, mostOffCurve);
    }
    setVolume(loudest);
}

void SoundTrial::pause()
{
    m_watch.begin();
    m_renderer->pause();
    waitForSilence();
    m_watch.waitUntil([this] { return m_watch.saidAt(R::Paused).has_value(); }, settling);
    add(QStringLiteral("pause"), QStringLiteral("from pause to Paused, and to silence"), seconds,
        m_watch.saidAt(R::Paused), m_watch.sound().silence(), mostLate);
    const std::optional<SoundWatch::Position> position = m_watch.askPosition();
    add(QStringLiteral("pause-position"), QStringLiteral("position while it is paused"), seconds,
        position ? std::optional(position->told) : std::nullopt, whereItRests(), mostMisplaced);
}

void SoundTrial::pauseAt()
{
    const std::optional<HeardSound::Measured> position = m_watch.sound().position();
    const uint target = uint(std::ceil(position ? position->value : 0)) + 2;
    m_watch.begin();
    m_renderer->resume();
    waitForSound();
    m_watch.begin();
    m_renderer->pauseAt(target);
    m_watch.waitUntil([this] { return m_watch.saidAt(R::Paused).has_value(); }, patience);
    waitForSilence();
    const bool isPaused = m_watch.saidAt(R::Paused).has_value();
    add(QStringLiteral("pause-at"), QStringLiteral("where it pauses when told to pause at a second"), seconds,
        isPaused ? std::optional<double>(target) : std::nullopt, whereItRests(), mostMissed);
}

void SoundTrial::seek()
{
    constexpr int target = 20;
    m_watch.begin();
    m_renderer->resume();
    waitForSound();
    m_watch.begin();
    const double before = m_watch.sound().position().value_or(HeardSound::Measured{}).value;
    m_renderer->setPosition(target, R::SeekAbsolute);
    m_watch.waitUntil([&] { return m_watch.heardAwayFrom(before).has_value(); }, patience);
    add(QStringLiteral("seek"), QStringLiteral("where it goes on when told to go to a second"), seconds,
        double(target), positionOf(m_watch.heardAwayFrom(before)), mostMissed);
}

void SoundTrial::next()
{
    const auto list = ItemList::make(QStringLiteral("listening"), {m_media.first, m_media.second});
    m_watch.begin();
    m_renderer->assignPlaylist(list.get());
    m_renderer->gotoIndex(0);
    waitForSound();
    m_renderer->setPosition(Media::Seconds - 3, R::SeekAbsolute);
    m_watch.wait(1);
    m_watch.begin();
    m_watch.waitUntil([this] { return m_watch.sound().gap().has_value(); }, patience);
    const std::optional<double> announced = m_watch.announcedAt(m_media.second);
    const std::optional<Hearing> second = m_watch.heardOf(2);
    const std::optional<HeardSound::Measured> gap = m_watch.sound().gap();
    const bool isKnown = announced && second && gap;
    add(QStringLiteral("next"),
        QStringLiteral("from an item's end to the announcement of the next, and to its sound"), seconds,
        isKnown ? std::optional(*announced - (second->at - gap->value)) : std::nullopt, gap, longestGap);
    stopPlaying();
}

void SoundTrial::stopPlaying()
{
    waitForSound();
    m_watch.begin();
    m_renderer->stop();
    m_renderer->assignPlaylist(nullptr);
    waitForSilence();
    m_watch.waitUntil([this] { return m_watch.saidAt(R::Stopped).has_value(); }, settling);
    add(QStringLiteral("stop"), QStringLiteral("from stop to Stopped, and to silence"), seconds,
        m_watch.saidAt(R::Stopped), m_watch.sound().silence(), mostLate);
}

std::optional<HeardSound::Measured> SoundTrial::whereItRests()
{
    return m_watch.sound().isAtRest() ? m_watch.sound().position() : std::nullopt;
}

// SPDX-License-Identifier: MIT
#include "SenseTrial.h"

#include "ItemList.h"

#include <cmath>

using R = KelvoRenderer;

namespace {
const auto seconds = QStringLiteral("s");

// The most by which what is said and what comes out may differ. Seconds.
constexpr double mostLate = 0.2; // reports
constexpr double mostMissed = 0.2; // places that were asked for
constexpr double longestGap = 1.5;
} // namespace

SenseTrial::SenseTrial(Media media, Words words)
    : m_media(std::move(media))
    , m_words(std::move(words))
{
}

QList<SenseRow> SenseTrial::run()
{
    m_rows.clear();
    const QVariant volume = watch().askProperty(R::PropertyVolume);
    start();
    comparePositions();
    compareMore();
    pause();
    pauseAt();
    seek();
    next();
    if (volume.isValid())
        tell([&](R &renderer) { renderer.setKelvoProperty(R::PropertyVolume, volume); });
    return m_rows;
}

void SenseTrial::add(const QString &id, const QString &what, const QString &unit, std::optional<double> said,
    std::optional<Measured> cameOut, double limit)
{
    SenseRow row;
    row.id = m_words.sense + u'.' + id;
    row.what = what;
    row.unit = unit;
    row.said = said;
    row.limit = limit;
    if (cameOut) {
        row.cameOut = cameOut->value;
        row.error = cameOut->error;
    } else {
        row.doubt = watch().renderer() ? watch().doubt() : QStringLiteral("the renderer has gone");
        if (row.doubt.isEmpty())
            row.doubt = QStringLiteral("it did not come in time");
    }
    m_rows.append(row);
}

void SenseTrial::tell(const std::function<void(R &)> &command)
{
    if (R *const renderer = watch().renderer())
        command(*renderer);
}

void SenseTrial::waitUntilItGoes()
{
    watch().waitUntil([this] { return watch().hasGoneOn(); }, Patience);
}

void SenseTrial::waitUntilItRests()
{
    watch().waitUntil([this] { return watch().isAtRest(); }, Patience);
}

void SenseTrial::start()
{
    watch().begin();
    tell([&](R &renderer) { renderer.playUri(m_media.first); });
    waitUntilItGoes();
    const std::optional<SenseWatch::First> first = watch().first();
    add(QStringLiteral("start"), QStringLiteral("from playUri to Playing, and to ") + m_words.first, seconds,
        watch().saidAt(R::Playing), first ? std::optional(first->at) : std::nullopt, mostLate);
    const QUrl medium = watch().medium();
    const int said = medium == m_media.first ? 1 : medium == m_media.second ? 2 : 0;
    const bool isRead = first && first->item > 0;
    add(QStringLiteral("item"), QStringLiteral("which item plays"), {},
        said > 0 ? std::optional<double>(said) : std::nullopt,
        isRead ? std::optional(Measured{double(first->item), 0}) : std::nullopt, 0);
}

void SenseTrial::comparePositions()
{
    const std::optional<SenseWatch::Position> position = watch().askPosition();
    add(QStringLiteral("position"), QStringLiteral("position while it plays"), seconds,
        position ? std::optional(position->told) : std::nullopt,
        position ? position->cameOut : watch().position(), MostMisplaced);
}

void SenseTrial::pause()
{
    watch().begin();
    tell([&](R &renderer) { renderer.pause(); });
    waitUntilItRests();
    watch().waitUntil([this] { return watch().saidAt(R::Paused).has_value(); }, Settling);
    add(QStringLiteral("pause"), QStringLiteral("from pause to Paused, and to ") + m_words.rest, seconds,
        watch().saidAt(R::Paused), watch().restedAt(), mostLate);
    const std::optional<SenseWatch::Position> position = watch().askPosition();
    add(QStringLiteral("pause-position"), QStringLiteral("position while it is paused"), seconds,
        position ? std::optional(position->told) : std::nullopt, whereItRests(), MostMisplaced);
}

void SenseTrial::pauseAt()
{
    const std::optional<Measured> position = watch().position();
    const uint target = uint(std::ceil(position ? position->value : 0)) + 2;
    watch().begin();
    tell([&](R &renderer) { renderer.resume(); });
    waitUntilItGoes();
    watch().begin();
    tell([&](R &renderer) { renderer.pauseAt(target); });
    watch().waitUntil([this] { return watch().saidAt(R::Paused).has_value(); }, Patience);
    waitUntilItRests();
    const bool isPaused = watch().saidAt(R::Paused).has_value();
    add(QStringLiteral("pause-at"), QStringLiteral("where it pauses when told to pause at a second"), seconds,
        isPaused ? std::optional<double>(target) : std::nullopt, whereItRests(), mostMissed);
}

void SenseTrial::seek()
{
    constexpr int target = 20;
    watch().begin();
    tell([&](R &renderer) { renderer.resume(); });
    waitUntilItGoes();
    watch().begin();
    const double before = watch().position().value_or(Measured{}).value;
    tell([&](R &renderer) { renderer.setPosition(target, R::SeekAbsolute); });
    watch().waitUntil([&] { return watch().wentOnAwayFrom(before).has_value(); }, Patience);
    add(QStringLiteral("seek"), QStringLiteral("where it goes on when told to go to a second"), seconds,
        double(target), watch().wentOnAwayFrom(before), mostMissed);
}

void SenseTrial::next()
{
    const auto list = ItemList::make(QStringLiteral("senses"), {m_media.first, m_media.second});
    watch().begin();
    tell([&](R &renderer) { renderer.assignPlaylist(list.get()); });
    tell([&](R &renderer) { renderer.gotoIndex(0); });
    waitUntilItGoes();
    tell([&](R &renderer) { renderer.setPosition(Media::Seconds - 3, R::SeekAbsolute); });
    watch().wait(1);
    watch().begin();
    watch().waitUntil([this] { return watch().changeTo(2).has_value(); }, Patience);
    const std::optional<SenseWatch::Change> change = watch().changeTo(2);
    const std::optional<double> announced = watch().announcedAt(m_media.second);
    add(QStringLiteral("next"),
        QStringLiteral("from an item's end to the announcement of the next, and to its begin"), seconds,
        announced && change ? std::optional(*announced - change->ended) : std::nullopt,
        change ? std::optional(change->gap) : std::nullopt, longestGap);
    stopPlaying();
}

void SenseTrial::stopPlaying()
{
    waitUntilItGoes();
    watch().begin();
    tell([&](R &renderer) { renderer.stop(); });
    tell([&](R &renderer) { renderer.assignPlaylist(nullptr); });
    waitUntilItRests();
    watch().waitUntil([this] { return watch().saidAt(R::Stopped).has_value(); }, Settling);
    add(QStringLiteral("stop"), QStringLiteral("from stop to Stopped, and to ") + m_words.end, seconds,
        watch().saidAt(R::Stopped), watch().restedAt(), mostLate);
}

std::optional<Measured> SenseTrial::whereItRests()
{
    return watch().isAtRest() ? watch().position() : std::nullopt;
}

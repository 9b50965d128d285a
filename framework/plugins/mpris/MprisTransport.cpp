// SPDX-License-Identifier: MIT
#include "MprisTransport.h"

#include "ItemProgress.h"
#include "RemoteUrl.h"

#include <QDBusObjectPath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
// All in milliseconds. How often to look at what may be changing.
constexpr int slowLook = 200;
constexpr int soonLook = 50;
constexpr int looks = 4;
/// Several signals in a row lead to one question.
constexpr int signalTime = 5;
/// While a seek is under way a player may still tell where it was.
constexpr int seekTime = 200;
/// A player may say for so long that it still plays what was stopped.
constexpr qint64 stoppingTime = 1000;
/// Of what has no known end it is one.
constexpr RemoteTransport::Stop atEnd{};
} // namespace

MprisTransport::MprisTransport(
    MprisAddress address, const QVariantMap &properties, bool hasTrackList, QObject *parent)
    : RemoteTransport(parent)
    , m_calls(std::move(address))
    , m_questions(&m_calls)
    , m_settings(&m_calls)
    , m_last(MprisSnapshot::of(properties))
    , m_hasTrackList(hasTrackList)
{
    connect(&m_calls, &MprisCalls::troubled, this, &MprisTransport::troubled);
    connect(&m_questions, &MprisQuestions::answered, this, &MprisTransport::take);
    connect(&m_questions, &MprisQuestions::unanswered, this, &MprisTransport::takeSilence);
    connect(&m_settings, &MprisSettings::changed, &m_questions, &MprisQuestions::ask);
    connect(&m_settings, &MprisSettings::volumeReported, this, &MprisTransport::volumeReported);
    connect(&m_settings, &MprisSettings::rateReported, this, &MprisTransport::rateReported);
    // Whoever made this wants to listen first.
    QMetaObject::invokeMethod(
        this, [this] { take(MprisSnapshot(m_last)); }, Qt::QueuedConnection);
}

RemoteTransport::Abilities MprisTransport::abilities() const
{
    const bool seek = m_last.canSeek && m_last.canControl;
    const bool pause = m_last.canPause && m_last.canControl;
    const bool volume = m_last.volume && m_last.canControl;
    return {seek, pause, volume, m_last.minimumRate, m_last.maximumRate};
}

void MprisTransport::load(const Item &item)
{
    m_questions.outdate();
    m_phase = Phase::Opening;
    m_epoch = item.epoch;
    m_opening.begin(item, m_last.track.url);
    m_selfPause.end();
    m_untitled.clear();
    const quint64 epoch = item.epoch;
    m_calls.command(
        QStringLiteral("OpenUri"), {item.info.url().toString(QUrl::FullyEncoded)},
        [this, epoch] {
            if (epoch != m_epoch || m_phase != Phase::Opening)
                return;
            m_opening.accept();
            if (m_last.rate && *m_last.rate != m_opening.item().rate)
                setRate(m_opening.item().rate);
            m_questions.ask();
        },
        [this, epoch](KelvoError::Code code, const QString &message) {
            if (epoch == m_epoch && m_phase == Phase::Opening)
                fail(code, message);
        });
}

void MprisTransport::unload()
{
    m_questions.outdate();
    if (m_phase == Phase::Opening)
        m_track = MprisTrack::at(m_opening.item().info.url());
    m_phase = Phase::Idle;
    m_epoch = 0;
    m_trustsPosition = false;
    m_sinceUnload.start();
    m_calls.command(QStringLiteral("Stop"));
}

void MprisTransport::pause()
{
    m_selfPause.end();
    m_calls.command(QStringLiteral("Pause"), {}, [this] { m_questions.ask(); });
}

void MprisTransport::resume()
{
    m_calls.command(QStringLiteral("Play"), {}, [this] { m_questions.ask(); });
}

void MprisTransport::seek(double seconds)
{
    const auto settle = [this] {
        m_questions.askIn(seekTime);
    };
    if (m_track.id.isEmpty()) {
        // Without a name for the track there is only the way from here to there.
        const double way = seconds - progress().passed();
        const qlonglong distance = MprisValues::microseconds(std::abs(way)) * (way < 0 ? -1 : 1);
        m_calls.command(QStringLiteral("Seek"), {distance}, settle);
    } else {
        m_calls.command(QStringLiteral("SetPosition"),
            {QVariant::fromValue(QDBusObjectPath(m_track.id)), MprisValues::microseconds(seconds)}, settle);
    }
    m_selfPause.noteSeek();
    m_end.endLoss();
}

void MprisTransport::rename(const QString &name)
{
    m_calls.setLabel(name);
    Q_EMIT nameReported(name);
}

void MprisTransport::notePropertiesChanged()
{
    m_looks = 0;
    m_questions.askIn(signalTime);
}

void MprisTransport::noteSeeked(const QVariant &microseconds)
{
    const auto place = MprisValues::seconds(microseconds);
    if (!place || m_phase != Phase::Following)
        return;
    const double seconds = std::max(0.0, *place);
    if (m_epoch != 0 && m_end.isLoss(*place, progress())) {
        notePositionLost(seconds, true);
        return;
    }
    m_end.endLoss();
    Q_EMIT seeked(m_epoch, seconds, 0);
}

void MprisTransport::take(const MprisSnapshot &now)
{
    // First: whoever hears of what follows may give the player the next item.
    const bool hasAdvanced = now.hasAdvancedSince(std::exchange(m_last, now));
    m_opening.note(now);
    m_settings.take(now);
    switch (m_phase) {
    case Phase::Opening:
        takeOpening(now, hasAdvanced);
        break;
    case Phase::Following:
        takeFollowing(now);
        break;
    case Phase::Idle:
        takeIdle(now, hasAdvanced);
        break;
    }
}

void MprisTransport::takeOpening(const MprisSnapshot &now, bool hasAdvanced)
{
    using Step = MprisOpening::Step;
    if (m_opening.isAccepted())
        m_questions.askIn(m_opening.nextLook());
    const Step step = m_opening.take(now, hasAdvanced);
    m_trustsPosition = step == Step::PlaysUnnoticed;
    switch (step) {
    case Step::Plays:
        // It plays for as long as it says so, even where it does not say how far it has come.
        Q_EMIT begun(m_epoch, m_opening.playedFor());
        begin(now, KelvoRenderer::Playing);
        break;
    case Step::PlaysUnnoticed:
        begin(now, KelvoRenderer::Playing);
        break;
    case Step::Pauses:
        begin(now, KelvoRenderer::Paused);
        break;
    case Step::HasPlayed:
        begin(now, KelvoRenderer::Playing);
        takeStop(now, atEnd);
        break;
    case Step::Nudge:
        nudge();
        break;
    case Step::GivenUp:
        fail(KelvoError::ReadFailed,
            QStringLiteral("%1: %2 was given up without a reason")
                .arg(m_calls.label(), m_opening.item().info.url().toDisplayString()));
        break;
    case Step::Wait:
    case Step::TimedOut:
        break;
    }
}

void MprisTransport::takeSilence()
{
    if (m_phase != Phase::Opening)
        return;
    if (m_opening.takeSilence() == MprisOpening::Step::TimedOut)
        fail(KelvoError::Timeout,
            QStringLiteral("%1 did not begin to play %2")
                .arg(m_calls.label(), m_opening.item().info.url().toDisplayString()));
    else
        m_questions.askIn(m_opening.nextLook());
}

void MprisTransport::nudge()
{
    m_calls.command(
        m_opening.item().paused ? QStringLiteral("Pause") : QStringLiteral("Play"), {},
        [this, epoch = m_epoch] {
            if (epoch == m_epoch)
                m_opening.nudgeAccepted();
            m_questions.ask();
        },
        [this, epoch = m_epoch](KelvoError::Code, const QString &message) {
            if (epoch == m_epoch && m_phase == Phase::Opening && m_opening.nudgeRefused())
                fail(KelvoError::ReadFailed,
                    QStringLiteral("%1 (%2)").arg(m_opening.item().info.url().toDisplayString(), message));
        });
}

void MprisTransport::fail(KelvoError::Code code, const QString &message)
{
    m_phase = Phase::Idle;
    m_sinceUnload.start();
    m_track = MprisTrack::at(m_opening.item().info.url());
    Q_EMIT failed(std::exchange(m_epoch, 0), code, message);
}

void MprisTransport::begin(const MprisSnapshot &now, KelvoRenderer::State state)
{
    m_phase = Phase::Following;
    m_track = now.track;
    m_end.endLoss();
    if (state == KelvoRenderer::Playing && m_opening.isToldToPlay())
        m_selfPause.watch();
    Q_EMIT stateReported(m_epoch, state);
    tellTrack(now);
}

/// Whether it is a pause that nobody meant, and that is not shown.
bool MprisTransport::isPauseToPass(const MprisSnapshot &now)
{
    const MprisSelfPause::Step step = m_selfPause.take(now);
    if (step == MprisSelfPause::Step::PlayAgain)
        resume();
    else if (step == MprisSelfPause::Step::Wait)
        m_questions.askIn(soonLook);
    return step != MprisSelfPause::Step::None;
}

void MprisTransport::takeFollowing(const MprisSnapshot &now)
{
    auto state = now.playbackStatus;
    if (state != KelvoRenderer::Stopped)
        m_trustsPosition = false;
    else if (m_trustsPosition && now.track.isPresent())
        state = KelvoRenderer::Playing;
    const bool isOther = now.track.isPresent() && m_track.isPresent() && !now.track.isSameAs(m_track);
    const bool isBackAtRest = now.playbackStatus == KelvoRenderer::Paused
        && m_end.isBackAfterEnd(now.position.value_or(0), progress());
    if (state == KelvoRenderer::Stopped || (m_epoch != 0 && isBackAtRest)) {
        takeStop(now, MprisEnd::stop(progress()));
    } else if (isOther && m_epoch != 0 && MprisEnd::isHandOver(progress())) {
        takeStop(now, atEnd); // The player goes on with a list of its own.
    } else if (isOther) {
        takeReplacement(now);
    } else if (m_epoch != 0 && now.position && m_end.isLoss(*now.position, progress())) {
        takeLoss(now);
    } else if (!isPauseToPass(now)) {
        m_end.endLoss();
        Q_EMIT stateReported(m_epoch, state);
        tellTrack(now);
    }
}

void MprisTransport::notePositionLost(double seconds, bool isSeek)
{
    m_end.noteLoss(seconds, isSeek);
    m_questions.askIn(soonLook);
}

void MprisTransport::takeLoss(const MprisSnapshot &now)
{
    notePositionLost(*now.position, false);
    switch (m_end.judgeLoss(*now.position, progress())) {
    case MprisEnd::Loss::End:
        takeStop(now, MprisEnd::stop(progress()));
        break;
    case MprisEnd::Loss::Back:
        m_end.endLoss();
        tellTrack(now);
        break;
    case MprisEnd::Loss::Lasts:
        Q_EMIT positionReported(m_epoch, progress().passed());
        break;
    }
}

/// The player is at rest.
void MprisTransport::takeStop(const MprisSnapshot &now, const Stop &stop)
{
    m_phase = Phase::Idle;
    m_trustsPosition = false;
    m_looks = 0;
    if (m_epoch == 0) {
        Q_EMIT stateReported(m_epoch, KelvoRenderer::Stopped);
        return;
    }
    if (!stop.isEnd()) {
        Q_EMIT stopped(m_epoch, stop);
        return;
    }
    // What the player has gone on with is stopped or replaced like ours.
    if (now.track.isPresent())
        m_track = now.track;
    Q_EMIT stopped(std::exchange(m_epoch, 0), stop);
}

void MprisTransport::takeIdle(const MprisSnapshot &now, bool hasAdvanced)
{
    const bool playsUnnoticed
        = now.playbackStatus == KelvoRenderer::Stopped && now.track.isPresent() && hasAdvanced;
    // After their end some come to rest in what they had first.
    const bool rests = now.playbackStatus == KelvoRenderer::Paused && m_epoch == 0 && m_sinceUnload.isValid();
    const bool plays = (now.playbackStatus != KelvoRenderer::Stopped && !rests) || playsUnnoticed;
    const bool stillStopping = m_sinceUnload.isValid() && m_sinceUnload.elapsed() < stoppingTime
        && (now.track.isSameAs(m_track) || !now.track.isPresent());
    if (!plays || stillStopping) {
        // Whether something plays shows at the next look.
        if ((stillStopping && plays) || (now.track.isPresent() && m_looks++ < looks))
            m_questions.askIn(slowLook);
        return;
    }
    m_trustsPosition = playsUnnoticed;
    if (m_epoch == 0 || !now.track.isSameAs(m_track)) {
        takeReplacement(now);
        return;
    }
    // Ours, started again by somebody else.
    m_phase = Phase::Following;
    Q_EMIT stateReported(m_epoch, playsUnnoticed ? KelvoRenderer::Playing : now.playbackStatus);
    tellTrack(now);
}

void MprisTransport::takeReplacement(const MprisSnapshot &now)
{
    m_phase = Phase::Following;
    m_epoch = 0;
    m_selfPause.end();
    m_track = now.track;
    m_untitled.clear();
    m_looks = 0;
    Q_EMIT replaced(KelvoMediaInfo({}, now.track.url, now.track.title));
    Q_EMIT stateReported(m_epoch, m_trustsPosition ? KelvoRenderer::Playing : now.playbackStatus);
    tellTrack(now);
}

void MprisTransport::tellTrack(const MprisSnapshot &now)
{
    if (!now.track.id.isEmpty())
        m_track.id = now.track.id;
    if (now.track.length > 0)
        Q_EMIT durationReported(m_epoch, now.track.length);
    if (now.position)
        Q_EMIT positionReported(m_epoch, *now.position);
    tell(QStringLiteral("title"), now.track.title);
    tell(QStringLiteral("artist"), now.track.artist);
    tell(QStringLiteral("album"), now.track.album);
    tell(QStringLiteral("genre"), now.track.genre);
    const QUrl cover(now.track.cover);
    if (RemoteUrl::isWeb(cover) || cover.isLocalFile())
        tell(QStringLiteral("cover"), now.track.cover);
    if (now.track.title.isEmpty())
        askTitle();
}

void MprisTransport::tell(const QString &key, const QString &text)
{
    if (!text.isEmpty())
        Q_EMIT fact(m_epoch, key, {text});
}

/// Some players tell the title only where their list of tracks is concerned.
void MprisTransport::askTitle()
{
    if (!m_hasTrackList || m_track.id.isEmpty() || m_untitled == m_track.id)
        return;
    m_untitled = m_track.id;
    m_calls.getTrackMetadata(m_track.id, [this, id = m_track.id](const QVariantMap &metadata) {
        if (id == m_track.id && m_phase == Phase::Following)
            tell(QStringLiteral("title"), MprisTrack::of(metadata).title);
    });
}

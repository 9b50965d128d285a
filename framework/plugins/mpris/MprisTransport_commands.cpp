// SPDX-License-Identifier: MIT
#include "MprisTransport.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {
/// While a seek is under way a player may still tell where it was.
constexpr int SeekTime = 200;
} // namespace

void MprisTransport::command(const QString &method, const QVariantList &arguments, Done done, Failed failed)
{
    send(m_address.call(Mpris::PlayerInterface, method, arguments), method, std::move(done),
        std::move(failed));
}

void MprisTransport::send(const QDBusMessage &message, const QString &what, Done done, Failed failed)
{
    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(message, m_address.commandTimeout()), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, what, done, failed] {
        watcher->deleteLater();
        if (!watcher->isError()) {
            if (done && m_address.isAnswer(watcher->reply()))
                done();
            return;
        }
        const QDBusError error = watcher->error();
        const bool silent = Mpris::isSilence(error);
        const bool absent = Mpris::isAbsence(error);
        const auto code = silent ? KelvoError::Timeout
            : absent             ? KelvoError::DeviceGone
                                 : KelvoError::CommandRefused;
        const QString words = silent
            ? QStringLiteral("no answer within %1 s").arg(m_address.commandTimeout() / 1000.0)
            : error.message().left(500);
        const QString text = QStringLiteral("%1 of %2: %3").arg(what, m_address.label, words);
        if (failed)
            failed(code, text);
        else
            Q_EMIT troubled(code, text);
    });
}

void MprisTransport::load(const Item &item)
{
    ++m_generation;
    m_phase = Phase::Opening;
    m_epoch = item.epoch;
    m_item = item;
    m_before = m_last.track.url;
    m_accepted = m_seen = m_tried = false;
    m_nudges = 0;
    m_refusals = 0;
    m_sinceNudge.invalidate();
    m_sinceRest.invalidate();
    m_sinceLook.invalidate();
    m_sinceSeek.invalidate();
    m_sinceLoss.invalidate();
    m_duration = -1;
    m_told.clear();
    m_isFactChanged = false;
    m_titleAskedFor.clear();
    m_sinceAbsence.invalidate();
    m_sinceLoad.start();
    m_position.setRunning(false);
    m_position.moveTo(0);
    const quint64 epoch = item.epoch;
    command(
        QStringLiteral("OpenUri"), {item.info.url().toString(QUrl::FullyEncoded)},
        [this, epoch] {
            if (epoch != m_epoch || m_phase != Phase::Opening)
                return;
            m_accepted = true;
            m_sinceLoad.start();
            if (m_last.rate && *m_last.rate != m_item.rate)
                setRate(m_item.rate);
            refresh();
        },
        [this, epoch](KelvoError::Code code, const QString &message) {
            if (epoch == m_epoch && m_phase == Phase::Opening)
                fail(code, message);
        });
}

void MprisTransport::unload()
{
    ++m_generation;
    if (m_phase == Phase::Opening)
        m_track = MprisTrack{{}, m_item.info.url(), {}, {}, {}, {}, {}, -1};
    m_phase = Phase::Idle;
    m_epoch = 0;
    m_state = KelvoRenderer::Stopped;
    m_trustsPosition = false;
    m_sinceUnload.start();
    command(QStringLiteral("Stop"), {});
}

void MprisTransport::pause()
{
    command(QStringLiteral("Pause"), {}, [this] { refresh(); });
}

void MprisTransport::resume()
{
    command(QStringLiteral("Play"), {}, [this] { refresh(); });
}

void MprisTransport::seek(double seconds)
{
    const auto settle = [this] {
        refreshIn(SeekTime);
    };
    if (m_track.id.isEmpty()) {
        // Without a name for the track there is only the way from here to there.
        const double way = seconds - m_position.now();
        const qlonglong distance = MprisValues::microseconds(std::abs(way)) * (way < 0 ? -1 : 1);
        command(QStringLiteral("Seek"), {distance}, settle);
    } else {
        command(QStringLiteral("SetPosition"),
            {QVariant::fromValue(QDBusObjectPath(m_track.id)), MprisValues::microseconds(seconds)}, settle);
    }
    m_position.moveTo(seconds);
    m_toldPosition = seconds;
    m_sinceSeek.start();
    m_sinceLoss.invalidate();
}

void MprisTransport::setPlayerProperty(const QString &name, const QVariant &value, Done done)
{
    send(m_address.call(Mpris::PropertiesInterface, QStringLiteral("Set"),
             {QString(Mpris::PlayerInterface), name, QVariant::fromValue(QDBusVariant(value))}),
        name, std::move(done), [this](KelvoError::Code code, const QString &message) {
            m_settingVolume = false;
            Q_EMIT troubled(code, message);
        });
}

/// Of many volumes in a row, as a slider gives them, the last one counts.
void MprisTransport::setVolume(int volume)
{
    m_nextVolume = volume;
    if (!m_settingVolume)
        sendVolume();
}

void MprisTransport::sendVolume()
{
    m_settingVolume = true;
    const int volume = std::exchange(m_nextVolume, -1);
    setPlayerProperty(QStringLiteral("Volume"), MprisValues::linearVolume(volume), [this] {
        m_settingVolume = false;
        if (m_nextVolume >= 0) {
            sendVolume();
        } else {
            m_volumeAwaited = true;
            refresh();
        }
    });
}

void MprisTransport::setRate(double rate)
{
    setPlayerProperty(QStringLiteral("Rate"), rate, [this] {
        m_rateAwaited = true;
        refresh();
    });
}

void MprisTransport::refresh()
{
    m_nextQuestion.stop();
    if (m_asking) {
        m_askAgain = true;
        return;
    }
    m_asking = true;
    auto *watcher = new QDBusPendingCallWatcher(
        m_address.connection.asyncCall(m_address.getAll(Mpris::PlayerInterface), m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, generation = m_generation] {
        watcher->deleteLater();
        m_asking = false;
        const bool outdated = generation != m_generation;
        if (std::exchange(m_askAgain, false) || outdated)
            refreshIn(1);
        const QDBusPendingReply<QVariantMap> reply = *watcher;
        if (!reply.isError() && m_address.isAnswer(watcher->reply()) && !outdated)
            take(MprisSnapshot::of(reply.value()));
        else if (m_phase == Phase::Opening)
            takeAbsence(nullptr);
    });
}

void MprisTransport::refreshIn(int milliseconds)
{
    if (!m_nextQuestion.isActive() || m_nextQuestion.remainingTime() > milliseconds)
        m_nextQuestion.start(milliseconds);
}

/// Some players tell the title only where their list of tracks is concerned.
void MprisTransport::askTitle()
{
    if (!m_hasTrackList || m_track.id.isEmpty() || m_titleAskedFor == m_track.id)
        return;
    m_titleAskedFor = m_track.id;
    const QDBusMessage message
        = m_address.call(Mpris::TrackListInterface, QStringLiteral("GetTracksMetadata"),
            {QVariant::fromValue(QList<QDBusObjectPath>{QDBusObjectPath(m_track.id)})});
    auto *watcher
        = new QDBusPendingCallWatcher(m_address.connection.asyncCall(message, m_address.timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, id = m_track.id] {
        watcher->deleteLater();
        const QDBusMessage reply = watcher->reply();
        if (watcher->isError() || !m_address.isAnswer(reply) || reply.signature() != u"aa{sv}"
            || id != m_track.id || m_phase != Phase::Following)
            return;
        const auto tracks = qdbus_cast<QList<QVariantMap>>(reply.arguments().constFirst());
        if (!tracks.isEmpty())
            tell("title", MprisTrack::of(tracks.constFirst()).title);
    });
}

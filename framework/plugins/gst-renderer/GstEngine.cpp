// SPDX-License-Identifier: MIT
#include "GstEngine.h"

#include "EngineSettings.h"
#include "ItemPlayer.h"
#include "PlaylistFileReader.h"
#include "PositionQuestion.h"
#include "RendererValues.h"
#include "VideoFrameStore.h"

#include <QSize>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {
constexpr auto endWhileStarting = 200ms;
constexpr auto endOnceStarted = 5s;
} // namespace

GstEngine::GstEngine(const EngineSettings &settings)
    : m_thread(std::make_unique<ItemPlayer>(settings), QStringLiteral("gst-engine"))
    , m_player(m_thread.worker<ItemPlayer>())
    , m_listThread(
          std::make_unique<PlaylistFileReader>(settings.networkTimeout), QStringLiteral("playlist-reader"))
    , m_listReader(m_listThread.worker<PlaylistFileReader>())
{
    qRegisterMetaType<KelvoRenderer::State>();
    qRegisterMetaType<KelvoError::Code>();
    qRegisterMetaType<PlaylistFile::Contents>();
    qRegisterMetaType<VideoFrame>();
    connectPlayer();
    connectReader();
}

GstEngine::~GstEngine() = default;

void GstEngine::connectPlayer()
{
    connect(m_player, &ItemPlayer::initialised, this, &GstEngine::started);
    connect(m_player, &ItemPlayer::stateReached, this, &Engine::stateReached);
    connect(m_player, &ItemPlayer::pausedAtPosition, this,
        [this](quint64 epoch) { Q_EMIT intentChanged(epoch, true); });
    connect(m_player, &ItemPlayer::ended, this, &Engine::ended);
    connect(m_player, &ItemPlayer::failed, this, &Engine::failed);
    connect(m_player, &ItemPlayer::troubled, this,
        [this](quint64 epoch, KelvoError::Code code, const QString &message) {
            if (epoch == m_epoch)
                Q_EMIT troubled(code, message);
        });
    connect(m_player, &ItemPlayer::fact, this, &Engine::fact);
    connect(m_player, &ItemPlayer::buffering, this,
        [this](quint64 epoch, int percent) { Q_EMIT buffering(epoch, float(percent) / 100); });
    connect(m_player, &ItemPlayer::speedChanged, this, [this](quint64 epoch, double speed) {
        if (epoch == m_epoch)
            Q_EMIT propertyReported(KelvoRenderer::PropertyPlaybackSpeed, speed);
    });
    connect(m_player, &ItemPlayer::volumeChanged, this,
        [this](int volume) { Q_EMIT propertyReported(KelvoRenderer::PropertyVolume, uint(volume)); });
    connect(m_player, &ItemPlayer::policyOverridden, this, [this](bool overridden) {
        Q_EMIT propertyReported(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, overridden);
    });
    connect(m_player, &ItemPlayer::colorKeyChanged, this,
        [this](uint color) { Q_EMIT propertyReported(KelvoRenderer::PropertyColorKey, color); });
    connect(m_player, &ItemPlayer::frameTaken, this, &GstEngine::saveFrame);
}

void GstEngine::connectReader()
{
    const auto tell = [this](quint64 epoch, const PlaylistFile::Contents &contents) {
        const bool isUnusable = contents.kind == PlaylistFile::Contents::Unusable;
        const KelvoError problem = isUnusable ? KelvoError(contents.code, contents.message) : KelvoError();
        Q_EMIT listRead(epoch, contents.entries, problem);
    };
    connect(m_listReader, &PlaylistFileReader::finished, this, tell);
}

void GstEngine::start()
{
    // The first start ever looks through all of GStreamer's plug-ins, which takes seconds, cannot be interrupted and
    // leaves nothing half done.
    m_thread.setLongestEnd(endWhileStarting);
    connect(m_player, &ItemPlayer::initialised, this, [this] { m_thread.setLongestEnd(endOnceStarted); });
    tellPlayer([](ItemPlayer &player) { player.initialise(); });
}

QString GstEngine::name() const
{
    return QStringLiteral("KelvoGstRenderer");
}

void GstEngine::load(const Item &item)
{
    m_epoch = item.epoch;
    const ItemPlayer::Item wanted{item.epoch, item.uri, item.paused, item.rate};
    tellPlayer([wanted](ItemPlayer &player) { player.load(wanted); });
}

void GstEngine::unload()
{
    m_epoch = 0;
    tellPlayer([](ItemPlayer &player) { player.unload(); });
}

void GstEngine::pause()
{
    tellPlayer([](ItemPlayer &player) { player.pause(); });
}

void GstEngine::resume()
{
    tellPlayer([](ItemPlayer &player) { player.resume(); });
}

void GstEngine::seek(int seconds, KelvoRenderer::SeekMode mode)
{
    const bool isRelative = mode == KelvoRenderer::SeekRelative;
    tellPlayer([seconds, isRelative](ItemPlayer &player) { player.seek(seconds, isRelative); });
}

void GstEngine::setPauseAt(std::optional<uint> seconds)
{
    tellPlayer([seconds](ItemPlayer &player) {
        if (seconds)
            player.setPauseAt(*seconds);
        else
            player.dropPauseAt();
    });
}

void GstEngine::answerPosition(PositionAnswer answer)
{
    auto *question = new PositionQuestion(std::move(answer), this);
    tellPlayer([answer = question->answer()](ItemPlayer &player) { player.answerExactPosition(answer); });
}

bool GstEngine::mayBeList(const KelvoMediaInfo &item) const
{
    return PlaylistFile::announced(item.url(), item.mimeType()) != PlaylistFile::Format::None;
}

/// What GStreamer has no player for may be a list that was not announced as one.
bool GstEngine::mayBeList(KelvoError::Code failure) const
{
    return failure == KelvoError::UnsupportedType || failure == KelvoError::CodecMissing;
}

void GstEngine::readList(quint64 epoch, const KelvoMediaInfo &item)
{
    m_listThread.post([reader = m_listReader, epoch, uri = item.url(), type = item.mimeType()] {
        reader->read(epoch, uri, type);
    });
}

void GstEngine::cancelReading()
{
    m_listThread.post([reader = m_listReader] { reader->cancel(); });
}

bool GstEngine::applyProperty(const QString &name, const QVariant &value)
{
    // The player reports these two itself.
    if (name == KelvoRenderer::PropertyVolume) {
        tellPlayer([volume = value.toInt()](ItemPlayer &player) { player.setVolume(volume); });
        return true;
    }
    if (name == KelvoRenderer::PropertyPlaybackSpeed) {
        if (m_epoch != 0)
            tellPlayer([speed = value.toDouble()](ItemPlayer &player) { player.setSpeed(speed); });
        return m_epoch != 0;
    }
    if (name == KelvoRenderer::PropertyXid || name == KelvoRenderer::PropertyRenderRectangle) {
        if (name == KelvoRenderer::PropertyXid)
            m_window = value.toUInt();
        else
            m_place = RendererValues::toRectangle(value.toString());
        tellPlayer(
            [window = m_window, place = m_place](ItemPlayer &player) { player.placeVideo(window, place); });
    } else if (name == KelvoRenderer::PropertyAutopaint) {
        tellPlayer([on = value.toBool()](ItemPlayer &player) { player.setVideoAutopaint(on); });
    } else if (name == KelvoRenderer::PropertyCurrentFrameOnPause) {
        tellPlayer([on = value.toBool()](ItemPlayer &player) { player.setFrameOnPause(on); });
    }
    return false;
}

void GstEngine::saveFrame(quint64 epoch, const VideoFrame &frame)
{
    if (epoch != m_epoch)
        return;
    if (!m_frameThread)
        makeFrameThread();
    m_frameThread->post(
        [store = m_frameThread->worker<VideoFrameStore>(), epoch, frame] { store->save(epoch, frame); });
}

void GstEngine::makeFrameThread()
{
    m_frameThread
        = std::make_unique<WorkerThread>(std::make_unique<VideoFrameStore>(), QStringLiteral("frame-store"));
    const auto tell = [this](quint64 epoch, const QString &path, const QSize &size) {
        Q_EMIT fact(epoch, QStringLiteral("pause-frame-size"),
            {QStringLiteral("%1x%2").arg(size.width()).arg(size.height())});
        Q_EMIT fact(epoch, QStringLiteral("pause-frame"), {path});
    };
    connect(m_frameThread->worker<VideoFrameStore>(), &VideoFrameStore::saved, this, tell);
}

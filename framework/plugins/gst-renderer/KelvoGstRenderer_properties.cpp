// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"
#include "KelvoAnswer.h"
#include "KelvoGstRenderer.h"
#include "RendererValues.h"
#include "VideoFrameStore.h"

#include <QRect>
#include <QSize>

namespace {
/// Told by the renderer, never set.
bool isReportedOnly(const QString &name)
{
    return name == KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE
        || name == KelvoRenderer::PropertyColorKey;
}
} // namespace

void KelvoGstRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    if (!m_properties.contains(name) || isReportedOnly(name)) {
        reportError(KelvoError::NotSupported, name);
        return;
    }
    const std::optional<QVariant> accepted = RendererValues::accepted(name, value);
    if (!accepted) {
        reportError(KelvoError::InvalidValue, QStringLiteral("%1 = %2").arg(name, value.toString()));
        return;
    }
    // The player reports these itself, once they took effect.
    if (name == PropertyVolume)
        tellPlayer([volume = accepted->toInt()](ItemPlayer &player) { player.setVolume(volume); });
    else if (name == PropertyPlaybackSpeed && m_loaded)
        changeSpeed(accepted->toDouble());
    else
        setProperty(name, *accepted);
    updateVideo(name);
    // With its window a renderer learns that somebody has chosen it.
    if (name == PropertyXid)
        tellAgain();
}

/// Tells the player of a changed property that is about pictures.
void KelvoGstRenderer::updateVideo(const QString &name)
{
    if (name == PropertyXid || name == PropertyRenderRectangle) {
        const uint window = m_properties.value(PropertyXid).toUInt();
        const QRect place
            = RendererValues::toRectangle(m_properties.value(PropertyRenderRectangle).toString());
        tellPlayer([window, place](ItemPlayer &player) { player.placeVideo(window, place); });
    } else if (name == PropertyAutopaint || name == PropertyCurrentFrameOnPause) {
        const bool on = m_properties.value(name).toBool();
        const auto setter
            = name == PropertyAutopaint ? &ItemPlayer::setVideoAutopaint : &ItemPlayer::setFrameOnPause;
        tellPlayer([on, setter](ItemPlayer &player) { (player.*setter)(on); });
    }
}

void KelvoGstRenderer::saveFrame(quint64 epoch, const VideoFrame &frame)
{
    if (epoch != m_epoch)
        return;
    if (!m_frameThread) {
        m_frameThread = std::make_unique<WorkerThread>(
            std::make_unique<VideoFrameStore>(), QStringLiteral("frame-store"));
        const auto announce = [this](quint64 of, const QString &path, const QSize &size) {
            if (of != m_epoch)
                return;
            takeFact(QStringLiteral("pause-frame-size"),
                {QStringLiteral("%1x%2").arg(size.width()).arg(size.height())});
            takeFact(QStringLiteral("pause-frame"), {path});
        };
        connect(m_frameThread->worker<VideoFrameStore>(), &VideoFrameStore::saved, this, announce);
    }
    m_frameThread->post(
        [store = m_frameThread->worker<VideoFrameStore>(), epoch, frame] { store->save(epoch, frame); });
}

void KelvoGstRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    const KelvoAnswer answer(receiver, slot);
    if (name == PropertyPosition && m_state != Stopped && m_loaded) {
        tellPlayer([answer](ItemPlayer &player) { player.answerExactPosition(answer); });
        return;
    }
    const QVariant value = name == PropertyPosition ? QVariant(0.0) : m_properties.value(name);
    later([answer, name, value] { answer.deliver({name, value}); });
}

/// Kept at once, so that it also holds when the entry in play ends before the player gets to it.
void KelvoGstRenderer::changeSpeed(double speed)
{
    m_properties.insert(PropertyPlaybackSpeed, speed);
    tellPlayer([speed](ItemPlayer &player) { player.setSpeed(speed); });
}

/// Takes the value that holds from now on and reports it.
void KelvoGstRenderer::setProperty(const QString &name, const QVariant &value)
{
    m_properties.insert(name, value);
    later([this, name, value] { Q_EMIT kelvoPropertyChanged(name, value); });
}

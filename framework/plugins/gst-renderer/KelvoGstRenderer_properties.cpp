// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"
#include "KelvoAnswer.h"
#include "KelvoGstRenderer.h"
#include "RendererValues.h"

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

// SPDX-License-Identifier: MIT
#include "LyingRenderer.h"

#include <QScopedValueRollback>

#include <limits>

namespace {
constexpr int least = std::numeric_limits<int>::min();
constexpr int greatest = std::numeric_limits<int>::max();
constexpr uint positions[] = {0, 1, 9, 59, 3'600, 59'999, 100'000, uint(greatest), 4'294'967'295U};
constexpr int indices[] = {-1, 0, 1, 5, 4'000, greatest, -2, least};
constexpr int states[] = {0, 1, 2, 3, 1, 0, 4, -1, 77, greatest};
constexpr int durations[] = {0, 1, 30, 236, 100'000, greatest, -5, least};
constexpr float fractions[] = {0, 0.5F, 1, 2, -1, 1e9F};
} // namespace

LyingRenderer::LyingRenderer(QString uuid, QString name, quint64 seed)
    : m_uuid(std::move(uuid))
    , m_name(std::move(name))
    , m_dice(seed, 0)
{
}

void LyingRenderer::onCommand()
{
    if (m_dice.chance(60))
        lie();
}

void LyingRenderer::lie()
{
    // Who hears of it may give the next command at once.
    if (m_hangs || m_inLie)
        return;
    const QScopedValueRollback inLie(m_inLie, true);
    switch (m_dice.below(9)) {
    case 0:
    case 1:
    case 2:
        Q_EMIT stateChanged(static_cast<State>(m_dice.oneOf(states)));
        break;
    case 3: {
        KelvoContent content;
        content.uuid = QStringLiteral("nowhere");
        Q_EMIT mediaChanged(m_dice.oneOf(indices), content);
        break;
    }
    case 4:
        // Twice.
        Q_EMIT playlistChanged(nullptr);
        Q_EMIT playlistChanged(nullptr);
        break;
    case 5:
        Q_EMIT bufferingInfo(m_dice.oneOf(fractions));
        Q_EMIT scanningInfo(m_dice.oneOf(fractions));
        break;
    case 6:
        // Opens a dialog, in which this object may be deleted.
        if (m_dice.chance(20))
            QMetaObject::invokeMethod(this, &LyingRenderer::playbackCompleted, Qt::QueuedConnection);
        Q_EMIT error(
            {static_cast<KelvoError::Code>(m_dice.between(-1, 500)), QString(m_dice.below(3000), u'e')});
        break;
    case 7:
        return lieAboutProperties();
    default:
        lieAboutFacts();
    }
}

void LyingRenderer::lieAboutFacts()
{
    Q_EMIT metadataChanged(QStringLiteral("duration"), {m_dice.oneOf(durations)});
    Q_EMIT metadataChanged(QStringLiteral("title"), {QString(m_dice.below(2000), u't')});
    Q_EMIT metadataChanged(QString(), {QVariant()});
    Q_EMIT metadataChanged(QStringLiteral("<img src=x>"), {QByteArray("\xff\xfe\x00", 3), 7});
}

void LyingRenderer::lieAboutProperties()
{
    Q_EMIT kelvoPropertyChanged(
        PropertyVolume, m_dice.oneOf(QList<QVariant>{-5, 50, 100'000, "loud", QVariant()}));
    Q_EMIT kelvoPropertyChanged(
        PropertyColorKey, m_dice.oneOf(QList<QVariant>{0U, 0x123456U, 0x1000000U, "green", -1}));
    Q_EMIT kelvoPropertyChanged(
        PropertyCurrentFrameOnPause, m_dice.oneOf(QList<QVariant>{true, false, 7, "maybe"}));
    Q_EMIT kelvoPropertyChanged(KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, m_dice.chance(50));
    m_name = m_dice.chance(30) ? QString() : QString(m_dice.below(40), u'n');
    Q_EMIT nameChanged(m_name);
}

void LyingRenderer::give(const KelvoAnswer &answer, const QVariantList &values)
{
    if (m_hangs || m_dice.chance(20))
        m_late.append({answer, values});
    else
        answer.deliver(values);
    if (m_dice.chance(20))
        answer.deliver(values);
}

void LyingRenderer::answerLate()
{
    for (const Late &late : std::exchange(m_late, {}))
        late.answer.deliver(late.values);
}

void LyingRenderer::getStatus(QObject *receiver, const char *slot)
{
    give({receiver, slot},
        {QStringLiteral("no list"), m_dice.oneOf(positions), m_dice.oneOf(states), QString()});
}

void LyingRenderer::getPosition(QObject *receiver, const char *slot)
{
    give({receiver, slot}, {m_dice.oneOf(positions)});
}

void LyingRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    if (!m_hangs && m_dice.chance(50))
        Q_EMIT kelvoPropertyChanged(name, value);
}

void LyingRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    give({receiver, slot}, {name, m_dice.oneOf(QList<QVariant>{-1, 50, "loud", true})});
}

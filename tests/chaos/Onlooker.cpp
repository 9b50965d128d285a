// SPDX-License-Identifier: MIT
#include "Onlooker.h"

#include "Questions.h"

#include <QSlider>
#include <QToolButton>

Onlooker::Onlooker(const Stage &stage, Questions *questions)
    : m_stage(stage)
    , m_questions(questions)
{
    const KelvoRegistry *registry = stage.registry();
    for (const KelvoRenderer *renderer : registry->renderers())
        listen(renderer->uuid());
    connect(registry, &KelvoRegistry::rendererAdded, this, &Onlooker::listen);
    connect(registry, &KelvoRegistry::rendererRemoved, this, &Onlooker::lose);
    connect(stage.console.window(), SIGNAL(currentRendererChanged(QString)), this, SLOT(choose(QString)));
    for (const char *name : {"m_music_stopButton", "m_video_stopButton"}) {
        connect(stage.find<QToolButton>(name), &QToolButton::clicked, this, [this] {
            if (!m_chosen.isEmpty())
                expectStopped();
        });
    }
    for (const char *name : {"m_music_durationSlider", "m_video_durationSlider"}) {
        connect(
            stage.find<QSlider>(name), &QSlider::sliderReleased, this, [this] { m_isSliderMoved = true; });
    }
}

bool Onlooker::canBeAt(int second) const
{
    return second == 0 || m_chosen.isEmpty() || !isHonest() || m_questions->hasBeenAt(m_chosen, second);
}

/// The position is shown as 0 with that.
void Onlooker::expectStopped()
{
    m_caption = QStringLiteral("Play");
    m_isSliderMoved = false;
}

void Onlooker::choose(const QString &uuid)
{
    if (const KelvoRenderer *before = m_stage.registry()->findRendererByUuid(m_chosen))
        before->disconnect(SIGNAL(nameChanged(QString)), this);
    m_chosen = m_stage.registry()->findRendererByUuid(uuid) ? uuid : QString();
    m_isLabelReadable = m_isLabelReadable && isHonest();
    expectStopped();
    m_duration.reset();
}

void Onlooker::listen(const QString &uuid)
{
    const KelvoRenderer *renderer = m_stage.registry()->findRendererByUuid(uuid);
    if (!renderer)
        return;
    connect(renderer, &KelvoRenderer::stateChanged, this,
        [this, uuid](KelvoRenderer::State state) { hearState(uuid, int(state)); });
    m_names[uuid] = renderer->name();
    connect(renderer, &KelvoRenderer::nameChanged, this,
        [this, uuid](const QString &name) { m_names[uuid] = name; });
    connect(renderer, &KelvoRenderer::mediaChanged, this, [this, uuid] {
        if (uuid == m_chosen)
            m_duration.reset();
    });
    connect(renderer, &KelvoRenderer::metadataChanged, this,
        [this, uuid](const QString &key, const QList<QVariant> &values) { hearFact(uuid, key, values); });
}

void Onlooker::lose(const QString &uuid)
{
    m_questions->forget(uuid);
    if (uuid != m_chosen)
        return;
    m_chosen.clear();
    m_caption = QStringLiteral("Play");
    m_duration.reset();
}

void Onlooker::hearState(const QString &uuid, int state)
{
    ++m_reports;
    if (uuid != m_chosen)
        return;
    // What a press would do. While an item is on its way, and for states that there are none of, it stays.
    if (state == KelvoRenderer::Stopped)
        expectStopped();
    else if (state == KelvoRenderer::Playing)
        m_caption = QStringLiteral("Pause");
    else if (state == KelvoRenderer::Paused)
        m_caption = QStringLiteral("Resume");
}

void Onlooker::hearFact(const QString &uuid, const QString &key, const QList<QVariant> &values)
{
    if (uuid != m_chosen || key != QLatin1String("duration"))
        return;
    m_duration = values.value(0).toInt();
    m_isLabelReadable = isHonest();
    m_isSliderMoved = false;
}

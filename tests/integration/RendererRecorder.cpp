// SPDX-License-Identifier: MIT
#include "RendererRecorder.h"

#include <QMetaEnum>
#include <QTest>

namespace {
constexpr int patience = 5000; // milliseconds
}

RendererRecorder::RendererRecorder(KelvoRenderer *renderer)
    : m_renderer(renderer)
{
    connect(renderer, &KelvoRenderer::stateChanged, this, [this](KelvoRenderer::State state) {
        m_state = state;
        m_states.append(state);
        m_events.append(QString::fromLatin1(QMetaEnum::fromType<KelvoRenderer::State>().valueToKey(state)));
    });
    connect(renderer, &KelvoRenderer::mediaChanged, this, [this](int index, const KelvoContent &content) {
        m_mediaIndexes.append(index);
        m_mediaUrls.append(content.url);
        m_metadata.clear();
        m_events.append(QStringLiteral("media %1").arg(index));
    });
    connect(renderer, &KelvoRenderer::playbackCompleted, this, [this] {
        ++m_completed;
        m_events.append(QStringLiteral("completed"));
    });
    connect(renderer, &KelvoRenderer::playlistChanged, this, [this](KelvoPlaylist *playlist) {
        m_events.append(playlist ? QStringLiteral("playlist") : QStringLiteral("no playlist"));
    });
    connect(renderer, &KelvoRenderer::metadataChanged, this,
        [this](const QString &key, const QList<QVariant> &values) {
            QVERIFY2(!values.isEmpty(), qPrintable(key));
            m_metadata.insert(key, values.constFirst());
            m_metadataKeys.append(key);
        });
    connect(renderer, &KelvoRenderer::kelvoPropertyChanged, this,
        [this](const QString &name, const QVariant &value) {
            m_properties.insert(name, value);
            m_propertyNames.append(name);
        });
    connect(renderer, &KelvoRenderer::bufferingInfo, this,
        [this](float fraction) { m_buffering.append(fraction); });
    connect(renderer, &KelvoRenderer::scanningInfo, this,
        [this](float fraction) { m_scanning.append(fraction); });
    connect(renderer, &KelvoRenderer::error, this, [this](const KelvoError &error) {
        m_errors.append(error.code());
        m_errorTexts.append(error.message());
        m_events.append(QStringLiteral("error %1").arg(error.code()));
    });
}

void RendererRecorder::clear()
{
    m_states.clear();
    m_errors.clear();
    m_errorTexts.clear();
    m_mediaIndexes.clear();
    m_mediaUrls.clear();
    m_buffering.clear();
    m_scanning.clear();
    m_completed = 0;
    m_metadata.clear();
    m_metadataKeys.clear();
    m_properties.clear();
    m_propertyNames.clear();
    m_events.clear();
}

int RendererRecorder::askPosition()
{
    m_position = -1;
    m_renderer->getPosition(this, "takePosition(uint)");
    return QTest::qWaitFor([this] { return m_position >= 0; }, patience) ? m_position : -1;
}

RendererRecorder::Status RendererRecorder::askStatus()
{
    m_status = {};
    m_renderer->getStatus(this, "takeStatus(QString, uint, int, QString)");
    return QTest::qWaitFor([this] { return m_status.state >= 0; }, patience) ? m_status : Status{};
}

QVariant RendererRecorder::askProperty(const QString &name)
{
    m_answered = false;
    m_renderer->kelvoProperty(name, this, "takeProperty(QString,QVariant)");
    return QTest::qWaitFor([this] { return m_answered; }, patience) ? m_answer
                                                                    : QVariant(QStringLiteral("no answer"));
}

void RendererRecorder::takePosition(uint seconds)
{
    m_position = int(seconds);
}

void RendererRecorder::takeStatus(const QString &playlistId, uint index, int state, const QString &objectId)
{
    m_status = {playlistId, index, state, objectId};
}

void RendererRecorder::takeProperty(const QString &, const QVariant &value)
{
    m_answer = value;
    m_answered = true;
}

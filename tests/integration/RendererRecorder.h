// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlaylist.h"
#include "KelvoRenderer.h"

#include <QElapsedTimer>
#include <QHash>
#include <QPointer>

/// Records all that a renderer reports, in order, and asks it for what it answers.
class RendererRecorder : public QObject
{
    Q_OBJECT
public:
    explicit RendererRecorder(KelvoRenderer *renderer);

    KelvoRenderer::State state() const { return m_state; }
    QList<KelvoRenderer::State> states() const { return m_states; }
    QList<int> errors() const { return m_errors; }
    QStringList errorTexts() const { return m_errorTexts; }
    QList<int> mediaIndexes() const { return m_mediaIndexes; }
    QList<QUrl> mediaUrls() const { return m_mediaUrls; }
    QList<float> buffering() const { return m_buffering; }
    QList<float> scanning() const { return m_scanning; }
    int completed() const { return m_completed; }
    QVariant metadata(const QString &key) const { return m_metadata.value(key); }
    int metadataReports(const QString &key) const { return int(m_metadataKeys.count(key)); }
    QVariant property(const QString &name) const { return m_properties.value(name); }
    int propertyReports(const QString &name) const { return int(m_propertyNames.count(name)); }
    /// The kinds of reports in order: "Playing", "media 0", "playlist", "no playlist", "error 104",
    /// "completed".
    QStringList events() const { return m_events; }
    /// Forgets the reports, not the state.
    void clear();

    /// Seconds; -1 when there is no answer within some seconds.
    int askPosition();
    struct Status
    {
        QString playlistId;
        uint index = 0;
        int state = -1;
        QString objectId;
    };
    Status askStatus();
    QVariant askProperty(const QString &name);

public Q_SLOTS:
    void takePosition(uint seconds);
    void takeStatus(const QString &playlistId, uint index, int state, const QString &objectId);
    void takeProperty(const QString &name, const QVariant &value);

private:
    QPointer<KelvoRenderer> m_renderer;
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    QList<KelvoRenderer::State> m_states;
    QList<int> m_errors;
    QStringList m_errorTexts;
    QList<int> m_mediaIndexes;
    QList<QUrl> m_mediaUrls;
    QList<float> m_buffering;
    QList<float> m_scanning;
    int m_completed = 0;
    QHash<QString, QVariant> m_metadata;
    QStringList m_metadataKeys;
    QHash<QString, QVariant> m_properties;
    QStringList m_propertyNames;
    QStringList m_events;

    int m_position = -1;
    Status m_status;
    QVariant m_answer;
    bool m_answered = false;
};

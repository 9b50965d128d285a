// SPDX-License-Identifier: MIT
#pragma once

#include "Finding.h"
#include "KelvoRenderer.h"

#include <QHash>
#include <QPointer>
#include <QStringList>
#include <QUrl>

#include <functional>

class KelvoPlaylist;

/// Hears all that a renderer reports, in order, receives its answers, and notes what no renderer may ever do.
class RendererProbe : public QObject
{
    Q_OBJECT
public:
    struct Media
    {
        int index;
        KelvoContent content;
    };
    struct Status
    {
        QString playlistId;
        uint index;
        int state;
        QString objectId;
    };

    /// The clock, in milliseconds, is that of timedEvents(); without one they all have the time 0.
    explicit RendererProbe(KelvoRenderer &renderer, std::function<qint64()> clock = {});

    /// True while a command is being called: nothing may be reported or answered then.
    void setInCommand(bool inside) { m_inCommand = inside; }

    KelvoRenderer::State state() const { return m_state; }
    int errorsOf(KelvoError::Code code) const;
    QVariant property(const QString &name) const;
    int metadataCount(const QString &key) const;
    QVariant metadata(const QString &key) const;
    /// The state may be told once more although it is the same.
    void expectSameState() { m_sameStateExpected = true; }
    /// Forgets what was heard, not the state.
    void clear();
    /// All that was reported, also before clear().
    QList<HeardEvent> timedEvents() const { return m_timedEvents; }

    QList<KelvoRenderer::State> states;
    QList<Media> media;
    QList<QPointer<KelvoPlaylist>> playlists;
    QList<QPair<QString, QVariant>> properties;
    QList<QPair<QString, QVariant>> metadataHeard;
    QList<KelvoError> errors;
    int completed = 0;
    QStringList events; ///< everything in words, in order
    QStringList violations;
    /// Errors by which the renderer said that it cannot do what it was told, also before clear().
    QStringList refusals;

    QList<Status> statusAnswers;
    QList<uint> positionAnswers;
    QList<QPair<QString, QVariant>> propertyAnswers;

Q_SIGNALS:
    /// An answer has come.
    void answered();

public Q_SLOTS:
    void statusAnswer(const QString &playlistId, uint index, int state, const QString &objectId);
    void positionAnswer(uint seconds);
    void propertyAnswer(const QString &name, const QVariant &value);

private:
    void note(const QString &event);
    void hearState(KelvoRenderer::State state);
    void hearFraction(const QString &what, float fraction, float *last);
    void hearMetadata(const QString &key, const QList<QVariant> &values);

    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    float m_lastBuffering = -1;
    float m_lastScanning = -1;
    KelvoContent m_item; ///< announced last
    QUrl m_factsOf;
    QHash<QString, QString> m_factsTold; ///< of the item, since it was announced among others
    bool m_inCommand = false;
    bool m_sameStateExpected = false;
    std::function<qint64()> m_clock;
    QList<HeardEvent> m_timedEvents;
};

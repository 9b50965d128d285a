// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"
#include "RecordedMedia.h"

#include <QHash>
#include <QSet>

/// Makes a scenario of a run: the commands as steps, with the waits between them, and what the renderers reported as
/// expectations, with tolerances that follow from what was measured.
///
/// A command that came soon after a report follows the expectation of it, so that a slower renderer has its time. On
/// the renderer that was recorded the scenario holds; on another one it shows what is different.
class ScenarioWriter
{
public:
    /// A scenario has no more steps than this; what comes later is left out.
    static constexpr qsizetype MostSteps = 9000;

    void add(qint64 index, const RecordedEvent &event);

    /// The scenario as YAML. The title is one line of plain text.
    QByteArray yaml(const QString &title) const;
    bool isCut() const { return m_isCut; }
    /// Whether no renderer was told anything that a scenario has a step for: then there is no scenario.
    bool isEmpty() const { return m_renderers.isEmpty(); }

private:
    struct Step
    {
        QByteArray text;
        qsizetype renderer = 0;
    };
    struct Renderer
    {
        QString state;
        QString playlist;
        /// Names of the properties that were set and not reported yet.
        QStringList properties;
        /// The step that expects Paused, while no position was answered yet; -1: none.
        qsizetype pausedStep = -1;
    };

    bool isForRenderer(const RecordedEvent &command) const;
    bool hasRoomFor(const QString &uuid) const;
    qsizetype rendererOf(const QString &uuid);
    void takeCommand(const RecordedEvent &event);
    static void noteCommand(Renderer *renderer, const RecordedEvent &event);
    QByteArray commandStep(const RecordedEvent &event);
    static QByteArray propertyStep(const RecordedEvent &event);
    void takeReport(qsizetype renderer, const RecordedEvent &event);
    QByteArray expectation(qsizetype renderer, const RecordedEvent &event);
    QByteArray stateExpectation(Renderer *renderer, const QString &state);
    QByteArray itemExpectation(Renderer *renderer, const RecordedEvent &event);
    QByteArray propertyExpectation(Renderer *renderer, const RecordedEvent &event);
    void takePosition(qsizetype renderer, const RecordedEvent &event, double position);
    void takeRepeatMode(const RecordedEvent &event);
    void append(qsizetype renderer, const QByteArray &step, double time);
    void need(const QString &what);
    QByteArray head(const QString &title) const;

    QHash<QString, qsizetype> m_indexes;
    QSet<QString> m_others; ///< sources and playlists
    QList<Renderer> m_renderers;
    QList<Step> m_steps;
    RecordedMedia m_media;
    QStringList m_needs;
    /// When what the last step stands for happened.
    double m_time = 0;
    bool m_hasError = false;
    bool m_isCut = false;
};

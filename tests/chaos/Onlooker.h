// SPDX-License-Identifier: MIT
#pragma once

#include "Stage.h"

#include "KelvoRenderer.h"

#include <QHash>
#include <QObject>

#include <optional>

class Questions;

/// Hears what the renderers report and what the user does, and knows from that what the window must show.
class Onlooker : public QObject
{
    Q_OBJECT
public:
    /// Neither is owned.
    Onlooker(const Stage &stage, Questions *questions);

    /// Uuid of the chosen renderer, empty when there is none.
    QString chosen() const { return m_chosen; }
    /// Of the button that plays and pauses.
    QString caption() const { return m_caption; }
    /// Whether the chosen renderer keeps to what is asked of renderers.
    bool isHonest() const { return !m_chosen.startsWith(liarPrefix); }
    /// Whether the chosen renderer can be at this second, as far as it has told.
    bool canBeAt(int second) const;
    /// The label is made for up to 999 minutes: after a liar's more, digits stay in it until a duration is told.
    bool isLabelReadable() const { return m_isLabelReadable; }
    /// Of the item in play, in seconds, if it was told.
    std::optional<int> duration() const { return m_duration; }
    /// The user has moved a slider, and no position has been shown since that the renderer would have told.
    bool isSliderMoved() const { return m_isSliderMoved; }
    /// What the window calls the renderer. It follows the names of all until another is chosen: who was chosen until then
    /// is no longer listened to.
    QString nameOf(const QString &uuid) const { return m_names.value(uuid); }
    int reports() const { return m_reports; }

    /// What the uuids of renderers begin with that say and do what no renderer may.
    static constexpr QLatin1String liarPrefix{"liar:"};

private Q_SLOTS:
    void choose(const QString &uuid);

private:
    void expectStopped();
    void listen(const QString &uuid);
    void lose(const QString &uuid);
    void hearState(const QString &uuid, int state);
    void hearFact(const QString &uuid, const QString &key, const QList<QVariant> &values);

    const Stage &m_stage;
    Questions *const m_questions;
    QString m_chosen;
    QString m_caption = QStringLiteral("Play");
    std::optional<int> m_duration;
    QHash<QString, QString> m_names;
    bool m_isSliderMoved = false;
    bool m_isLabelReadable = true;
    int m_reports = 0;
};

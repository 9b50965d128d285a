// SPDX-License-Identifier: MIT
#pragma once

#include "HeardSound.h"
#include "KelvoRenderer.h"

#include <QHash>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

class Ear;

/// Notes what a renderer says and what is heard of it, both by one clock. GUI thread.
class SoundWatch : public QObject
{
    Q_OBJECT
public:
    /// Neither is owned; both outlive this.
    SoundWatch(KelvoRenderer *renderer, const Ear *ear, QObject *parent = nullptr);

    /// What is told and heard from now on is the effect of the command that is given now.
    void begin();

    /// What it said first, since the command: seconds after that.
    std::optional<double> saidAt(KelvoRenderer::State state) const;
    std::optional<double> announcedAt(const QUrl &medium) const;
    /// The medium announced last.
    QUrl medium() const { return m_medium; }
    /// The volume told last; -1: none.
    int volume() const { return m_volume; }
    /// The first of that kind that was heard since the command; its time is seconds after that.
    std::optional<Hearing> heard(Hearing::Kind kind) const;
    /// The first that was heard of an item, the same way.
    std::optional<Hearing> heardOf(int item) const;
    /// Where the sound went on first that was further away from a place than a drop-out explains, the same way.
    std::optional<Hearing> heardAwayFrom(double place) const;
    /// As of now.
    const HeardSound &sound();

    /// Lets the event loop run until that is so; false when it is not after so many seconds, or stop() was called.
    bool waitUntil(const std::function<bool()> &condition, double seconds);
    void wait(double seconds);
    /// From now on nothing is waited for.
    void stop() { m_isStopped = true; }

    /// What it answers when it is asked for its position, in seconds with their fraction; and what was heard just then.
    struct Position
    {
        double told = 0;
        std::optional<HeardSound::Measured> heard;
    };
    std::optional<Position> askPosition();
    /// Nothing where it does not answer, or has none.
    QVariant askProperty(const QString &name);

private Q_SLOTS:
    void takeAnswer(const QString &name, const QVariant &value);

private:
    void take(const Hearing &hearing);
    std::optional<Hearing> find(const std::function<bool(const Hearing &)> &is) const;

    KelvoRenderer *const m_renderer;
    double m_begin = 0;
    QHash<int, double> m_states; ///< times of their first reports since the command
    QHash<QUrl, double> m_announced;
    QUrl m_medium;
    int m_volume = -1;
    QList<Hearing> m_heard; ///< since the command
    HeardSound m_sound;
    std::optional<QVariant> m_answer;
    std::optional<HeardSound::Measured> m_heardThen; ///< when it answered
    bool m_isStopped = false;
};

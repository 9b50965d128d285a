// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"
#include "Measured.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <optional>

/// Notes what a renderer says and, by a sense, what comes out of it, both by one clock. GUI thread.
class SenseWatch : public QObject
{
    Q_OBJECT
public:
    /// Does not own the renderer.
    explicit SenseWatch(KelvoRenderer *renderer, QObject *parent = nullptr);

    /// What is told and comes out from now on is the effect of the command that is given now.
    virtual void begin();
    /// Null once it has gone: then nothing is waited for any more.
    KelvoRenderer *renderer() const { return m_renderer; }

    /// What it said first, since the command: seconds after that.
    std::optional<double> saidAt(KelvoRenderer::State state) const;
    std::optional<double> announcedAt(const QUrl &medium) const;
    /// The medium announced last.
    QUrl medium() const { return m_medium; }
    /// The volume told last; -1: none.
    int volume() const { return m_volume; }

    /// What came out first since the command: when, in seconds after that, and of which item (0: not known).
    struct First
    {
        Measured at;
        int item = 0;
    };
    virtual std::optional<First> first() const = 0;
    /// Something has come out since the command, and goes on.
    virtual bool hasGoneOn() const = 0;
    virtual bool isAtRest() = 0;
    /// When it came to rest, in seconds after the command.
    virtual std::optional<Measured> restedAt() = 0;
    /// Of what comes out now. Seconds.
    virtual std::optional<Measured> position() = 0;
    /// Where it went on first, since the command, that was further away from a place than a drop-out explains.
    virtual std::optional<Measured> wentOnAwayFrom(double place) const = 0;

    /// One item after the other, since the command.
    struct Change
    {
        double ended = 0; ///< when the one did, in seconds after the command
        Measured gap; ///< until the other began, in seconds
    };
    virtual std::optional<Change> changeTo(int item) = 0;
    /// Why what is missing could not be measured; empty: it just did not come out.
    virtual QString doubt() = 0;

    /// Lets the event loop run until that is so; false when it is not after so many seconds, or stop() was called.
    bool waitUntil(const std::function<bool()> &condition, double seconds);
    void wait(double seconds);
    /// From now on nothing is waited for.
    void stop() { m_isStopped = true; }

    /// What it answers when it is asked for its position, in seconds with their fraction; and what came out just then.
    struct Position
    {
        double told = 0;
        std::optional<Measured> cameOut;
    };
    std::optional<Position> askPosition();
    /// Nothing where it does not answer, or has none.
    QVariant askProperty(const QString &name);

    /// What jumps no further may have been interrupted only. Seconds.
    static constexpr double LongestDropOut = 2;

protected:
    /// When the command was given, by the clock of what comes out.
    double commandTime() const { return m_begin; }

private Q_SLOTS:
    void takeAnswer(const QString &name, const QVariant &value);

private:
    const QPointer<KelvoRenderer> m_renderer;
    double m_begin = 0;
    QHash<int, double> m_states; ///< times of their first reports since the command
    QHash<QUrl, double> m_announced;
    QUrl m_medium;
    int m_volume = -1;
    std::optional<QVariant> m_answer;
    std::optional<Measured> m_cameOutThen; ///< when it answered
    bool m_isStopped = false;
};

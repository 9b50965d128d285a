// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "KelvoMediaInfo.h"
#include "KelvoRenderer.h"

#include <QList>
#include <QObject>
#include <QVariant>

class ItemProgress;

/// A player outside of this process, as its protocol lets it be driven: one item at a time.
///
/// A transport knows one protocol and its players' quirks, and reports what the player says as often as it says it: what
/// of it is news, and where the item is by it, is kept above, and what is played next, repeat, auto-advance, pauseAt and
/// everything else that a playlist needs is the business of the renderer above that. GUI thread; nothing here blocks, and
/// every signal comes from the event loop, never from within a call.
///
/// Each item has the epoch of its load() (1 and up). A report about an item carries the epoch that the
/// transport takes to be in the player: that of the last load() that the player accepted, or 0 for what another
/// controller put there. What comes of an older epoch is dropped.
class RemoteTransport : public QObject
{
    Q_OBJECT
public:
    struct Item
    {
        quint64 epoch = 0;
        KelvoMediaInfo info; ///< its URL is absolute; the rest may be unknown
        bool paused = false; ///< go to Paused instead of Playing, where the protocol can
        double rate = 1.0;
    };

    /// What the player says it can do; a player that has not said yet is taken to be able to do everything.
    struct Abilities
    {
        bool seek = true;
        bool pause = true;
        bool volume = true;
        double slowestRate = 1.0; ///< negative: backwards
        double fastestRate = 1.0;
    };

    /// Where an item was when its player stopped, in seconds: an end and a stop by somebody else look the same.
    struct Stop
    {
        double position = 0;
        double duration = -1; ///< below 0: not known
        double margin = 0; ///< what stops so close to its end has ended

        /// Of what has no known end it is taken to be one.
        bool isEnd() const { return duration <= 0 || position >= duration - margin; }
    };

    using QObject::QObject;

    virtual Abilities abilities() const = 0;

    /// Replaces what the player plays. Ends with a state report of the epoch, or with failed().
    virtual void load(const Item &item) = 0;
    /// Stops. Nothing is reported about an earlier epoch any more.
    virtual void unload() = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    /// To that second from the item's beginning, already clamped to its duration where that is known.
    virtual void seek(double seconds) = 0;
    /// 0..99, on a cubic scale.
    virtual void setVolume(int volume) = 0;
    /// 1.0 normal; only called with what abilities() allows.
    virtual void setRate(double rate) = 0;

    /// Asks the player once; ends with positionReported() or, when the player does not answer, with nothing.
    virtual void askPosition() = 0;

    /// How far the item in play has come by what was reported of it: for the judgement of what the player says. Given
    /// by whoever listens to the reports, before the first one, and not owned.
    void setProgress(const ItemProgress *progress) { m_progress = progress; }
    const ItemProgress &progress() const { return *m_progress; }

Q_SIGNALS:
    void stateReported(quint64 epoch, KelvoRenderer::State state);
    /// The item is at its end, for certain.
    void ended(quint64 epoch);
    /// The player has stopped with the item, and was not told to. An item of epoch 0 is told of as a state.
    void stopped(quint64 epoch, const RemoteTransport::Stop &stop);
    /// The item cannot be played, or no further.
    void failed(quint64 epoch, KelvoError::Code code, const QString &message);
    /// A command was refused or not answered (KelvoError::CommandRefused, Timeout ...), with the player's own
    /// words; what plays goes on.
    void troubled(KelvoError::Code code, const QString &message);
    /// Seconds with their fraction, true at the time of the report. Also without being asked, for instance when
    /// somebody else seeks.
    void positionReported(quint64 epoch, double seconds);
    /// The player has taken a seek to that second, ours or somebody else's. For so many milliseconds more it may tell
    /// other positions, which are not true.
    void seeked(quint64 epoch, double seconds, int settling);
    /// The item has played for so many seconds already, whatever the player says of its position.
    void begun(quint64 epoch, double seconds);
    /// Seconds; below 0: not known.
    void durationReported(quint64 epoch, double seconds);
    /// As KelvoRenderer::metadataChanged(), but for "duration".
    void fact(quint64 epoch, const QString &key, const QList<QVariant> &values);
    /// Another controller put this into the player: it is epoch 0 from now on. Never while a load() is under way.
    void replaced(const KelvoMediaInfo &item);
    /// 0..99, on a cubic scale.
    void volumeReported(int volume);
    void rateReported(double rate);
    void nameReported(const QString &name);

private:
    const ItemProgress *m_progress = nullptr;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "KelvoMediaInfo.h"
#include "KelvoRenderer.h"

#include <QList>
#include <QObject>
#include <QUrl>
#include <QVariant>

#include <functional>
#include <optional>

class RendererProperties;

/// What plays one item at a time; which one, an ItemRenderer decides.
///
/// GUI thread; nothing here blocks. Each load() has its epoch (1 and up), and what is reported about an item carries it:
/// what comes of an earlier one is dropped. 0 is what another controller put in the item's place.
///
/// Signals may come while a command runs, but load() and readList() report only after they have returned.
class Engine : public QObject
{
    Q_OBJECT
public:
    /// What load() is to play.
    struct Item
    {
        quint64 epoch = 0; ///< what all reports about it carry
        KelvoMediaInfo info; ///< as the playlist has it; without one the address alone
        QUrl uri; ///< of the entry, where the item is a list; otherwise of the item
        int entry = 0; ///< its place among the entries
        bool paused = false; ///< go to Paused instead of Playing, where that can be done
        double rate = 1.0; ///< greater than 0
    };
    /// Takes the position, in seconds with their fraction.
    using PositionAnswer = std::function<void(double seconds)>;

    using QObject::QObject;

    /// Display name of the renderer; may change (nameReported()).
    virtual QString name() const = 0;
    /// Says in which properties it differs from the common table. Called once, by the renderer's constructor.
    virtual void describe(RendererProperties &) const { }
    /// Why a property cannot have a value that is good in itself, in words for people; empty: it can.
    virtual QString refusal(const QString &name, const QVariant &value) const;
    /// Whether video goes to the window that the console offers. Otherwise that offer comes to nothing.
    virtual bool usesWindow() const { return true; }

    /// Whether this can be the address of something to play; by default any absolute one.
    virtual bool canOpen(const QUrl &uri) const;
    /// Replaces what plays. Ends with a state report of the epoch, or with failed().
    virtual void load(const Item &item) = 0;
    /// Stops; nothing when nothing plays. Nothing is reported about the item any more.
    virtual void unload() = 0;
    /// Ends with a state report of Paused. An item on its way pauses once it is there.
    virtual void pause() = 0;
    /// Ends with a state report of Playing, or of Transitioning when it has to wait first.
    virtual void resume() = 0;
    /// Clamps to the item. To its end: the item ends. An item on its way is sought once it is there.
    virtual void seek(int seconds, KelvoRenderer::SeekMode mode) = 0;
    /// Pauses when the position reaches that second, once, in this item or a later one; none: never mind.
    virtual void setPauseAt(std::optional<uint> seconds) = 0;
    /// Answers once, from the event loop; only asked for while it has an item.
    virtual void answerPosition(PositionAnswer answer) = 0;

    /// The entries of a list that needs no reading; empty: the item is one medium, or has to be read.
    virtual QList<QUrl> knownEntries(const KelvoMediaInfo &) const { return {}; }
    /// Whether the item is to be read as a list before it is played.
    virtual bool mayBeList(const KelvoMediaInfo &) const { return false; }
    /// Whether an item that failed like this as a medium may be a list.
    virtual bool mayBeList(KelvoError::Code) const { return false; }
    /// Ends with listRead(), unless it is cancelled.
    virtual void readList(quint64 epoch, const KelvoMediaInfo &item);
    /// Whatever readList() was asked for is no longer wanted; nothing when nothing is read.
    virtual void cancelReading() { }

    /// Gives a property its value, which is one that the table accepts. True: propertyReported() follows when it took
    /// effect; false: it has taken effect, is taken along by the next load(), or does not concern the engine.
    virtual bool applyProperty(const QString &name, const QVariant &value);
    /// Sets a property that only this engine has, at once, and reports what comes of it. False: it has none of that name.
    virtual bool setOwnProperty(const QString &name, const QVariant &value);
    /// Invalid: it has none of that name.
    virtual QVariant ownProperty(const QString &name) const;

    /// Queues a report: makes the call from the event loop, after those queued before, unless the engine is gone by then.
    virtual void post(std::function<void()> call);
    /// Makes the call that carries out a command: by default at once, otherwise in the order of the commands.
    virtual void command(std::function<void()> call);

Q_SIGNALS:
    /// Stopped: by somebody else, at the player itself. The item may be taken up there again.
    void stateReached(quint64 epoch, KelvoRenderer::State state);
    /// Whether playback is to stand still was decided otherwise than by pause() and resume(): the second of setPauseAt()
    /// was reached, or somebody else did it at the player itself.
    void intentChanged(quint64 epoch, bool paused);
    /// The item came to its end by itself. `progressed` is false for one that ended where it began, such as a picture.
    void ended(quint64 epoch, bool progressed);
    /// The item cannot be played, or, after it has `progressed` by a second or more, no further.
    void failed(quint64 epoch, KelvoError::Code code, const QString &message, bool progressed);
    /// Something went wrong or was refused; what plays goes on.
    void troubled(KelvoError::Code code, const QString &message);
    /// As KelvoRenderer::metadataChanged().
    void fact(quint64 epoch, const QString &key, const QList<QVariant> &values);
    /// As KelvoRenderer::bufferingInfo().
    void buffering(quint64 epoch, float fraction);
    /// The value that a property has from now on.
    void propertyReported(const QString &name, const QVariant &value);
    /// Another controller put this in the item's place: it is epoch 0 from now on.
    void replaced(const KelvoMediaInfo &item);
    /// name() has changed.
    void nameReported(const QString &name);
    /// What the list holds, absolute addresses. Without any: why it cannot be played or, when there is no problem
    /// either, it is no list and plays as a medium.
    void listRead(quint64 epoch, const QList<QUrl> &entries, const KelvoError &problem);
};

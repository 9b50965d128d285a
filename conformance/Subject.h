// SPDX-License-Identifier: MIT
#pragma once

#include "Claim.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QUrl>

class KelvoRegistry;
class KelvoRenderer;

/// A renderer that is held to the contract: where it comes from, what it can play, and how its time passes.
///
/// To hold another renderer to the contract: derive and fill in. GUI thread only.
class Subject
{
public:
    Subject() = default;
    virtual ~Subject() = default;
    Q_DISABLE_COPY_MOVE(Subject)

    /// File name of the plug-in that brings it, asked for whenever that is to be loaded.
    virtual QString pluginFile() const = 0;
    /// Null while it is not there.
    virtual KelvoRenderer *findIn(const KelvoRegistry &registry) const;
    /// Called once for each renderer object, before anything else is.
    virtual void prepare(KelvoRenderer &) { }
    /// Called at the end of each trial whose renderer is still there.
    virtual void finish(KelvoRenderer &) { }

    /// Three different items of half a second to two seconds.
    virtual QList<QUrl> shortItems() const = 0;
    /// Seekable media of longSeconds().
    virtual QUrl longItem() const = 0;
    virtual int longSeconds() const = 0;
    virtual QUrl failingItem() const = 0;
    /// Something that plays and cannot seek; empty: there is no such thing.
    virtual QUrl unseekableItem() const { return {}; }

    /// Lets a little time pass, real or simulated, and runs the event loop. The renderer may be null.
    virtual void letTimePass(KelvoRenderer *renderer);
    /// Milliseconds of the time that passes for the renderer.
    virtual qint64 time() const;
    /// Whether time() is that of the wall: then the groups of the contract may be tried side by side, in processes of
    /// their own.
    virtual bool inRealTime() const { return true; }
    /// After so many milliseconds without a report nothing more comes of a command.
    virtual int quietTime() const { return 60; }
    /// Milliseconds of time() after which what has not come counts as not coming; only what fails takes that long.
    virtual qint64 patience() const { return 12'000; }
    /// Milliseconds of time() that a command and its report are on their way: what is told to happen within a time may
    /// take that much longer.
    virtual qint64 roundTrip() const { return 0; }

    /// What is known of an ability beforehand.
    Claim claim(Ability ability) const { return m_claims.value(ability); }
    /// Why nothing that needs this ability is tried; empty: it is tried.
    QString whyNot(Ability ability) const { return m_claims.value(ability).reason; }

    /// The trial under way waits for nothing more, and neither does any after it.
    void interrupt() { m_isInterrupted = true; }
    bool isInterrupted() const { return m_isInterrupted; }

    /// Lets real time pass and runs the event loop.
    static void wait(int milliseconds);

protected:
    /// The renderer says that it cannot do this.
    void refuses(Ability ability, const QString &reason);
    /// There is nothing to try this with.
    void cannotTry(Ability ability, const QString &reason);

private:
    QMap<Ability, Claim> m_claims;
    bool m_isInterrupted = false;
};

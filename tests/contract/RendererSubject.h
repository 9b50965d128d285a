// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QUrl>

class KelvoRegistry;
class KelvoRenderer;

/// What a protocol may be unable to do. A test of such a step is skipped with the subject's reason.
enum class Step {
    Seek,
    FastForward,
    Rewind,
    TellUnseekable, ///< error NotSeekable instead of a refused command
    PauseAt,
    Volume,
    VideoProperties, ///< xid, autopaint, render-rectangle, current-frame-on-pause
    RefuseValues, ///< error InvalidValue
    Metadata,
    FailItems, ///< an item that cannot be played is noticed
};

/// A renderer under test: where it comes from and what it can play.
///
/// To hold another renderer to the contract: derive, fill in, and give it to runRendererContract().
class RendererSubject
{
public:
    virtual ~RendererSubject() = default;

    virtual QString pluginFile() const = 0;
    /// Null while it is not there.
    virtual KelvoRenderer *findIn(const KelvoRegistry &registry) const;
    /// Called once for each renderer object, before anything else is.
    virtual void prepare(KelvoRenderer &) { }

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
    /// Whether time() is that of the wall: then the parts of the suite run side by side, in processes of their own.
    virtual bool inRealTime() const { return true; }
    /// How many: each mostly waits for its media, but not so much that more would keep their time on a small machine.
    virtual size_t partsAtOnce() const { return 3; }
    /// After so many milliseconds without a report nothing more comes of a command.
    virtual int quietTime() const { return 60; }

    /// Why this renderer cannot do a step; empty: it can.
    QString whyNot(Step step) const { return m_cannot.value(step); }

protected:
    QHash<Step, QString> m_cannot;
};

inline size_t qHash(Step step, size_t seed = 0)
{
    return ::qHash(int(step), seed);
}

/// Runs the whole suite; the exit status of the test program.
int runRendererContract(RendererSubject &subject, int argc, char **argv);

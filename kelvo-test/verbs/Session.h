// SPDX-License-Identifier: MIT
#pragma once

#include "Interruption.h"
#include "KelvoRegistry.h"

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

class KelvoRenderer;
class Recorder;
class RendererPattern;
struct Hearing;
struct Sighting;

/// The renderers that a tester wants, or why there are none.
struct RendererChoice
{
    QList<KelvoRenderer *> renderers; ///< each once, in the order of the patterns
    QString problem; ///< empty: all is well
};

/// The framework as the console starts it: the same back ends, named by the same environment variables, and recorded in
/// the same way. It also turns the keys and signals that end programs into interrupted(). One in a process; GUI thread.
class Session : public QObject
{
    Q_OBJECT
public:
    /// Starts the back ends; they and their renderers come from the event loop.
    /// @param recording  file that all that happens at the boundary is written to; empty: the one that KELVO_RECORD names
    explicit Session(const QString &recording = {}, QObject *parent = nullptr);
    ~Session() override;

    KelvoRegistry *registry() const { return KelvoRegistry::instance(); }
    bool isInterrupted() const { return m_interruption.isRequested(); }

    /// Runs the event loop until the condition holds, which is looked at whenever something comes or goes and each
    /// 20 ms; false when the time is up or the tester interrupts.
    bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds atMost);
    /// Runs the event loop for that time, unless the tester interrupts.
    void waitFor(std::chrono::milliseconds time);

    /// Waits until each pattern has found a renderer. Patterns that may stand for several wait on until nothing new has
    /// come for half a second, so that what a back end brings is there as a whole.
    RendererChoice choose(const QStringList &patterns, std::chrono::milliseconds atMost);
    /// The same for the one renderer that a pattern must stand for.
    RendererChoice chooseOne(const QString &pattern, std::chrono::milliseconds atMost);

    /// Stops a renderer that is not stopped, and waits until it is, at most two seconds: a device would go on playing
    /// without us.
    void silence(KelvoRenderer *renderer);

    /// Records what was heard of a renderer.
    void noteHeard(const QString &uuid, const Hearing &hearing);
    /// The same of what was seen.
    void noteSeen(const QString &uuid, const Sighting &sighting);
    /// What happened last at the boundary, as a recording of its own (docs/recording.md).
    QByteArray recording() const;

Q_SIGNALS:
    /// Once, from the event loop.
    void interrupted();

private:
    bool isSettled() const;
    QString whyNone(const RendererPattern &pattern, std::chrono::milliseconds waited) const;

    const std::unique_ptr<Recorder> m_recorder; ///< hears of everything before anybody else
    Interruption m_interruption;
    QElapsedTimer m_sinceNews; ///< invalid until the first back end has started or failed
};

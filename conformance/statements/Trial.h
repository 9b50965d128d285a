// SPDX-License-Identifier: MIT
#pragma once

#include "Finding.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "RendererProbe.h"
#include "Statement.h"
#include "Subject.h"

#include <QPointer>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

using enum KelvoRenderer::State;
using enum KelvoRenderer::SeekMode;
using States = QList<KelvoRenderer::State>;

/// Base of the classes whose operations are statements: a registry with the subject's plug-in loaded, anew for each of
/// them.
class Trial
{
public:
    explicit Trial(Subject &subject);
    virtual ~Trial();
    Q_DISABLE_COPY_MOVE(Trial)

    /// Loads the renderer, calls the statement and ends all. Once.
    Finding carryOut(const std::function<void()> &statement);

protected:
    /// For calling commands: watches that nothing is reported before they return.
    class Command
    {
    public:
        Command(KelvoRenderer *renderer, RendererProbe &probe)
            : m_renderer(renderer)
            , m_probe(probe)
        {
            m_probe.setInCommand(true);
        }
        ~Command() { m_probe.setInCommand(false); }
        Q_DISABLE_COPY_MOVE(Command)
        KelvoRenderer *operator->() const { return m_renderer; }

    private:
        KelvoRenderer *m_renderer;
        RendererProbe &m_probe;
    };
    /// A check of a statement, as it is written.
    struct Check
    {
        const char *text;
        const char *file;
        int line;
    };

    Command renderer() { return {m_renderer, *m_probe}; }
    RendererProbe &heard() { return *m_probe; }

    /// Lets time pass until the condition holds; false when it does not within that time, which is the subject's
    /// patience where none is given.
    bool reaches(const std::function<bool()> &condition, qint64 milliseconds = -1);
    /// Lets time pass until all that is to come of earlier commands has come.
    void settle();

    // What the checks below are made of: false, and noted in the evidence, when it does not hold.
    bool holds(bool condition, const Check &check);
    bool comes(const std::function<bool()> &condition, const Check &check, qint64 milliseconds = -1);
    template <typename Actual, typename Expected>
    bool isSame(const Actual &actual, const Expected &expected, const Check &check)
    {
        if (areEqual(actual, expected))
            return true;
        fail(check, valueText(actual) + QLatin1String(" instead of ") + valueText(expected));
        return false;
    }

    /// Asks and waits; index and state are -1 in the answer of a renderer that does not give one.
    RendererProbe::Status status();
    /// Seconds; -1 without an answer.
    int position();

    /// A playlist of these items that lives until the trial ends.
    KelvoGeneralSourcePlaylist *makePlaylist(const QList<QUrl> &urls);
    /// Of that many long items.
    KelvoGeneralSourcePlaylist *makeLongPlaylist(int count);
    void startPlaylist(KelvoPlaylist *playlist, uint index = 0);
    bool isPlaying(uint index);

    void loadPlugin();
    /// Waits in real time for the renderer of the plug-in, and makes ready for it. False when the plug-in cannot be
    /// loaded.
    bool appears(int milliseconds);
    /// Hears the renderer, with the times since the trial began.
    std::unique_ptr<RendererProbe> makeProbe();

    Subject &m_subject;
    std::unique_ptr<KelvoRegistry> m_registry;
    QPointer<KelvoRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_probe;
    std::vector<QPointer<KelvoGeneralSourcePlaylist>> m_playlists;

private:
    bool begin();
    void end();
    void fail(const Check &check, const QString &came);
    void fail(const QString &expected, const QString &came);

    QString lastPosition() const;
    template <typename Actual, typename Expected>
    static bool areEqual(const Actual &actual, const Expected &expected)
    {
        return actual == expected;
    }
    /// Qt compares the bytes of two empty lists, one of which may have no place for any: an error to the sanitizers.
    template <typename Item> static bool areEqual(const QList<Item> &actual, const QList<Item> &expected)
    {
        return std::equal(actual.cbegin(), actual.cend(), expected.cbegin(), expected.cend());
    }

    Finding m_finding;
    QString m_pluginFile;
    qint64 m_began = 0;
};

/// A statement that is an operation of a class of trials, with the arguments that it is called with.
template <typename Group, typename... Parameters, typename... Arguments>
Statement statement(const QString &id, const QString &sentence, const QList<Ability> &needs,
    void (Group::*operation)(Parameters...), Arguments... arguments)
{
    return {id, sentence, needs, [operation, arguments...](Subject &subject) {
                Group trial(subject);
                return trial.carryOut([&] { (trial.*operation)(arguments...); });
            }};
}

/// The group's id and a row's name made one: "state.command" and "pause while Playing" give
/// "state.command.pause-while-playing".
QString rowId(const QString &id, const QString &row);

// The checks of statements: what fails ends the statement, with the evidence noted.

#define KELVO_CHECK(text) (Check{text, __FILE__, __LINE__})

/// The condition is true now.
#define HOLDS(condition)                                                                                     \
    do {                                                                                                     \
        if (!holds(bool(condition), KELVO_CHECK(#condition)))                                                \
            return;                                                                                          \
    } while (false)

/// The condition becomes true within the subject's patience.
#define REACHES(condition)                                                                                   \
    do {                                                                                                     \
        if (!comes([&] { return bool(condition); }, KELVO_CHECK(#condition)))                                \
            return;                                                                                          \
    } while (false)

/// The condition becomes true within so many milliseconds, beside the time that commands and reports are on their way.
#define REACHES_WITHIN(milliseconds, condition)                                                              \
    do {                                                                                                     \
        if (!comes([&] { return bool(condition); }, KELVO_CHECK(#condition),                                 \
                (milliseconds) + m_subject.roundTrip()))                                                     \
            return;                                                                                          \
    } while (false)

/// Two values are the same now.
#define SAME(actual, expected)                                                                               \
    do {                                                                                                     \
        if (!isSame(actual, expected, KELVO_CHECK(#actual " == " #expected)))                                \
            return;                                                                                          \
    } while (false)

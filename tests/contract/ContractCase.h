// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "RendererProbe.h"
#include "RendererSubject.h"

#include <QPointer>
#include <QTest>

#include <functional>
#include <memory>
#include <vector>

using enum KelvoRenderer::State;
using enum KelvoRenderer::SeekMode;

/// Base of the contract's test classes: a registry with the subject's plug-in loaded, anew for each test.
class ContractCase : public KelvoTestCase
{
    Q_OBJECT
public:
    explicit ContractCase(RendererSubject &subject)
        : m_subject(subject)
    {
    }

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

    Command renderer() { return {m_renderer, *m_probe}; }
    RendererProbe &heard() { return *m_probe; }

    /// Lets time pass until the condition holds; false when it never does.
    bool reaches(const std::function<bool()> &condition);
    /// Lets time pass until all that is to come of earlier commands has come.
    void settle();
    /// What was heard, for a failure's text.
    QByteArray story(const char *expectation) const;

    /// Asks and waits; index and state are -1 in the answer of a renderer that does not give one.
    RendererProbe::Status status();
    /// Seconds; -1 without an answer.
    int position();

    /// A playlist of these items that lives until the test ends.
    KelvoGeneralSourcePlaylist *makePlaylist(const QList<QUrl> &urls);
    /// Of that many long items.
    KelvoGeneralSourcePlaylist *makeLongPlaylist(int count);
    void startPlaylist(KelvoPlaylist *playlist, uint index = 0);
    bool isPlaying(uint index);

    RendererSubject &m_subject;
    std::unique_ptr<KelvoRegistry> m_registry;
    QPointer<KelvoRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_probe;
    std::vector<QPointer<KelvoGeneralSourcePlaylist>> m_playlists;

protected Q_SLOTS:
    void init();
    void cleanup();
};

/// Waits for a condition; the failure tells what was heard instead.
#define REACHES(condition) QVERIFY2(reaches([&] { return bool(condition); }), story(#condition).constData())

#define HOLDS(condition) QVERIFY2(condition, story(#condition).constData())

#define NEEDS(step)                                                                                          \
    do {                                                                                                     \
        const QString reason = m_subject.whyNot(Step::step);                                                 \
        if (!reason.isEmpty())                                                                               \
            QSKIP(qPrintable(reason));                                                                       \
    } while (false)

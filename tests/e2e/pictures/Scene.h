// SPDX-License-Identifier: MIT
#pragma once

#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "RecordingRenderer.h"
#include "RecordingSource.h"

#include <QStandardItemModel>

/// The console in the middle of its work: every list, field and label has something to show, as long as it gets in use.
class Scene
{
public:
    Scene();
    ~Scene();
    Q_DISABLE_COPY_MOVE(Scene)

    KelvoMainWindow *window() const { return m_console->window(); }
    QAction *action(const char *name) const { return m_console->find<QAction>(name); }
    /// "Playback completed!" opens, and this returns once it is closed.
    void completePlayback() { Q_EMIT m_renderer.playbackCompleted(); }

private:
    void showPlayback();
    void showResults();

    RecordingRenderer m_renderer;
    RecordingRenderer m_otherRenderer;
    FakePlaylist m_playlist;
    FakePlaylist m_otherPlaylist;
    RecordingSource m_source;
    RecordingSource m_otherSource;
    QStandardItemModel m_results;
    std::unique_ptr<ConsoleFixture> m_console;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "RendererRecorder.h"

#include <QColor>

#include <memory>

/// With the room that lossy pictures need.
inline bool isRed(QColor color)
{
    return color.red() > 200 && color.green() < 60 && color.blue() < 60;
}

/// Base of the tests of the GStreamer renderer: each test function gets the renderer of a freshly loaded
/// plug-in and a recorder of what it reports, and fails when the GUI thread was kept from its work for too
/// long.
class GstTestCase : public KelvoTestCase
{
    Q_OBJECT
protected:
    static QString mediaFile(const QString &name);
    static QUrl media(const QString &name);
    static QList<QUrl> media(const QStringList &names);
    /// A playlist of these, titled by their file names.
    static std::unique_ptr<KelvoGeneralSourcePlaylist> makePlaylist(const QList<QUrl> &urls);

    bool loadRenderer();
    /// Whether the engine of a renderer still runs: it ends by itself, after the renderer.
    static bool engineRuns();
    /// Whether a thread of that name does (its first 15 letters).
    static bool threadRuns(const QByteArray &name);
    /// How many threads have that name; those that have none of their own bear the name of who made them.
    static int threadsNamed(const QByteArray &name);
    KelvoRenderer *renderer() const { return m_renderer; }
    RendererRecorder &heard() { return *m_recorder; }
    KelvoRegistry &registry() { return *m_registry; }

protected Q_SLOTS:
    void init();
    void cleanup();

private:
    std::unique_ptr<KelvoRegistry> m_registry;
    QPointer<KelvoRenderer> m_renderer;
    std::unique_ptr<RendererRecorder> m_recorder;
};

/// Waits for a state of the renderer.
#define TRY_STATE(expected) QTRY_COMPARE_WITH_TIMEOUT(heard().state(), KelvoRenderer::expected, 10000)

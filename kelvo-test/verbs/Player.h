// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"
#include "Keyboard.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

#include <memory>

class KelvoPlaylist;
class Output;

/// Plays on one renderer for a tester at the command line, shows what it reports, and passes on keys. GUI thread.
class Player : public QObject
{
    Q_OBJECT
public:
    /// Neither is owned; the renderer may vanish.
    Player(KelvoRenderer *renderer, Output *output, QObject *parent = nullptr);
    ~Player() override;

    /// One URL plays by itself, several as a playlist.
    void play(const QList<QUrl> &urls);

    bool isStopped() const { return m_state == KelvoRenderer::Stopped; }
    bool hasFailed() const { return m_failed; }

Q_SIGNALS:
    /// Nothing plays any more, or the renderer is gone.
    void finished();

private Q_SLOTS:
    // Answers
    void takePosition(uint seconds);
    void takeVolume(const QString &name, const QVariant &value);

private:
    void takeState(KelvoRenderer::State state);
    void takeFact(const QString &key, const QList<QVariant> &values);
    void takeError(const KelvoError &error);
    void takeVanishing();
    void ask();
    void obey(Keyboard::Key key);
    void changeVolume(int by);
    QString timeText() const;

    const QPointer<KelvoRenderer> m_renderer;
    Output *const m_output;
    std::unique_ptr<KelvoPlaylist> m_playlist;
    Keyboard m_keyboard;
    QTimer m_clock; ///< asks for the position
    QTimer m_patience; ///< for what failed before it has begun
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    uint m_position = 0; ///< seconds
    uint m_shown = 0; ///< position in the last line
    int m_duration = 0; ///< seconds; 0: not known
    int m_volume = -1; ///< -1: not known
    bool m_failed = false;
};

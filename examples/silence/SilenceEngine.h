// SPDX-License-Identifier: MIT
#pragma once

#include <playback/Engine.h>

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>

/// Plays silence, whatever the address: time passes, and there is nothing to hear. An item lasts as long as its playlist
/// or its address says ("silence:90", seconds), otherwise half a minute.
///
/// What plays next, repeat, playlists, properties and answers are the business of the ItemRenderer that owns this.
class SilenceEngine : public Engine
{
    Q_OBJECT
public:
    SilenceEngine();

    QString name() const override { return QStringLiteral("Silence"); }
    QString refusal(const QString &property, const QVariant &value) const override;
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(int seconds, KelvoRenderer::SeekMode mode) override;
    void setPauseAt(std::optional<uint> seconds) override;
    void answerPosition(PositionAnswer answer) override;

private:
    using Milliseconds = std::chrono::milliseconds;

    void open(const QString &title);
    void begin();
    void run(bool running);
    void wake();
    bool pauseWhereWanted();
    Milliseconds position() const;

    QTimer m_timer; ///< for whatever comes first, the pause that is wanted or the end
    QElapsedTimer m_sinceStart;
    quint64 m_epoch = 0; ///< 0: there is no item
    bool m_begun = false;
    bool m_running = false;
    bool m_pauseWanted = false;
    Milliseconds m_duration{};
    Milliseconds m_before{}; ///< the position when m_sinceStart was started
    std::optional<Milliseconds> m_pauseAt;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"
#include "VideoFrameTap.h"
#include "WorkerThread.h"

#include <QRect>

#include <memory>

class ItemPlayer;
class PlaylistFileReader;
struct EngineSettings;

/// The engine for local and network media, on GStreamer: the side on the GUI thread.
///
/// How an item plays is the business of the ItemPlayer on a thread of its own; playlist files are read and pictures saved on
/// two more.
class GstEngine : public Engine
{
    Q_OBJECT
public:
    explicit GstEngine(const EngineSettings &settings);
    ~GstEngine() override;

    /// Starts GStreamer; ends with started().
    void start();

    QString name() const override;
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(int seconds, KelvoRenderer::SeekMode mode) override;
    void setPauseAt(std::optional<uint> seconds) override;
    void answerPosition(PositionAnswer answer) override;
    bool mayBeList(const KelvoMediaInfo &item) const override;
    bool mayBeList(KelvoError::Code failure) const override;
    void readList(quint64 epoch, const KelvoMediaInfo &item) override;
    void cancelReading() override;
    bool applyProperty(const QString &name, const QVariant &value) override;

Q_SIGNALS:
    /// Empty text: the engine can be used.
    void started(const QString &problem);

private:
    void connectPlayer();
    void connectReader();
    void saveFrame(quint64 epoch, const VideoFrame &frame);
    void makeFrameThread();
    template <typename Call> void tellPlayer(Call call)
    {
        m_thread.post([player = m_player, call] { call(*player); });
    }

    WorkerThread m_thread;
    ItemPlayer *const m_player; ///< of m_thread
    WorkerThread m_listThread;
    PlaylistFileReader *const m_listReader; ///< of m_listThread
    std::unique_ptr<WorkerThread> m_frameThread; ///< of a VideoFrameStore; there once a picture was taken
    quint64 m_epoch = 0; ///< 0: the player has nothing
    uint m_window = 0;
    QRect m_place; ///< of video in the window
};

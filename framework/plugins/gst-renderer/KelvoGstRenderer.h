// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoItemFacts.h"
#include "KelvoPlayQueue.h"
#include "KelvoRenderer.h"
#include "PlaylistFile.h"
#include "VideoFrameTap.h"
#include "WorkerThread.h"

#include <QHash>
#include <QPointer>

#include <functional>
#include <memory>

class ItemPlayer;
class PlaylistFileReader;
struct EngineSettings;

/// The renderer for local and network media, on GStreamer.
///
/// This class decides what plays: it holds the place in the playlist, in a playlist file and in the
/// properties. How one item plays is the business of the ItemPlayer on the engine thread. Everything that is
/// reported goes through the event loop, so that whoever hears it may call anything, and may delete the
/// renderer.
class KelvoGstRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    explicit KelvoGstRenderer(const EngineSettings &settings, QObject *parent = nullptr);
    ~KelvoGstRenderer() override;

    /// Starts the engine; ends with engineStarted().
    void startEngine();

    QString uuid() const override;
    QString name() const override;
    void play() override;
    void playUri(const QUrl &uri) override;
    void playUriWithType(const QUrl &uri, const QString &contentType) override;
    void stop() override;
    void pause() override;
    void resume() override;
    void next() override;
    void previous() override;
    void pauseAt(uint seconds) override;
    void gotoIndex(uint index) override;
    void setPosition(int seconds, int mode) override;
    void getStatus(QObject *receiver, const char *slot) override;
    void getPosition(QObject *receiver, const char *slot) override;
    void assignPlaylist(KelvoPlaylist *playlist) override;
    void setKelvoProperty(const QString &name, const QVariant &value) override;
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override;

Q_SIGNALS:
    /// Empty text: the renderer can be used.
    void engineStarted(const QString &problem);

private:
    // Reports and threads (KelvoGstRenderer.cpp)
    void connectPlayer();
    void later(std::function<void()> call);
    void setState(State state);
    void tellState(State state);
    void takeFact(const QString &key, const QList<QVariant> &values);
    void tellFact(const KelvoItemFacts::Fact &fact);
    void tellAgain();
    void reportError(KelvoError::Code code, const QString &message);
    template <typename Call> void tellPlayer(Call call)
    {
        m_engine.post([player = m_player, call] { call(*player); });
    }

    // Commands (KelvoGstRenderer_commands.cpp)
    bool adoptAssigned();
    bool moveWhileStopped(int index);
    void dropPauseAt();
    void leaveItemBySkip(int index);

    // Playback (KelvoGstRenderer_playback.cpp)
    enum class ListReading { Announced, AfterFailure };
    void startRun();
    void startItem();
    void startEntry(int entry);
    void readList(ListReading reason);
    void listRead(quint64 epoch, const PlaylistFile::Contents &contents);
    void loadEntry();
    void leaveEntry();
    void playerReached(quint64 epoch, State state);
    void playerFailed(quint64 epoch, KelvoError::Code code, const QString &message, bool progressed);
    void entryEnded(bool progressed);
    void entryFailed(KelvoError::Code code, const QString &message);
    void itemEnded();
    void skipEntry(const KelvoError &failure);
    void reportSkippedEntries();
    void itemFailed(KelvoError::Code code, const QString &message);
    void halt(bool completed);
    void announceEntry();
    void tellItem();
    KelvoPlaylist *playlistInPlay() const;
    KelvoContent content() const;
    void reportBuffering(int percent);
    void reportScanning(float fraction);
    void followEdit();
    void playlistEdited();

    // Properties (KelvoGstRenderer_properties.cpp)
    void changeSpeed(double speed);
    void updateVideo(const QString &name);
    void saveFrame(quint64 epoch, const VideoFrame &frame);
    void setProperty(const QString &name, const QVariant &value);

    WorkerThread m_engine;
    ItemPlayer *const m_player; ///< of m_engine
    WorkerThread m_listThread;
    PlaylistFileReader *const m_listReader; ///< of m_listThread
    std::unique_ptr<WorkerThread> m_frameThread; ///< of a VideoFrameStore; there once a picture was taken
    QHash<QString, QVariant> m_properties;

    State m_state = Stopped;
    KelvoPlayQueue m_queue;
    QPointer<KelvoPlaylist> m_assigned; ///< m_queue takes it over with the next command that chooses an item
    QPointer<KelvoPlaylist> m_announced; ///< the playlist last reported as in play
    KelvoMediaInfo m_single; ///< the URI given last
    bool m_singleInPlay = false; ///< what plays, or played last, is m_single and not an item of m_queue
    bool m_editPending = false;

    // Of the run: everything since the user last chose an item
    bool m_playedInRun = false;
    int m_failedInRow = 0; ///< items
    int m_idleInRow = 0; ///< items that ended where they began

    // Of the item in play
    KelvoMediaInfo m_item;
    KelvoItemFacts m_facts;
    QList<QUrl> m_entries; ///< the item itself, or what its playlist file names
    int m_entry = 0;
    bool m_isList = false;
    bool m_playedInItem = false;
    bool m_listTried = false; ///< its content was looked at; what failed was a medium
    bool m_reading = false; ///< the playlist file is being read
    KelvoError m_heldFailure; ///< of the item as a medium, while it is looked at as a list
    int m_skippedEntries = 0; // Before the first one that plays.
    KelvoError m_firstFailure;

    // Of the entry in play
    quint64 m_epoch = 0;
    bool m_loaded = false; ///< the player has it
    bool m_pauseWanted = false;
    int m_bufferPercent = 100;
    float m_scanned = 1;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoContent.h"
#include "KelvoCoreGlobal.h"
#include "KelvoError.h"

#include <QLatin1String>
#include <QList>
#include <QObject>
#include <QUrl>
#include <QVariant>

class KelvoPlaylist;

/// A playback engine: something that plays media and is driven by commands.
///
/// Commands return at once; what comes of them is reported by signals, always from the event loop. All operations
/// are called on the GUI thread and all signals are emitted there. A renderer is owned by its back end, which
/// takes it out of the registry before it deletes it; it may vanish at any time, also in mid-play.
///
/// What every renderer does, whatever it is made of (conformance holds them to it):
/// - The state goes Stopped -> Transitioning -> Playing or Paused, and back to Stopped. Each change is reported
///   once. Between two items of a playlist the state passes through Transitioning.
/// - When it is given a window ("xid") somebody has chosen it, who knows nothing yet: it tells playlistChanged(nullptr),
///   so that what was shown of another renderer goes, then, unless Stopped, what is in play (playlist and item), then
///   its state, the facts about the item, and whether a policy overrides. Paused is told by way of Playing: from there
///   on the position is asked for.
/// - A fact is told once for an item, with another text when that changes; also after stop() and play() of the same
///   item. All of them are told again after another item was announced, when the renderer is chosen, and each time an
///   item starts that belongs to no playlist.
/// - play() plays the assigned playlist from its current item (the first one after assignPlaylist()); without a
///   playlist, the URI given last; with neither, error NothingToPlay.
/// - playUri() and playUriWithType() replace what is playing. The assigned playlist stays assigned.
/// - pause() while Playing or Transitioning goes to Paused; resume() while Paused goes to Playing; stop() goes to
///   Stopped and keeps the current item. In other states these do nothing.
/// - next(): the following item; after the last one the first with repeat "all", otherwise playback stops.
///   previous(): the item before; before the first one the last with repeat "all", otherwise the first item from
///   its beginning. Both work also with repeat "one". While Stopped they move the current item without playing.
/// - gotoIndex(): plays the item at that index; past the end, error IndexOutOfRange and nothing changes.
/// - At an item's end: with auto-advance on, the next item by the playlist's repeat mode ("one" plays the same
///   item again); after the last item with repeat "off", Stopped and then playbackCompleted(). With auto-advance
///   off, Stopped after every item; playbackCompleted() only after the last one.
/// - An item that cannot be played gives one error() and playback goes on with the next item, but stops when a
///   whole round has brought nothing that plays (error NothingPlayable, no playbackCompleted()). A single URI
///   that cannot be played gives its one error and stops.
/// - When the assigned playlist changes, the playing item goes on playing at its new index. When the playing
///   item is removed, the item that took its place plays; when nothing is left, playback stops.
/// - setPosition() clamps to the beginning and to the duration; in what cannot seek it gives error NotSeekable.
///   A seek to the end ends the item.
/// - pauseAt(): pauses when the position reaches that second; at or past it, at once. It acts once. While Stopped
///   it is kept for the next playing. A new pauseAt() replaces it; stop(), gotoIndex(), next() and previous() drop it.
class KELVO_CORE_EXPORT KelvoRenderer : public QObject
{
    Q_OBJECT
public:
    /// What it does. The numbers go over the boundary and never change.
    enum State : int { Stopped = 0, Playing = 1, Paused = 2, Transitioning = 3 };
    Q_ENUM(State)

    /// Modes of setPosition().
    enum SeekMode { SeekAbsolute = 0, SeekRelative = 1 };

    /// Reported as bool: true while a policy outside the program (for instance the audio server giving the output
    /// to a call) overrides playback.
    static constexpr QLatin1String KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE{"policy-override"};
    /// Set and reported as bool, true at start: whether the next item follows by itself at an item's end.
    static constexpr QLatin1String KELVO_RENDERER_PROPERTY_AUTO_ADVANCE{"auto-advance"};
    /// Set as uint: native id of the X window that video goes to; 0: none. A renderer that shows video elsewhere takes
    /// no notice of this and of the next two.
    static constexpr QLatin1String PropertyXid{"xid"};
    /// Set as bool: whether the renderer may paint the window's background itself.
    static constexpr QLatin1String PropertyAutopaint{"autopaint"};
    /// Set as text "left,top,width,height", decimal, pixels of that window.
    static constexpr QLatin1String PropertyRenderRectangle{"render-rectangle"};
    /// Reported as uint 0xRRGGBB: the colour that the window must show where video goes; 0: none needed.
    static constexpr QLatin1String PropertyColorKey{"colorkey"};
    /// Set and reported as bool: whether a picture of the video is taken when playback pauses.
    static constexpr QLatin1String PropertyCurrentFrameOnPause{"current-frame-on-pause"};
    /// Set as double: 1.0 normal, 2.0 fast forward, negative values play backwards.
    static constexpr QLatin1String PropertyPlaybackSpeed{"playback-speed"};
    /// Set as int, reported as uint, 0..99: loudness on a cubic scale (a perceived, not a linear one).
    static constexpr QLatin1String PropertyVolume{"volume"};
    /// Answered as double by kelvoProperty() only, where a renderer knows it finer than getPosition(): seconds with
    /// their fraction.
    static constexpr QLatin1String PropertyPosition{"position"};

    /// The parent, if there is one, owns it.
    explicit KelvoRenderer(QObject *parent = nullptr);
    ~KelvoRenderer() override;

    /// Identity, unique in the registry and unchanging.
    virtual QString uuid() const = 0;
    /// Display name; may be empty and may change (nameChanged()).
    virtual QString name() const = 0;

    /// Plays the assigned playlist from its current item; without one, the URI given last.
    virtual void play() = 0;
    /// Plays this in the place of what plays.
    virtual void playUri(const QUrl &uri) = 0;
    /// The content type (IANA media type, for instance "audio/x-scpls") is a hint: what turns out to be no
    /// playlist plays as media.
    virtual void playUriWithType(const QUrl &uri, const QString &contentType) = 0;
    /// Goes to Stopped; the current item stays current.
    virtual void stop() = 0;
    /// Goes to Paused from Playing or Transitioning.
    virtual void pause() = 0;
    /// Goes on from Paused.
    virtual void resume() = 0;
    /// Plays the following item; while Stopped makes it the current one.
    virtual void next() = 0;
    /// Plays the item before; while Stopped makes it the current one.
    virtual void previous() = 0;
    /// Pauses when the position reaches the given second.
    virtual void pauseAt(uint seconds) = 0;
    /// Plays the item at that index of the assigned playlist, from 0.
    virtual void gotoIndex(uint index) = 0;
    /// Seeks; mode is a SeekMode, seconds may be negative with SeekRelative.
    virtual void setPosition(int seconds, int mode) = 0;

    /// Answers (playlist id QString, item index uint, state int, object id QString). The object id is the item's uuid
    /// within the playlist.
    ///
    /// What is named is the current item, whatever the state: the one that plays, or that played last, or that next() or
    /// previous() moved to while Stopped. So a playlist stays named after stop() and after its last item has ended.
    ///
    /// Empty ids and index 0 stand for an item that belongs to no playlist, with or without an assigned one. After
    /// playUri() and stop() that is still the URI. play(), gotoIndex() and, while Stopped, next() and previous() turn to
    /// the assigned playlist: next() to the item behind the one that was current in it. Where next() finds none it
    /// changes nothing, and the URI stays current.
    ///
    /// The ids are also empty before the first assignPlaylist() and once the playlist in play is deleted. A playlist that
    /// is empty is named, with index 0 and no object id.
    virtual void getStatus(QObject *receiver, const char *slot) = 0;
    /// Answers (position in whole seconds, uint); 0 while Stopped.
    virtual void getPosition(QObject *receiver, const char *slot) = 0;

    /// Makes the playlist the one that play() plays, from its first item. Assigning another playlist while
    /// playing does not interrupt what plays; it takes effect with the next command that chooses an item. Null:
    /// none. Not owned; a playlist that is deleted is no longer assigned.
    virtual void assignPlaylist(KelvoPlaylist *playlist) = 0;

    /// Sets a property. Once it took effect the new value is reported by kelvoPropertyChanged(); a name that the
    /// renderer does not have gives error NotSupported, a value it cannot use error InvalidValue.
    virtual void setKelvoProperty(const QString &name, const QVariant &value) = 0;
    /// Answers (name QString, value QVariant) through the slot; an unknown name is answered with an invalid
    /// value.
    virtual void kelvoProperty(const QString &name, QObject *receiver, const char *slot) = 0;

Q_SIGNALS:
    /// name() has changed.
    void nameChanged(const QString &name);
    /// Reported once for each change, and again to whoever has chosen the renderer.
    void stateChanged(KelvoRenderer::State state);
    /// Another item is in play, or is to be told again: its index in the assigned playlist, or -1 when it belongs to none
    /// (a single URI, an entry of a list given by URI).
    void mediaChanged(int index, const KelvoContent &content);
    /// Playback ended because there was nothing more to play; not after stop() or an error.
    void playbackCompleted();
    /// The playlist in play; null each time an item starts that belongs to no playlist, before its media change, and
    /// when the renderer was chosen: whatever facts are shown are no longer true.
    void playlistChanged(KelvoPlaylist *playlist);
    /// One fact about the item in play; never an empty list. Keys: "title", "artist", "album", "genre",
    /// "duration" (int, seconds), "codec", "bitrate" (bits per second), "cover" and others.
    void metadataChanged(const QString &key, const QList<QVariant> &values);
    /// The value that the property has from now on.
    void kelvoPropertyChanged(const QString &name, const QVariant &value);
    /// How full the buffer is, 0..1; 1 ends the buffering. Reported on change only.
    void bufferingInfo(float fraction);
    /// How far the search for playable entries of a playlist file has come, 0..1; 1 ends it.
    void scanningInfo(float fraction);
    /// Something went wrong or was refused; what plays goes on, or goes on with the next item.
    void error(const KelvoError &error);
};

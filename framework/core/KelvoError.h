// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QMetaType>
#include <QString>

/// An error report of a renderer: a fixed numeric code and a message with the detail.
///
/// The numbers are part of the boundary and never change: testers write them into their reports. Back ends map
/// the errors of their own libraries to these codes and put the library's words into the message.
class KELVO_CORE_EXPORT KelvoError
{
public:
    /// 1..99 general, 100..199 the media, 200..299 network, 300..399 the request, 400..499 outputs and engine.
    enum Code : int {
        NoError = 0, ///< no description; never reported by renderers
        UnknownError = 1, ///< no description: the message is all there is

        NotFound = 100,
        AccessDenied = 101,
        ReadFailed = 102,
        EmptyMedia = 103,
        UnsupportedType = 104, ///< not a media type that can be played
        CodecMissing = 105, ///< a container that is known, with a stream that nothing decodes
        CorruptMedia = 106,
        PrematureEnd = 107, ///< the media ended more than a second before its announced duration
        IsFolder = 108,
        PartlyPlayable = 109, ///< plays, but without the streams that nothing decodes
        OnAnotherMachine = 110, ///< a file address that names another machine (file://HOST/...)

        NetworkFailed = 200, ///< host unknown, connection refused or lost
        ServerError = 201, ///< the server answered with an error (HTTP 5xx and the like)
        Stalled = 202, ///< no data for a long time although the connection stands
        Timeout = 203, ///< a remote device did not answer a command in time
        DeviceGone = 204,

        InvalidUrl = 300,
        EmptyPlaylist = 301, ///< a playlist without entries
        InvalidPlaylist = 302, ///< a playlist file that cannot be understood
        PlaylistTooLarge = 303,
        NothingPlayable = 304, ///< no entry of a playlist could be played
        NothingToPlay = 305, ///< play() without a playlist or earlier URI
        IndexOutOfRange = 306,
        NotSeekable = 307,
        NotSupported = 308, ///< the renderer has no such command or property
        InvalidValue = 309, ///< a property value of the wrong type or out of range
        CommandRefused = 310, ///< a remote device refused; its own text is in the message

        AudioOutputFailed = 400,
        VideoOutputFailed = 401,
        EngineFailed = 402, ///< the playback engine itself failed
    };

    KelvoError() = default;
    /// @param message  the detail; the description of the code is not repeated in it
    KelvoError(Code code, QString message);

    /// What went wrong; NoError in a default-constructed object.
    Code code() const { return m_code; }
    /// The detail, in the words of the library or device that failed. May be empty.
    QString message() const { return m_message; }

    /// The fixed description of a code, or an empty text for a code that has none (also for unknown numbers).
    static QString codeToString(Code code);

private:
    Code m_code = NoError;
    QString m_message;
};

Q_DECLARE_METATYPE(KelvoError)

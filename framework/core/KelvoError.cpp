// SPDX-License-Identifier: MIT
#include "KelvoError.h"

#include <array>
#include <utility>

namespace {
using Entry = std::pair<KelvoError::Code, const char *>;

// NoError and UnknownError have no description on purpose: their message is all there is to say.
constexpr std::array descriptions{
    Entry{KelvoError::NotFound, "The media was not found."},
    Entry{KelvoError::AccessDenied, "Access to the media was denied."},
    Entry{KelvoError::ReadFailed, "The media could not be read."},
    Entry{KelvoError::EmptyMedia, "The media contains no data."},
    Entry{KelvoError::UnsupportedType, "The media is not of a playable type."},
    Entry{KelvoError::CodecMissing, "No decoder is installed for the media."},
    Entry{KelvoError::CorruptMedia, "The media is damaged."},
    Entry{KelvoError::PrematureEnd, "The media ended before its announced duration."},
    Entry{KelvoError::IsFolder, "The URI names a folder, not a media file."},
    Entry{KelvoError::PartlyPlayable, "A part of the media cannot be decoded and is left out."},
    Entry{KelvoError::OnAnotherMachine, "The media is a file on another machine, which alone can read it."},
    Entry{KelvoError::NetworkFailed, "The server could not be reached."},
    Entry{KelvoError::ServerError, "The server answered with an error."},
    Entry{KelvoError::Stalled, "The media stream has stalled."},
    Entry{KelvoError::Timeout, "The device did not answer in time."},
    Entry{KelvoError::DeviceGone, "The device is gone."},
    Entry{KelvoError::InvalidUrl, "The URI is not valid."},
    Entry{KelvoError::EmptyPlaylist, "The playlist is empty."},
    Entry{KelvoError::InvalidPlaylist, "The playlist file cannot be understood."},
    Entry{KelvoError::PlaylistTooLarge, "The playlist file is too large."},
    Entry{KelvoError::NothingPlayable, "No item of the playlist could be played."},
    Entry{KelvoError::NothingToPlay, "There is nothing to play: no playlist is assigned."},
    Entry{KelvoError::IndexOutOfRange, "The playlist has no item at this index."},
    Entry{KelvoError::NotSeekable, "The media does not support seeking."},
    Entry{KelvoError::NotSupported, "The renderer does not support this."},
    Entry{KelvoError::InvalidValue, "The value is not valid for this property."},
    Entry{KelvoError::CommandRefused, "The device refused the command."},
    Entry{KelvoError::AudioOutputFailed, "The audio output failed."},
    Entry{KelvoError::VideoOutputFailed, "The video output failed."},
    Entry{KelvoError::EngineFailed, "The playback engine failed."},
};
} // namespace

KelvoError::KelvoError(Code code, QString message)
    : m_code(code)
    , m_message(std::move(message))
{
}

QString KelvoError::codeToString(Code code)
{
    for (const auto &[known, text] : descriptions) {
        if (known == code)
            return QString::fromLatin1(text);
    }
    return {};
}

// SPDX-License-Identifier: MIT
#include "TagReader.h"

#include "AsfLists.h"
#include "BoundedFileStream.h"
#include "TextRepair.h"

#include <fileref.h>
#include <mpegfile.h>
#include <mpegproperties.h>
#include <oggfile.h>
#include <tag.h>
#include <tfile.h>
#include <tpropertymap.h>

namespace {
QByteArray latin1Of(const TagLib::String &text)
{
    return QByteArray::fromStdString(text.to8Bit(false));
}

bool mayBeMislabelled(const TagLib::String &text)
{
    return text.isLatin1() && !text.isAscii();
}

/// The tags of one file. Texts that claim to be Latin-1 often are not: they are decoded again from their bytes, with
/// the file's other texts helping to guess.
class Tags
{
public:
    explicit Tags(TagLib::File &file)
        : m_properties(file.properties())
        , m_tag(file.tag())
    {
        for (const char *key : {"TITLE", "ARTIST", "ALBUM", "ALBUMARTIST"}) {
            for (const TagLib::String &value : m_properties[key]) {
                if (mayBeMislabelled(value))
                    m_doubtful += latin1Of(value) + ' ';
            }
        }
    }

    QString decoded(const TagLib::String &text) const
    {
        if (mayBeMislabelled(text))
            return TextRepair::decode(latin1Of(text), m_doubtful);
        return TextRepair::tidy(QString::fromUtf8(text.toCString(true)));
    }

    QStringList texts(const char *key) const
    {
        QStringList result;
        const auto found = m_properties.find(key);
        if (found != m_properties.end()) {
            for (const TagLib::String &value : found->second)
                result.append(decoded(value));
        }
        result.removeAll(QString());
        return result;
    }

    QString text(const char *key) const { return texts(key).value(0); }
    QString text(const char *key, TagLib::String (TagLib::Tag::*fallback)() const) const
    {
        const QString result = text(key);
        return result.isEmpty() && m_tag ? decoded((m_tag->*fallback)()) : result;
    }

    /// The number at the beginning: "3" of "3/12", "1999" of "1999-05-01".
    int number(const char *key) const
    {
        const QString value = text(key);
        qsizetype digits = 0;
        while (digits < value.size() && digits < 9 && value.at(digits).isDigit())
            ++digits;
        return value.left(digits).toInt();
    }

private:
    TagLib::PropertyMap m_properties;
    TagLib::Tag *m_tag;
    QByteArray m_doubtful;
};

void fill(MediaItem *item, TagLib::File &file)
{
    const Tags tags(file);
    if (const QString title = tags.text("TITLE", &TagLib::Tag::title); !title.isEmpty())
        item->title = title;
    item->tags.artists = tags.texts("ARTIST");
    if (item->tags.artists.isEmpty() && file.tag())
        item->tags.artists = QStringList(tags.decoded(file.tag()->artist()));
    item->tags.artists.removeAll(QString());
    item->tags.album = tags.text("ALBUM", &TagLib::Tag::album);
    item->tags.albumArtist = tags.text("ALBUMARTIST");
    item->tags.isCompilation = tags.number("COMPILATION") == 1;
    item->tags.genre = tags.text("GENRE", &TagLib::Tag::genre);
    item->tags.year = tags.number("DATE");
    item->tags.track = tags.number("TRACKNUMBER");
    item->tags.disc = tags.number("DISCNUMBER");
}
// Without a header that counts the frames, the library takes the first frame's bit rate for that of all.
bool hasOneBitRate(TagLib::MPEG::File &file)
{
    constexpr long samples = 16;
    const long begin = file.firstFrameOffset();
    if (begin < 0)
        return false;
    const int bitRate = TagLib::MPEG::Header(&file, begin, false).bitrate();
    for (long i = 1; i < samples; ++i) {
        const long frame = file.nextFrameOffset(begin + (file.length() - begin) / samples * i);
        if (frame >= 0 && TagLib::MPEG::Header(&file, frame, false).bitrate() != bitRate)
            return false;
    }
    return true;
}

// The length of an Ogg file stands on its last page. The library looks for that backwards, in pieces that do not
// overlap, and so does not see one that begins where two of them meet. It does in pieces that lie elsewhere.
bool missesLastPage(TagLib::Ogg::File &file)
{
    constexpr long otherwise = 512;
    return file.length() > otherwise && file.rfind("OggS", file.length() - otherwise) > file.rfind("OggS");
}

LengthSource lengthSource(TagLib::File &file)
{
    if (!file.audioProperties() || file.audioProperties()->lengthInMilliseconds() <= 0)
        return LengthSource::Decoding;
    if (auto *mpeg = dynamic_cast<TagLib::MPEG::File *>(&file))
        return mpeg->audioProperties()->xingHeader() || hasOneBitRate(*mpeg) ? LengthSource::Headers
                                                                             : LengthSource::Frames;
    if (auto *ogg = dynamic_cast<TagLib::Ogg::File *>(&file))
        return missesLastPage(*ogg) ? LengthSource::Frames : LengthSource::Headers;
    return LengthSource::Headers;
}
} // namespace

bool readTags(MediaItem *item, LengthSource *source)
{
    try {
        BoundedFileStream stream(item->path.constData());
        if (AsfLists::claimTooMuch(&stream))
            return false;
        const TagLib::FileRef file(&stream, true, TagLib::AudioProperties::Average);
        if (file.isNull() || !file.file()->isValid() || stream.isExhausted())
            return false;
        fill(item, *file.file());
        const TagLib::AudioProperties *sound = file.audioProperties();
        if (!sound || (sound->sampleRate() <= 0 && sound->lengthInMilliseconds() <= 0))
            return false;
        item->setLength(sound->lengthInMilliseconds());
        *source = lengthSource(*file.file());
        return true;
    } catch (const std::exception &) {
        return false; // lengths in broken files make the library ask for more memory than there is
    }
}

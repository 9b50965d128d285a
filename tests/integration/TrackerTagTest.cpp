// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "PeakMemory.h"
#include "TestGroup.h"
#include "TrackerIndexCase.h"
#include "index/TagReader.h"

#include <QFile>
#include <QTest>

#include <apetag.h>
#include <fileref.h>
#include <id3v1tag.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <tag.h>
#include <tpropertymap.h>

namespace {
using Properties = std::initializer_list<std::pair<const char *, QStringList>>;

TagLib::String unicode(const QString &text)
{
    return {text.toStdString(), TagLib::String::UTF8};
}

/// A text whose bytes are stored as they are, under the label Latin-1.
TagLib::String labelledLatin1(const QByteArray &bytes)
{
    return {bytes.toStdString(), TagLib::String::Latin1};
}

/// A kind of tag that an MP3 file may have.
struct Kind
{
    int type;
    TagLib::ID3v2::Version version = TagLib::ID3v2::v4;
};
const Kind id3v1{TagLib::MPEG::File::ID3v1};
const Kind id3v23{TagLib::MPEG::File::ID3v2, TagLib::ID3v2::v3};
const Kind id3v24{TagLib::MPEG::File::ID3v2, TagLib::ID3v2::v4};
const Kind ape{TagLib::MPEG::File::APE};

/// Leaves this kind of tag in the file, and no other.
bool tagMp3(const QString &path, const Kind &kind, const std::function<void(TagLib::Tag &)> &fill)
{
    TagLib::MPEG::File file(QFile::encodeName(path).constData());
    TagLib::Tag *tag = kind.type == TagLib::MPEG::File::ID3v1
        ? static_cast<TagLib::Tag *>(file.ID3v1Tag(true))
        : kind.type == TagLib::MPEG::File::APE ? static_cast<TagLib::Tag *>(file.APETag(true))
                                               : static_cast<TagLib::Tag *>(file.ID3v2Tag(true));
    fill(*tag);
    return file.save(kind.type, TagLib::File::StripOthers, kind.version, TagLib::File::DoNotDuplicate);
}

void appendNumber(QByteArray *bytes, qsizetype value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes->append(char(value >> 8 * i));
}

bool setProperties(const QString &path, const Properties &properties)
{
    TagLib::FileRef file(QFile::encodeName(path).constData());
    TagLib::PropertyMap map;
    for (const auto &[key, values] : properties) {
        TagLib::StringList list;
        for (const QString &value : values)
            list.append(unicode(value));
        map.insert(key, list);
    }
    file.file()->setProperties(map);
    return file.save();
}
} // namespace

/// Tags of every form. Files are made while nothing is indexed, and indexed together: a store for each would only
/// take time.
class TrackerTagTest : public TrackerIndexCase
{
    Q_OBJECT

    QString original(const QString &name, const QString &file = "short.mp3") const
    {
        return addFile(name, file);
    }

    /// @param entries  that are there, of 65,535 that each part claims
    bool readCrowded(int parts, int entries = 0xffff) const
    {
        constexpr int entrySize = 6; // bytes: length of its name, type, length of its value
        QByteArray part
            = QByteArray::fromHex("40a4d0d207e3d21197f000a0c95ea850"); // extended content description
        appendNumber(&part, part.size() + 8 + 2 + entries * entrySize, 8);
        appendNumber(&part, 0xffff, 2);
        part += QByteArray(entries * entrySize, '\0');
        QByteArray whole = QByteArray::fromHex("3026b2758e66cf11a6d900aa0062ce6c"); // header
        appendNumber(&whole, 30 + parts * part.size(), 8);
        appendNumber(&whole, parts, 4);
        whole += QByteArray::fromHex("0102") + part.repeated(parts);
        QFile file(place("crowded.wma"));
        if (!file.open(QIODevice::WriteOnly) || file.write(whole) != whole.size())
            return true;
        file.close();
        MediaItem item;
        item.path = QFile::encodeName(file.fileName());
        LengthSource source = LengthSource::Headers;
        return readTags(&item, &source);
    }

private Q_SLOTS:
    void readsEveryKindOfTagOfAnMp3()
    {
        const std::initializer_list<std::pair<const char *, Kind>> kinds{
            {"ID3v1", id3v1}, {"ID3v2.3", id3v23}, {"ID3v2.4", id3v24}, {"APE", ape}};
        for (const auto &[name, kind] : kinds) {
            const QString title = QString("Täöl %1").arg(name);
            QVERIFY(tagMp3(original(QString(name) + ".mp3"), kind, [&title](TagLib::Tag &tag) {
                tag.setTitle(unicode(title));
                tag.setArtist("Someone");
                tag.setAlbum("The Album");
                tag.setTrack(3);
                tag.setYear(1999);
                tag.setGenre("Jazz");
            }));
        }
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(songs->rowCount(), int(kinds.size()));
        for (const auto &[name, kind] : kinds) {
            const int row = rowOf(*songs, "songTitle", QString("Täöl %1").arg(name));
            QVERIFY2(row >= 0, name);
            QCOMPARE(value(*songs, row, "artistName").toString(), "Someone");
            QCOMPARE(value(*songs, row, "albumName").toString(), "The Album");
            QCOMPARE(value(*songs, row, "trackNumber").toInt(), 3);
            QCOMPARE(value(*songs, row, "year").toInt(), 1999);
            QCOMPARE(value(*songs, row, "genre").toString(), "Jazz");
            QCOMPARE(value(*songs, row, "songLength").toInt(), 1);
        }
        QCOMPARE(titles(Type::AllAlbums), QStringList("The Album"));
    }

    void prefersTheNewerKindOfTag()
    {
        const QString path = original("both.mp3");
        TagLib::MPEG::File file(QFile::encodeName(path).constData());
        file.ID3v1Tag(true)->setTitle("Thirty letters, then cut off he");
        file.ID3v2Tag(true)->setTitle("Thirty letters, then cut off here not");
        QVERIFY(file.save(TagLib::MPEG::File::ID3v1 | TagLib::MPEG::File::ID3v2, TagLib::File::StripNone,
            TagLib::ID3v2::v3, TagLib::File::DoNotDuplicate));
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList("Thirty letters, then cut off here not"));
    }

    void listsEveryArtistOfASong()
    {
        const std::initializer_list<const char *> originals{"short.mp3", "tone.ogg", "tone.flac", "tone.m4a"};
        for (const char *file : originals)
            QVERIFY(setProperties(original(file, file),
                {{"TITLE", {file}}, {"ARTIST", {"First", QString("Second %1").arg(file)}}}));
        QVERIFY(index());
        QStringList expected{"First"};
        for (const char *file : originals)
            expected.append(QString("Second %1").arg(file));
        QStringList artists = titles(Type::AllArtists);
        artists.sort();
        expected.sort();
        QCOMPARE(artists, expected);
        const auto songs = result(Type::AllSongs);
        for (int row = 0; row < songs->rowCount(); ++row)
            QCOMPARE(value(*songs, row, "artistName").toString(), "First");
        QCOMPARE(value(*result(Type::AllArtists), 0, "numberOfSongs").toInt(), 4);
    }

    void showsTextsOfWrongEncodingsAsWellAsCanBe()
    {
        const QByteArray russian(
            "\xcf\xf0\xe8\xe2\xe5\xf2 \xec\xe8\xf0 \xee \xe2\xe5\xf1\xed\xe5"); // Windows-1251
        const QByteArray utf8("Bj\xc3\xb6rk's \xe2\x99\xab"); // UTF-8 under the label Latin-1
        const std::initializer_list<std::tuple<const char *, Kind, QByteArray>> files{
            {"a.mp3", id3v1, russian}, {"b.mp3", id3v23, russian}, {"c.mp3", id3v1, utf8},
            {"d.mp3", id3v24, utf8}, {"e.mp3", id3v1, QByteArray("Caf\xe9 \x80")}};
        for (const auto &[name, kind, bytes] : files)
            QVERIFY(tagMp3(original(name), kind,
                [&title = bytes](TagLib::Tag &tag) { tag.setTitle(labelledLatin1(title)); }));
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QMap<QString, QString> shown;
        for (int row = 0; row < songs->rowCount(); ++row)
            shown.insert(
                value(*songs, row, "songUri").toString().right(5), songs->index(row, 1).data().toString());
        const QString words("Привет мир о весне");
        QCOMPARE(shown,
            (QMap<QString, QString>{{"a.mp3", words}, {"b.mp3", words}, {"c.mp3", "Björk's ♫"},
                {"d.mp3", "Björk's ♫"}, {"e.mp3", "Café €"}}));
    }

    void keepsAlbumsOfOneNameApartByTheirArtists()
    {
        QVERIFY(setProperties(
            original("a.mp3"), {{"TITLE", {"A"}}, {"ARTIST", {"One"}}, {"ALBUM", {"Greatest Hits"}}}));
        QVERIFY(setProperties(
            original("b.mp3"), {{"TITLE", {"B"}}, {"ARTIST", {"Two"}}, {"ALBUM", {"Greatest Hits"}}}));
        // The album's artist, or the mark of a compilation, holds the songs of several artists together.
        for (const char *artist : {"Three", "Four"}) {
            QVERIFY(setProperties(original(QString("%1 1.mp3").arg(artist)),
                {{"TITLE", {artist}}, {"ARTIST", {artist}}, {"ALBUM", {"Together"}},
                    {"ALBUMARTIST", {"Various"}}}));
            QVERIFY(setProperties(original(QString("%1 2.mp3").arg(artist)),
                {{"TITLE", {artist}}, {"ARTIST", {artist}}, {"ALBUM", {"Mixed"}}, {"COMPILATION", {"1"}}}));
        }
        QVERIFY(index());
        const auto albums = result(Type::AllAlbums);
        QCOMPARE(texts(*albums, "albumName"),
            QStringList({"Greatest Hits", "Greatest Hits", "Mixed", "Together"}));
        QStringList owners = texts(*albums, "artistName").mid(0, 2);
        owners.sort();
        QCOMPARE(owners, QStringList({"One", "Two"}));
        QCOMPARE(texts(*albums, "artistName").mid(2), QStringList({"No artist", "Various"}));
        QCOMPARE(texts(*albums, "albumSongs"), QStringList({"1", "1", "2", "2"}));
        QCOMPARE(texts(*albums, "albumArtistCount"), QStringList({"1", "1", "2", "2"}));
    }

    void ordersTheSongsOfAnAlbumByDiscAndTrack()
    {
        for (const char *place : {"2/1", "1/2", "1/10", "2/2"}) {
            const QStringList numbers = QString(place).split('/');
            QVERIFY(setProperties(original(QString(place).replace('/', '-') + ".mp3"),
                {{"TITLE", {place}}, {"ALBUM", {"Box"}}, {"DISCNUMBER", {numbers[0] + "/2"}},
                    {"TRACKNUMBER", {numbers[1] + "/10"}}}));
        }
        QVERIFY(index());
        const int album = result(Type::AllAlbums)->index(0, 0).data().toInt();
        QCOMPARE(titles(Type::SongsOfAlbum, album), QStringList({"1/2", "1/10", "2/1", "2/2"}));
    }

    /// An ASF header, each part of which has as many entries as there can be, all of them empty.
    void takesNoMoreMemoryThanTagsDo()
    {
        const qint64 before = beginPeakMemory();
        const bool isRead = readCrowded(1);
        const qint64 ofOne = peakMemory() - before;
        QVERIFY(before > 0 && ofOne > 0 && !isRead);
        QVERIFY(!readCrowded(12));
        const qint64 ofMany = peakMemory() - before;
        QVERIFY2(ofMany < 4 * ofOne, qPrintable(QStringLiteral("%1, %2").arg(ofOne).arg(ofMany)));
    }

    void makesNoEntriesThatAreNotThere()
    {
        const qint64 before = beginPeakMemory();
        QVERIFY(!readCrowded(12, 0));
        const qint64 more = peakMemory() - before;
        QVERIFY2(before > 0 && more < 10'000'000, qPrintable(QString::number(more)));
    }

    void cutsTextsThatAreNoTitles()
    {
        QVERIFY(setProperties(
            original("long.mp3"), {{"TITLE", {QString(300'000, 'x') + '\n'}}, {"ARTIST", {"A\nB\t"}}}));
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(songs->index(0, 1).data().toString(), QString(1000, 'x'));
        QCOMPARE(value(*songs, 0, "artistName").toString(), "A B");
    }
};

KELVO_TEST(TrackerTagTest)
#include "TrackerTagTest.moc"

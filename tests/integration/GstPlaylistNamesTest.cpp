// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "PlaylistFileReader.h"
#include "TestGroup.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using PlaylistFile::Contents;

namespace {
struct Beginning
{
    const char *name;
    QByteArray bytes;
    /// What it is whatever it is called; else what hint and name say.
    enum Kind { List, NoList, PlainLines, Blank } kind;
};

const QList<Beginning> beginnings{
    {"pls", "[playlist]\nFile1=/a.mp3\nNumberOfEntries=1\n", Beginning::List},
    {"pls with a byte order mark", "\xEF\xBB\xBF[playlist]\nFile1=/a.mp3\nNumberOfEntries=1\n",
        Beginning::List},
    {"m3u", "#EXTM3U\n/a.mp3\n", Beginning::List},
    {"xspf",
        "<?xml version=\"1.0\"?><playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><trackList><track>"
        "<location>file:///a.mp3</location></track></trackList></playlist>",
        Beginning::List},
    {"plain lines", "/a.mp3\n", Beginning::PlainLines},
    {"plain lines with remarks", "# mine\r\n/a.mp3\r\n", Beginning::PlainLines},
    {"blanks", " \r\n\n", Beginning::Blank},
    {"segments", "#EXTM3U\n#EXT-X-VERSION:3\nseg1.ts\n", Beginning::NoList},
    {"page", "<html><body>playlist</body></html>", Beginning::NoList},
    {"sound", QByteArray("ID3\4\0\0\0\0\0\0", 10), Beginning::NoList},
};

struct Name
{
    const char *text;
    bool announcesList;
    bool announcesLines;
};
constexpr Name hints[] = {
    {"", false, false},
    {"audio/x-scpls", true, false},
    {"audio/x-mpegurl", true, true},
    {"application/xspf+xml", true, false},
    {"audio/mpeg", false, false},
    {"text/plain", false, false},
};
constexpr Name suffixes[] = {
    {"", false, false},
    {".pls", true, false},
    {".m3u", true, true},
    {".M3U8", true, true},
    {".xspf", true, false},
    {".mp3", false, false},
};

Contents::Kind expectedOf(const Beginning &beginning, const Name &hint, const Name &suffix)
{
    switch (beginning.kind) {
    case Beginning::List:
        return Contents::List;
    case Beginning::PlainLines:
        return hint.announcesLines || suffix.announcesLines ? Contents::List : Contents::NoList;
    case Beginning::Blank:
        return hint.announcesList || suffix.announcesList ? Contents::Unusable : Contents::NoList;
    default:
        return Contents::NoList;
    }
}
} // namespace

/// What a file is by its hint, its name and its content.
class GstPlaylistNamesTest : public KelvoTestCase
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;

    Contents read(const QString &name, const QByteArray &text, const QString &hint = {})
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", qPrintable(name));
        file.close();
        PlaylistFileReader reader(1);
        QSignalSpy finished(&reader, &PlaylistFileReader::finished);
        reader.read(1, QUrl::fromLocalFile(file.fileName()), hint);
        return finished.value(0).value(1).value<Contents>();
    }

private Q_SLOTS:
    void hintSuffixAndContentAreAllConsulted_data()
    {
        QTest::addColumn<QString>("hint");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("kind");
        for (const Beginning &beginning : beginnings) {
            for (const Name &hint : hints) {
                for (const Name &suffix : suffixes)
                    QTest::addRow("%s, given as '%s', called '%s'", beginning.name, hint.text, suffix.text)
                        << QString(hint.text) << QString(suffix.text) << beginning.bytes
                        << int(expectedOf(beginning, hint, suffix));
            }
        }
    }

    void hintSuffixAndContentAreAllConsulted()
    {
        QFETCH(QString, hint);
        QFETCH(QString, suffix);
        QFETCH(QByteArray, bytes);
        QFETCH(int, kind);
        const Contents contents = read(QLatin1String("list") + suffix, bytes, hint);
        QCOMPARE(int(contents.kind), kind);
        if (kind == Contents::List)
            QCOMPARE(contents.entries, QList<QUrl>{QUrl(QStringLiteral("file:///a.mp3"))});
        if (kind == Contents::Unusable)
            QCOMPARE(contents.code, KelvoError::EmptyPlaylist);
    }
};

KELVO_TEST(GstPlaylistNamesTest)
#include "GstPlaylistNamesTest.moc"

// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "PlaylistFileReader.h"
#include "TestGroup.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <memory>

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

/// What a file is by its hint, its name and its content, and which files its entries name.
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
    void makeFile(const QByteArray &name)
    {
        // Not by way of QFile: the name is bytes.
        const QByteArray path = QFile::encodeName(m_folder.path()) + '/' + name;
        std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(path.constData(), "w"), std::fclose);
        QVERIFY(file);
    }
    QByteArray encoded(const char *name)
    {
        return QUrl::fromLocalFile(m_folder.path()).toEncoded() + '/' + name;
    }

private Q_SLOTS:
    void cleanupTestCase()
    {
        // Not by way of QDir: some of the names are no text.
        std::filesystem::remove_all(m_folder.path().toStdString());
    }

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

    void keysAreUnderstoodHoweverTheyAreSpelled_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::newRow("blanks") << QByteArray(
            "File1 = /a.mp3\nTitle1 = A\nFile2\t=\t/b.mp3\nNumberOfEntries = 2\n");
        QTest::newRow("small letters") << QByteArray("file1=/a.mp3\nfile2=/b.mp3\nnumberofentries=2\n");
        QTest::newRow("twice") << QByteArray("File1=/a.mp3\nFile1=/c.mp3\nFile2=/b.mp3\nNumberOfEntries=3\n");
        QTest::newRow("without a number")
            << QByteArray("File=/c.mp3\nFilename=/d.mp3\nFile1=/a.mp3\nFile2=/b.mp3\nNumberOfEntries=4\n");
        QTest::newRow("without a value")
            << QByteArray("File1=/a.mp3\nFile3\nFile4=\nFile9=/b.mp3\nNumberOfEntries=4\n");
        QTest::newRow("old line ends") << QByteArray("File1=/a.mp3\rFile2=/b.mp3\rNumberOfEntries=2\r");
        QTest::newRow("numbers from elsewhere")
            << QByteArray("File0=/a.mp3\nFile070=/b.mp3\nNumberOfEntries=2\n");
    }

    void keysAreUnderstoodHoweverTheyAreSpelled()
    {
        QFETCH(QByteArray, keys);
        const QByteArray mark = keys.contains('\n') ? "[playlist]\n" : "[playlist]\r";
        const Contents contents = read(QStringLiteral("odd.pls"), mark + keys);
        QCOMPARE(contents.entries, (QList<QUrl>{QUrl("file:///a.mp3"), QUrl("file:///b.mp3")}));
    }

    void latin1BytesNameTheFileOfThoseBytesFirst_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("between");
        QTest::newRow("m3u") << "latin.m3u" << QByteArray("#EXTM3U\n") << QByteArray("\n");
        QTest::newRow("pls") << "latin.pls" << QByteArray("[playlist]\nTitle1=\xE9t\xE9\nFile1=")
                             << QByteArray("\nFile2=");
    }

    void latin1BytesNameTheFileOfThoseBytesFirst()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, between);
        makeFile("caf\xE9.mp3");
        makeFile("caf\xC3\xA9.mp3");
        makeFile("th\xC3\xA9.mp3");
        const QByteArray absolute = QFile::encodeName(m_folder.path()) + "/./caf\xE9.mp3";
        // One that is there in neither encoding is named as it reads.
        const Contents relative = read(file, before + "caf\xE9.mp3" + between + "th\xE9.mp3" + '\n');
        QCOMPARE(int(relative.kind), int(Contents::List));
        QCOMPARE(relative.entries.size(), 2);
        QCOMPARE(relative.entries.at(0).toEncoded(), encoded("caf%E9.mp3"));
        QCOMPARE(relative.entries.at(1).toEncoded(), encoded("th%C3%A9.mp3"));
        const Contents other = read(file, before + absolute + between + "nowhere\xE9.mp3" + '\n');
        QCOMPARE(other.entries.size(), 2);
        QCOMPARE(other.entries.at(0).toEncoded(), encoded("caf%E9.mp3"));
        QCOMPARE(other.entries.at(1).toEncoded(), encoded("nowhere%C3%A9.mp3"));
    }
};

KELVO_TEST(GstPlaylistNamesTest)
#include "GstPlaylistNamesTest.moc"

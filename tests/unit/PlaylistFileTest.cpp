// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "PlaylistFileParser.h"
#include "PlaylistParser.h"
#include "TestGroup.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <memory>
#include <sys/stat.h>

using PlaylistFile::Contents;
using PlaylistFile::Format;

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
class PlaylistFileTest : public KelvoTestCase
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
        const QUrl uri = QUrl::fromLocalFile(file.fileName());
        return PlaylistFileParser::parseFile(uri, PlaylistFile::announced(uri, hint));
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
        QTest::newRow("what is no address")
            << QByteArray("File1=/a.mp3\nFile2=http://h=b%2\nFile3=/b.mp3\nNumberOfEntries=3\n");
        QTest::newRow("line ends of two kinds")
            << QByteArray("File1=/a.mp3\r\nTitle1=A\rFile2=/b.mp3\nNumberOfEntries=2\n");
        QTest::newRow("zeros") << QByteArray(
            "X-A=\0\nFile1=/a.mp3\nTitle1=A\0B\nFile2=/b.mp3\nNumberOfEntries=2\n", 61);
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

    void recognisesLists_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("announced");
        QTest::addColumn<int>("format");
        const auto row = [](const char *name, const QByteArray &head, Format announced, Format format) {
            QTest::newRow(name) << head << int(announced) << int(format);
        };
        row("pls", "[playlist]\nFile1=a", Format::None, Format::Pls);
        row("pls in capitals", "\r\n[PLAYLIST]\r\n", Format::None, Format::Pls);
        row("pls with a mark of its encoding", "\xEF\xBB\xBF[playlist]\n", Format::None, Format::Pls);
        row("m3u", "#EXTM3U\na.mp3", Format::None, Format::M3u);
        row("m3u given as pls", "#EXTM3U\na.mp3", Format::Pls, Format::M3u);
        row("plain lines", "a.mp3\nb.mp3\n", Format::M3u, Format::M3u);
        row("plain lines not announced", "a.mp3\nb.mp3\n", Format::None, Format::None);
        row("segments of a stream", "#EXTM3U\n#EXT-X-VERSION:3\n", Format::M3u, Format::None);
        row("xspf", "<?xml version='1.0'?><playlist xmlns='http://xspf.org/ns/0/'>", Format::None,
            Format::Xspf);
        row("xspf without its namespace", "<playlist version='1'>", Format::Xspf, Format::Xspf);
        row("another playlist in XML", "<playlist version='1'>", Format::Pls, Format::None);
        row("pls behind remarks", "; mine\n\n;[x]\r\n[playlist]\n", Format::None, Format::Pls);
        row("nothing but remarks", "; mine", Format::Pls, Format::None);
        row("page", "<html><body>playlist</body></html>", Format::M3u, Format::None);
        row("sound", QByteArray("ID3\4\0\0", 6), Format::Pls, Format::None);
        row("nothing", "", Format::Pls, Format::Pls);
        row("nothing, not announced", "", Format::None, Format::None);
        row("zeros", QByteArray(100, '\0'), Format::Pls, Format::Pls);
    }

    void recognisesLists()
    {
        QFETCH(QByteArray, head);
        QFETCH(int, announced);
        QFETCH(int, format);
        QCOMPARE(int(PlaylistFile::recognised(head, PlaylistFile::Formats(announced))), format);
    }

    void takesHints()
    {
        using PlaylistFile::Formats;
        QCOMPARE(PlaylistFile::announced(QUrl("http://h/a"), QStringLiteral("audio/x-scpls; charset=x")),
            Formats(Format::Pls));
        QCOMPARE(PlaylistFile::announced(QUrl("http://h/a.M3U?x=y"), {}), Formats(Format::M3u));
        QCOMPARE(PlaylistFile::announced(QUrl("http://h/a.m3u"), QStringLiteral("audio/x-scpls")),
            Format::M3u | Format::Pls);
        QCOMPARE(PlaylistFile::announced(QUrl("file:///a.xspf"), {}), Formats(Format::Xspf));
        QCOMPARE(PlaylistFile::announced(QUrl("file:///a.mp3"), QStringLiteral("audio/mpeg")), Formats());
    }

    void resolvesEntries_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<QUrl>("list");
        QTest::addColumn<QUrl>("expected");
        const QUrl local("file:///music/lists/a.m3u");
        const QUrl remote("http://host/lists/a.m3u?x=1");
        const auto row
            = [](const char *name, const QByteArray &entry, const QUrl &list, const char *expected) {
                  QTest::newRow(name) << entry << list << QUrl(QString::fromUtf8(expected));
              };
        row("name", "b.mp3", local, "file:///music/lists/b.mp3");
        row("name with blanks and signs", "b #1 100%.mp3", local,
            "file:///music/lists/b%20%231%20100%25.mp3");
        row("other folder", "../b.mp3", local, "file:///music/b.mp3");
        row("absolute path", "/b/c.mp3", local, "file:///b/c.mp3");
        row("uri", "http://other/b.mp3", local, "http://other/b.mp3");
        row("letters of other alphabets", "\xC3\xBC.mp3", local, "file:///music/lists/%C3%BC.mp3");
        row("latin-1", "\xFC.mp3", local, "file:///music/lists/%C3%BC.mp3");
        row("remote name", "b.mp3", remote, "http://host/lists/b.mp3");
        row("remote path", "/b.mp3", remote, "http://host/b.mp3");
        row("remote other folder", "../b.mp3", remote, "http://host/b.mp3");
    }

    void resolvesEntries()
    {
        QFETCH(QByteArray, entry);
        QFETCH(QUrl, list);
        QFETCH(QUrl, expected);
        const PlaylistFile::Contents contents
            = PlaylistParser::parse("#EXTM3U\n" + entry + '\n', Format::M3u, list);
        QCOMPARE(contents.entries, QList<QUrl>{expected});
    }

    void listOfTheNetworkNamesNothingOfThisComputer_data()
    {
        QTest::addColumn<QByteArray>("entry");
        for (const char *entry :
            {"file:///etc/passwd", "FILE:///etc/passwd", "file://localhost/etc/passwd", "fd://0",
                "v4l2:///dev/video0", "cdda://1", "dvb://x", "testbin://audiotestsrc", "javascript://x"})
            QTest::newRow(entry) << QByteArray(entry);
    }

    void listOfTheNetworkNamesNothingOfThisComputer()
    {
        QFETCH(QByteArray, entry);
        const QUrl remote("http://host/lists/a");
        const QByteArray xspf
            = "<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><trackList><track><location>" + entry
            + "</location></track></trackList></playlist>";
        for (const auto &[format, text] :
            {std::pair(Format::M3u, "#EXTM3U\n" + entry + '\n'),
                std::pair(Format::Pls, "[playlist]\nFile1=" + entry + '\n'), std::pair(Format::Xspf, xspf)}) {
            const Contents contents = PlaylistParser::parse(text, format, remote);
            QCOMPARE(contents.kind, Contents::Unusable);
            QCOMPARE(contents.entries, QList<QUrl>());
        }
        // The others of the list play.
        const Contents mixed = PlaylistParser::parse(
            "#EXTM3U\n" + entry + "\nb.mp3\nhttp://10.0.0.1/c\n", Format::M3u, remote);
        QCOMPARE(mixed.entries, (QList<QUrl>{QUrl("http://host/lists/b.mp3"), QUrl("http://10.0.0.1/c")}));
    }

    void toldOfTheNetworkLists()
    {
        const Contents contents
            = PlaylistParser::parse("#EXTM3U\nfile:///a.mp3\n", Format::M3u, QUrl("http://host/a.m3u"));
        QCOMPARE(contents.code, KelvoError::InvalidPlaylist);
        QVERIFY2(
            contents.message.contains("names only what is on this computer"), qPrintable(contents.message));
        qInfo("reliability: exposure-lists: 9 kinds of local addresses left out of 3 formats");
    }

    /// A name that is escaped as in a URI is that of the file of exactly that name first.
    void escapedNamesNameTheFileOfThatNameFirst_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("between");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("m3u") << "escaped.m3u" << QByteArray() << QByteArray("\n") << QByteArray("\n");
        QTest::newRow("pls") << "escaped.pls" << QByteArray("[playlist]\nFile1=") << QByteArray("\nFile2=")
                             << QByteArray("\n");
        QTest::newRow("xspf") << "escaped.xspf"
                              << QByteArray(
                                     "<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><trackList>"
                                     "<track><location>")
                              << QByteArray("</location></track><track><location>")
                              << QByteArray("</location></track></trackList></playlist>");
    }

    void escapedNamesNameTheFileOfThatNameFirst()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, between);
        QFETCH(QByteArray, after);
        makeFile("b%20.mp3");
        makeFile("b .mp3");
        makeFile("c d.mp3");
        const auto entriesOf = [&](const QByteArray &first, const QByteArray &second) {
            QList<QByteArray> entries;
            for (const QUrl &entry : read(file, before + first + between + second + after).entries)
                entries.append(entry.toEncoded());
            return entries;
        };
        QCOMPARE(entriesOf("b%20.mp3", "c%20d.mp3"), QList({encoded("b%2520.mp3"), encoded("c%20d.mp3")}));
        QCOMPARE(entriesOf("b .mp3", "none%20.mp3"), QList({encoded("b%20.mp3"), encoded("none%2520.mp3")}));
        QCOMPARE(entriesOf(encoded("b%20.mp3"), "http://h/c%20d.mp3"),
            QList({encoded("b%20.mp3"), QByteArray("http://h/c%20d.mp3")}));
    }

    void titlesComeWithTheEntries_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("title");
        QTest::newRow("m3u") << "t.m3u" << QByteArray("#EXTM3U\n#EXTINF:1,caf\xC3\xA9\n/a.mp3\n/b.mp3\n")
                             << QByteArray();
        QTest::newRow("pls") << "t.pls"
                             << QByteArray(
                                    "[playlist]\nX-GNOME-Title=Mine\nTitle3=caf\xC3\xA9\nFile3=/a.mp3\n"
                                    "File7=/b.mp3\n")
                             << QByteArray("Mine");
        QTest::newRow("xspf")
            << "t.xspf"
            << QByteArray("<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><title>Mine</title>"
                          "<trackList><track><location>/a.mp3</location><title>caf\xC3\xA9</title></track>"
                          "<track><location>/b.mp3</location></track></trackList></playlist>")
            << QByteArray("Mine");
    }

    void titlesComeWithTheEntries()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, title);
        const Contents contents = read(file, text);
        QCOMPARE(contents.entries, (QList<QUrl>{QUrl("file:///a.mp3"), QUrl("file:///b.mp3")}));
        QCOMPARE(contents.titles, QList<QByteArray>({"caf\xC3\xA9", {}}));
        QCOMPARE(contents.title, title);
    }

    void anEmptyListKeepsItsTitle()
    {
        const Contents contents = read("empty.xspf",
            "<playlist version=\"1\" "
            "xmlns=\"http://xspf.org/ns/0/\"><title>Mine</title><trackList/></playlist>");
        QCOMPARE(contents.code, KelvoError::EmptyPlaylist);
        QCOMPARE(contents.title, QByteArray("Mine"));
    }

    void takesNoMoreThanItsLimit()
    {
        QFile file(m_folder.filePath("large.m3u"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("#EXTM3U\n/a.mp3\n") > 0);
        QVERIFY(file.resize(PlaylistFile::maximumSize + 1));
        const QUrl uri = QUrl::fromLocalFile(file.fileName());
        QCOMPARE(PlaylistFileParser::parseFile(uri, {}).code, KelvoError::PlaylistTooLarge);
    }

    void opensFilesOfAnyName()
    {
        const QByteArray path = QFile::encodeName(m_folder.path()) + "/l\xEFst";
        std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(path.constData(), "w"), std::fclose);
        QVERIFY(file && std::fputs("#EXTM3U\n/a.mp3\n", file.get()) >= 0);
        file.reset();
        const QUrl uri = QUrl::fromEncoded(encoded("l%EFst"));
        QCOMPARE(PlaylistFileParser::parseFile(uri, {}).entries, QList<QUrl>{QUrl("file:///a.mp3")});
    }

    void whatIsNoFileIsNoList()
    {
        const QByteArray pipe = QFile::encodeName(m_folder.filePath("pipe.m3u"));
        QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
        for (const char *name : {"pipe.m3u", "", "nothing.m3u"}) {
            const QUrl uri = QUrl::fromLocalFile(m_folder.filePath(name));
            QCOMPARE(int(PlaylistFileParser::parseFile(uri, Format::M3u).kind), int(Contents::NoList));
        }
    }

    void everySuffixHasAContentTypeThatAnnouncesTheSame()
    {
        for (const char *suffix : {"pls", "m3u", "m3u8", "xspf"}) {
            const QString type = QString::fromLatin1(PlaylistFile::contentTypeOfSuffix(suffix));
            QVERIFY2(PlaylistFile::contentTypes().contains(type), suffix);
            QCOMPARE(PlaylistFile::announced(QUrl("http://h/a"), type),
                PlaylistFile::announced(QUrl(QLatin1String("http://h/a.") + QLatin1String(suffix)), {}));
        }
        for (const char *suffix : {"", "mp3", "M3U", ".m3u"})
            QCOMPARE(PlaylistFile::contentTypeOfSuffix(suffix), QByteArray());
    }
};

KELVO_TEST(PlaylistFileTest)
#include "PlaylistFileTest.moc"

// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "PlaylistParser.h"
#include "TestGroup.h"

#include <QTest>

/// A system without the library that reads playlist files, which is loaded for the first of them.
class PlaylistLibraryAbsentTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void saysSoOfAList()
    {
        const QUrl uri("file:///home/me/list.pls");
        const auto contents
            = PlaylistParser::parse("[playlist]\nFile1=a.mp3\n", PlaylistFile::Format::Pls, uri);
        QCOMPARE(contents.kind, PlaylistFile::Contents::Unusable);
        QCOMPARE(contents.code, KelvoError::UnsupportedType);
        QVERIFY2(contents.message.startsWith(
                     "file:///home/me/list.pls is a playlist file, which cannot be read: "),
            qPrintable(contents.message));
        QVERIFY2(contents.message.contains("libtotem-plparser.so.18"), qPrintable(contents.message));
        QVERIFY(contents.entries.isEmpty());
    }
};

KELVO_TEST(PlaylistLibraryAbsentTest)
#include "PlaylistLibraryAbsentTest.moc"

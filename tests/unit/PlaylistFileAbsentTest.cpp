// SPDX-License-Identifier: MIT
// What a build says that does not understand playlist files.
#include "KelvoTestCase.h"
#include "PlaylistParser.h"

#include <QTest>

class PlaylistFileAbsentTest : public KelvoTestCase
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
        QCOMPARE(contents.message,
            QStringLiteral(
                "file:///home/me/list.pls is a playlist file, which this build does not understand"));
        QVERIFY(contents.entries.isEmpty());
    }
};

QTEST_GUILESS_MAIN(PlaylistFileAbsentTest)
#include "PlaylistFileAbsentTest.moc"

// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using R = KelvoRenderer;

/// Playlist files with very many entries.
class GstLargeListTest : public GstTestCase
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;

    static QList<QByteArray> entries()
    {
        QList<QByteArray> entries(100'000, "a song with a fairly long name that is not there.mp3");
        entries[0] = mediaFile(QStringLiteral("long.mp3")).toUtf8();
        return entries;
    }
    static QByteArray pls()
    {
        QByteArray text = "[playlist]\n";
        int number = 0;
        for (const QByteArray &entry : entries())
            text += "File" + QByteArray::number(++number) + '=' + entry + '\n';
        return text;
    }
    static QByteArray xspf()
    {
        QByteArray text = "<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><trackList>\n";
        for (const QByteArray &entry : entries())
            text += "<track><location>" + entry + "</location></track>\n";
        return text + "</trackList></playlist>\n";
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void plays_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("pls") << QStringLiteral("large.pls") << pls();
        QTest::newRow("m3u") << QStringLiteral("large.m3u") << "#EXTM3U\n" + entries().join('\n');
        QTest::newRow("xspf") << QStringLiteral("large.xspf") << xspf();
    }

    void plays()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, text);
        QFile file(m_folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        renderer()->playUri(QUrl::fromLocalFile(file.fileName()));
        // Meanwhile the event loop turns.
        int turns = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&turns] { ++turns; });
        timer.start(5);
        QTRY_COMPARE_WITH_TIMEOUT(heard().state(), R::Playing, 30000);
        QVERIFY(turns > 10);
        QCOMPARE(heard().mediaUrls().constLast(), media(QStringLiteral("long.mp3")));
        renderer()->next();
        // The entries behind it are not there: each is an error of its own, and the search goes on.
        QTRY_COMPARE(heard().errors().value(0), int(KelvoError::NotFound));
        renderer()->stop();
        TRY_STATE(Stopped);
    }
};

KELVO_TEST(GstLargeListTest)
#include "GstLargeListTest.moc"

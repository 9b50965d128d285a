// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

using R = KelvoRenderer;

/// The facts of an item, as whoever appends each of them to a field sees them.
class GstMetadataTest : public GstTestCase
{
    Q_OBJECT
private:
    static QStringList keys(const QSignalSpy &told)
    {
        QStringList result;
        for (const QList<QVariant> &arguments : told)
            result.append(arguments.at(0).toString());
        return result;
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void titleAndArtistComeFirstAndEachKeyOnce_data()
    {
        QTest::addColumn<QString>("file");
        for (const char *file : {"tone.mp3", "tone.ogg", "tone.opus", "tone.flac", "tone.m4a", "tone.mka",
                 "clip.mp4", "clip.webm", "rising.mp3"})
            QTest::newRow(file) << QString(file);
    }

    void titleAndArtistComeFirstAndEachKeyOnce()
    {
        QFETCH(QString, file);
        QSignalSpy told(renderer(), &R::metadataChanged);
        renderer()->playUri(media(file));
        TRY_STATE(Playing);
        QTRY_VERIFY(heard().askPosition() >= 1);
        QStringList found = keys(told);
        if (file.startsWith(QLatin1String("tone")))
            QCOMPARE(found.mid(0, 3), QStringList({"title", "artist", "album"}));
        QVERIFY(found.contains(QLatin1String("duration")));
        const QStringList all = found;
        found.removeDuplicates();
        QCOMPARE(all, found);
    }
};

KELVO_TEST(GstMetadataTest)
#include "GstMetadataTest.moc"

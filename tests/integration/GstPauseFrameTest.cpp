// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QStandardPaths>
#include <QTest>

using R = KelvoRenderer;

namespace {
const QString fileKey = QStringLiteral("pause-frame");
const QString sizeKey = QStringLiteral("pause-frame-size");

QDir folder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + QStringLiteral("/kelvo/pause-frames"));
}

bool makeFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}
} // namespace

/// The picture that is kept when a video pauses.
class GstPauseFrameTest : public GstTestCase
{
    Q_OBJECT
private:
    void setFrameOnPause(bool on)
    {
        renderer()->setKelvoProperty(R::PropertyCurrentFrameOnPause, on);
        QTRY_COMPARE(heard().property(R::PropertyCurrentFrameOnPause), QVariant(on));
    }
    void playAndPause(const QString &file)
    {
        renderer()->playUri(media(file));
        TRY_STATE(Playing);
        renderer()->pause();
        TRY_STATE(Paused);
    }
    QImage reported() { return QImage(heard().metadata(fileKey).toString()); }
    /// Whatever was under way has arrived after another pause of something else.
    void passTime()
    {
        renderer()->resume();
        TRY_STATE(Playing);
        const int before = heard().askPosition();
        QTRY_VERIFY(heard().askPosition() > before);
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }
    void cleanup()
    {
        GstTestCase::cleanup();
        // What is still saved would come into the folder of the next test.
        QTRY_VERIFY_WITH_TIMEOUT(!threadRuns("frame-store"), 15000);
        folder().removeRecursively();
    }

    void reportsTheFrame()
    {
        setFrameOnPause(true);
        playAndPause(QStringLiteral("red.mp4"));
        QTRY_COMPARE(heard().metadataReports(fileKey), 1);
        QCOMPARE(heard().metadata(sizeKey).toString(), QStringLiteral("160x120"));
        QCOMPARE(reported().size(), QSize(160, 120));
        QVERIFY(isRed(reported().pixelColor(1, 1)));
        QVERIFY(isRed(reported().pixelColor(158, 118)));
        QVERIFY(heard().metadata(fileKey).toString().startsWith(folder().path()));
        // What was watched is nobody else's business.
        constexpr auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
            | QFile::WriteOther | QFile::ExeOther;
        QVERIFY(!(QFile::permissions(folder().path()) & others));
        QVERIFY(!(QFile::permissions(heard().metadata(fileKey).toString()) & others));
    }

    void reportsTheFrameThatIsShown()
    {
        setFrameOnPause(true);
        playAndPause(QStringLiteral("long.mp4"));
        QTRY_COMPARE(heard().metadataReports(fileKey), 1);
        const QImage first = reported();
        passTime();
        renderer()->pause();
        QTRY_COMPARE(heard().metadataReports(fileKey), 2);
        QVERIFY(first != reported()); // its picture moves
        QCOMPARE(folder().entryList(QDir::Files).count(), 2);
    }

    void reportsInSquarePixels()
    {
        setFrameOnPause(true);
        playAndPause(QStringLiteral("wide.mp4"));
        QTRY_COMPARE(heard().metadata(sizeKey).toString(), QStringLiteral("320x120"));
        QCOMPARE(reported().size(), QSize(320, 120));
    }

    void reportsTheFrameOfPauseAt()
    {
        setFrameOnPause(true);
        renderer()->pauseAt(1);
        renderer()->playUri(media(QStringLiteral("long.mp4")));
        TRY_STATE(Paused);
        QTRY_COMPARE(heard().metadataReports(fileKey), 1);
    }

    void reportsTheFrameOfAPauseBeforeTheStart()
    {
        setFrameOnPause(true);
        renderer()->playUri(media(QStringLiteral("red.mp4")));
        renderer()->pause();
        TRY_STATE(Paused);
        QTRY_COMPARE(heard().metadataReports(fileKey), 1);
        QVERIFY(isRed(reported().pixelColor(80, 60)));
    }

    void takesNothingWhenSwitchedOff()
    {
        playAndPause(QStringLiteral("red.mp4"));
        setFrameOnPause(true);
        setFrameOnPause(false);
        passTime();
        renderer()->pause();
        TRY_STATE(Paused);
        passTime();
        QCOMPARE(heard().metadataReports(fileKey), 0);
        QVERIFY(!folder().exists());
    }

    void takesNothingOfSound()
    {
        setFrameOnPause(true);
        renderer()->playUri(media(QStringLiteral("red.mp4")));
        TRY_STATE(Playing);
        playAndPause(QStringLiteral("covered.mp3"));
        passTime();
        QCOMPARE(heard().metadataReports(fileKey), 0);
        QCOMPARE(heard().metadataReports(sizeKey), 0);
        QVERIFY(!folder().exists());
    }

    void seekingWhilePausedTakesNoFrame()
    {
        setFrameOnPause(true);
        playAndPause(QStringLiteral("long.mp4"));
        QTRY_COMPARE(heard().metadataReports(fileKey), 1);
        renderer()->setPosition(5, R::SeekAbsolute);
        QTRY_COMPARE(heard().askPosition(), 5);
        renderer()->setPosition(7, R::SeekAbsolute);
        passTime();
        QCOMPARE(heard().metadataReports(fileKey), 1);
    }

    void whatIsStoppedReportsNothing()
    {
        setFrameOnPause(true);
        playAndPause(QStringLiteral("red.mp4"));
        renderer()->stop();
        TRY_STATE(Stopped);
        heard().clear();
        playAndPause(QStringLiteral("tone.mp3"));
        QCOMPARE(heard().metadataReports(fileKey), 0);
    }

    void keepsOnlyTheNewest()
    {
        QVERIFY(folder().mkpath(QStringLiteral(".")));
        for (int number = 10; number < 40; ++number)
            QVERIFY(
                makeFile(folder().filePath(QStringLiteral("pause-201601%1-000000-000-1-1.png").arg(number))));
        QVERIFY(makeFile(folder().filePath(QStringLiteral("mine.png"))));
        setFrameOnPause(true);
        playAndPause(QStringLiteral("red.mp4"));
        QTRY_COMPARE(heard().metadataReports(fileKey), 1);
        const QStringList left = folder().entryList({QStringLiteral("pause-*.png")}, QDir::Files, QDir::Name);
        QCOMPARE(left.count(), 20);
        QCOMPARE(left.constFirst(), QStringLiteral("pause-20160121-000000-000-1-1.png"));
        QCOMPARE(folder().filePath(left.constLast()), heard().metadata(fileKey).toString());
        QVERIFY(folder().exists(QStringLiteral("mine.png")));
    }

    void survivesAFolderThatCannotBeMade()
    {
        const QString parent = QFileInfo(folder().path()).path();
        QVERIFY(QDir().mkpath(parent));
        QVERIFY(makeFile(folder().path()));
        LogRecorder log;
        setFrameOnPause(true);
        playAndPause(QStringLiteral("red.mp4"));
        QTRY_VERIFY(!log.warnings().filter(QStringLiteral("cannot be saved")).isEmpty());
        QCOMPARE(heard().metadataReports(fileKey), 0);
        passTime();
        QCOMPARE(heard().errors(), QList<int>{});
        QVERIFY(QFile::remove(folder().path()));
    }

    void unloadsWhileTheFrameIsSaved()
    {
        setFrameOnPause(true);
        playAndPause(QStringLiteral("long.mp4"));
        registry().unloadPlugin(QStringLiteral("gst-renderer.so"));
        QVERIFY(registry().renderers().isEmpty());
    }
};

KELVO_TEST(GstPauseFrameTest)
#include "GstPauseFrameTest.moc"

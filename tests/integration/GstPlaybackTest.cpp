// SPDX-License-Identifier: MIT
#include "GstTestCase.h"
#include "KelvoEvidenceSource.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using R = KelvoRenderer;

/// One item: commands, positions, speeds, facts and properties.
class GstPlaybackTest : public GstTestCase
{
    Q_OBJECT
private:
    void startLong()
    {
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        TRY_STATE(Playing);
    }

private Q_SLOTS:
    void init() { GstTestCase::init(); }

    void namesItself()
    {
        QCOMPARE(renderer()->uuid(), QStringLiteral("kelvo-gst-renderer"));
        QCOMPARE(renderer()->name(), QStringLiteral("KelvoGstRenderer"));
    }

    void playsEveryKindToItsEnd_data()
    {
        QTest::addColumn<QString>("file");
        for (const char *file : {"tone.mp3", "tone.ogg", "tone.flac", "tone.m4a", "clip.mp4", "clip.webm",
                 "silent.mp4", "large-tag.mp3"})
            QTest::newRow(file) << QString::fromLatin1(file);
    }

    void playsEveryKindToItsEnd()
    {
        QFETCH(QString, file);
        renderer()->playUri(media(file));
        TRY_STATE(Playing);
        renderer()->setPosition(1, R::SeekAbsolute);
        TRY_STATE(Stopped);
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().events(),
            (QStringList{"Transitioning", "no playlist", "media -1", "Playing", "Stopped", "completed"}));
        QCOMPARE(heard().mediaUrls(), QList<QUrl>{media(file)});
    }

    void showsItsPipelineAsEvidence()
    {
        startLong();
        const QList<KelvoEvidenceSource::File> files = KelvoEvidenceSource::readAll();
        QCOMPARE(files.size(), 1);
        QCOMPARE(files.constFirst().name, QStringLiteral("pipeline.dot"));
        const QByteArray &graph = files.constFirst().contents;
        QVERIFY2(graph.startsWith("digraph pipeline"), graph.left(40).constData());
        QVERIFY(graph.contains("long.mp3"));
        registry().unloadPlugin(QStringLiteral("gst-renderer.so"));
        QTRY_VERIFY(!engineRuns());
        QVERIFY(KelvoEvidenceSource::readAll().isEmpty());
    }

    void advancesInRealTime()
    {
        QElapsedTimer time;
        renderer()->playUri(media(QStringLiteral("short.mp3")));
        TRY_STATE(Playing);
        time.start();
        QTRY_COMPARE(heard().completed(), 1);
        QVERIFY2(time.elapsed() > 850, qPrintable(QString::number(time.elapsed())));
    }

    void reportsNothingBeforeTheEventLoopRuns()
    {
        renderer()->playUri(media(QStringLiteral("tone.mp3")));
        QVERIFY(heard().events().isEmpty());
        QTRY_VERIFY(!heard().events().isEmpty());
    }

    void pausesAndResumes()
    {
        startLong();
        renderer()->setPosition(7, R::SeekAbsolute);
        renderer()->pause();
        TRY_STATE(Paused);
        const int position = heard().askPosition();
        QCOMPARE(position, 7);
        QTest::qWait(300); // nothing may happen in this time
        QCOMPARE(heard().askPosition(), position);
        renderer()->resume();
        TRY_STATE(Playing);
        QTRY_VERIFY(heard().askPosition() > position);
    }

    void playResumesWhatIsPaused()
    {
        startLong();
        renderer()->setPosition(5, R::SeekAbsolute);
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->play();
        TRY_STATE(Playing);
        QVERIFY(heard().askPosition() >= 5);
        QCOMPARE(heard().mediaIndexes().count(), 1);
    }

    void pausesWhileTransitioning()
    {
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        renderer()->pause();
        TRY_STATE(Paused);
        QVERIFY(!heard().states().contains(R::Playing));
        renderer()->resume();
        TRY_STATE(Playing);
    }

    void lastOfPauseAndResumeWins()
    {
        startLong();
        renderer()->pause();
        renderer()->resume();
        renderer()->pause();
        renderer()->resume();
        renderer()->setPosition(4, R::SeekAbsolute);
        QTRY_VERIFY(heard().askPosition() >= 5);
        QCOMPARE(heard().state(), R::Playing);
    }

    void stops()
    {
        startLong();
        renderer()->stop();
        TRY_STATE(Stopped);
        QCOMPARE(heard().askPosition(), 0);
        QCOMPARE(heard().completed(), 0);
        renderer()->play(); // the URI given last
        TRY_STATE(Playing);
        QCOMPARE(heard().mediaUrls().count(), 2);
    }

    void doesNothingWhileStopped()
    {
        renderer()->pause();
        renderer()->resume();
        renderer()->stop();
        renderer()->next();
        renderer()->previous();
        renderer()->setPosition(5, R::SeekAbsolute);
        QCOMPARE(heard().askPosition(), 0);
        QCOMPARE(heard().events(), QStringList());
    }

    void playWithoutAnything()
    {
        renderer()->play();
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::NothingToPlay});
        QCOMPARE(heard().state(), R::Stopped);
    }

    void seeks_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("sound") << QStringLiteral("long.mp3");
        QTest::newRow("video") << QStringLiteral("long.mp4");
    }

    void seeks()
    {
        QFETCH(QString, file);
        renderer()->playUri(media(file));
        TRY_STATE(Playing);
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->setPosition(5, R::SeekAbsolute);
        QCOMPARE(heard().askPosition(), 5);
        renderer()->setPosition(-2, R::SeekRelative);
        QCOMPARE(heard().askPosition(), 3);
        renderer()->setPosition(4, R::SeekRelative);
        QCOMPARE(heard().askPosition(), 7);
        QTRY_COMPARE(heard().askPosition(), 7);
        renderer()->setPosition(-100, R::SeekRelative);
        QCOMPARE(heard().askPosition(), 0);
        QCOMPARE(heard().errors(), QList<int>());
        QCOMPARE(heard().state(), R::Paused);
    }

    void relativeSeeksAddUp()
    {
        startLong();
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->setPosition(15, R::SeekAbsolute);
        for (int i = 0; i < 10; ++i)
            renderer()->setPosition(-1, R::SeekRelative);
        QCOMPARE(heard().askPosition(), 5);
        QTest::qWait(200); // every seek is done by then
        QCOMPARE(heard().askPosition(), 5);
    }

    void seeksWhileTransitioning()
    {
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        renderer()->setPosition(12, R::SeekAbsolute);
        TRY_STATE(Playing);
        QVERIFY(heard().askPosition() >= 12);
        QVERIFY(heard().askPosition() <= 14);
    }

    void seekToTheEndEndsTheItem()
    {
        startLong();
        renderer()->setPosition(1000, R::SeekAbsolute);
        QTRY_COMPARE(heard().completed(), 1);
        QCOMPARE(heard().errors(), QList<int>());
    }

    void refusesUnknownSeekModes()
    {
        startLong();
        renderer()->setPosition(1, 7);
        QTRY_COMPARE(heard().errors(), QList<int>{KelvoError::InvalidValue});
    }

    void playsFastForward()
    {
        startLong();
        QElapsedTimer time;
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, 4.0);
        QTRY_COMPARE(heard().property(R::PropertyPlaybackSpeed), QVariant(4.0));
        time.start();
        const int before = heard().askPosition();
        QTRY_VERIFY(heard().askPosition() >= before + 6);
        QVERIFY2(time.elapsed() < 3000, qPrintable(QString::number(time.elapsed())));
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, 1.0);
        QTRY_COMPARE(heard().property(R::PropertyPlaybackSpeed), QVariant(1.0));
        QCOMPARE(heard().state(), R::Playing);
        QVERIFY(!heard().states().mid(2).contains(R::Transitioning));
    }

    void playsBackwardsAndThenForwardsAgain()
    {
        renderer()->playUri(media(QStringLiteral("long.mp4")));
        TRY_STATE(Playing);
        renderer()->setPosition(3, R::SeekAbsolute);
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, -2.0);
        QTRY_COMPARE(heard().property(R::PropertyPlaybackSpeed), QVariant(-2.0));
        QTRY_VERIFY(heard().askPosition() < 2);
        // At the beginning it turns round by itself.
        QTRY_COMPARE(heard().property(R::PropertyPlaybackSpeed), QVariant(1.0));
        QTRY_COMPARE(heard().askPosition(), 1);
        QCOMPARE(heard().state(), R::Playing);
        QCOMPARE(heard().completed(), 0);
    }

    void keepsTheSpeedAfterASeek()
    {
        startLong();
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, 4.0);
        renderer()->setPosition(2, R::SeekAbsolute);
        QElapsedTimer time;
        time.start();
        QTRY_VERIFY(heard().askPosition() >= 8);
        QVERIFY2(time.elapsed() < 3000, qPrintable(QString::number(time.elapsed())));
    }

    void appliesTheSpeedSetWhileStopped()
    {
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, 4.0);
        QTRY_COMPARE(heard().property(R::PropertyPlaybackSpeed), QVariant(4.0));
        QElapsedTimer time;
        startLong();
        time.start();
        QTRY_VERIFY(heard().askPosition() >= 6);
        QVERIFY2(time.elapsed() < 3000, qPrintable(QString::number(time.elapsed())));
    }

    void pausesAtASecond_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<double>("speed");
        QTest::newRow("sound") << QStringLiteral("long.mp3") << 1.0;
        QTest::newRow("video") << QStringLiteral("long.mp4") << 1.0;
        QTest::newRow("fast") << QStringLiteral("long.mp3") << 4.0;
    }

    void pausesAtASecond()
    {
        QFETCH(QString, file);
        QFETCH(double, speed);
        renderer()->playUri(media(file));
        TRY_STATE(Playing);
        renderer()->pauseAt(6);
        renderer()->setKelvoProperty(R::PropertyPlaybackSpeed, speed);
        renderer()->setPosition(5, R::SeekAbsolute);
        TRY_STATE(Paused);
        QCOMPARE(heard().askPosition(), 6);
        renderer()->resume(); // it acts once
        TRY_STATE(Playing);
        QTRY_COMPARE(heard().askPosition(), 7);
    }

    void pauseAtSurvivesAPause()
    {
        startLong();
        renderer()->setPosition(5, R::SeekAbsolute);
        renderer()->pauseAt(6);
        renderer()->pause();
        TRY_STATE(Paused);
        renderer()->resume();
        TRY_STATE(Playing);
        TRY_STATE(Paused);
        QCOMPARE(heard().askPosition(), 6);
    }

    void pausesAtOnceWhenPastThePoint()
    {
        startLong();
        renderer()->setPosition(9, R::SeekAbsolute);
        QCOMPARE(heard().askPosition(), 9);
        renderer()->pauseAt(3);
        TRY_STATE(Paused);
        QCOMPARE(heard().askPosition(), 9);
    }

    void keepsPauseAtForTheNextPlaying()
    {
        renderer()->pauseAt(1);
        startLong();
        TRY_STATE(Paused);
        QCOMPARE(heard().askPosition(), 1);
    }

    void pausesAtTheVeryBeginning()
    {
        renderer()->pauseAt(0);
        renderer()->playUri(media(QStringLiteral("long.mp3")));
        TRY_STATE(Paused);
        QCOMPARE(heard().askPosition(), 0);
        QVERIFY(!heard().states().contains(R::Playing));
    }

    void newPauseAtReplacesTheOld()
    {
        startLong();
        renderer()->pauseAt(1);
        renderer()->pauseAt(2);
        TRY_STATE(Paused);
        QCOMPARE(heard().askPosition(), 2);
    }

    void stopDropsPauseAt()
    {
        renderer()->pauseAt(1);
        renderer()->stop();
        startLong();
        QTRY_COMPARE(heard().askPosition(), 2);
        QCOMPARE(heard().state(), R::Playing);
    }

    void answersItsStatus()
    {
        QCOMPARE(heard().askStatus().state, int(R::Stopped));
        startLong();
        const RendererRecorder::Status status = heard().askStatus();
        QCOMPARE(status.state, int(R::Playing));
        QCOMPARE(status.playlistId, QString());
        QCOMPARE(status.index, 0U);
        QCOMPARE(status.objectId, QString());
    }

    void tellsFacts()
    {
        renderer()->playUri(media(QStringLiteral("tone.mp3")));
        TRY_STATE(Playing);
        QTRY_COMPARE(heard().metadata(QStringLiteral("title")).toString(), QStringLiteral("tone"));
        QCOMPARE(heard().metadata(QStringLiteral("artist")).toString(), QStringLiteral("Artist_tone"));
        QCOMPARE(heard().metadata(QStringLiteral("album")).toString(), QStringLiteral("Album_tone"));
        QCOMPARE(heard().metadata(QStringLiteral("genre")).toString(), QStringLiteral("Rock"));
        QCOMPARE(heard().metadata(QStringLiteral("duration")), QVariant(3));
        QVERIFY(heard().metadata(QStringLiteral("codec")).toString().contains(QLatin1String("MP3")));
        QTRY_VERIFY(std::abs(heard().metadata(QStringLiteral("bitrate")).toInt() - 128000) < 10000);
        const QString cover = heard().metadata(QStringLiteral("cover")).toString();
        QVERIFY2(cover.startsWith(QLatin1String("image/png, 320x240, ")), qPrintable(cover));
        QVERIFY(cover.endsWith(QLatin1String(" bytes")));
        QCOMPARE(heard().metadata(QStringLiteral("audio-output")).toString(),
            QStringLiteral("none (silent clock)"));
    }

    void tellsFactsOnlyOnce()
    {
        renderer()->playUri(media(QStringLiteral("tone.mp3")));
        QTRY_COMPARE(heard().completed(), 1);
        for (const char *key : {"title", "artist", "album", "genre", "cover", "codec", "audio-output"})
            QCOMPARE(heard().metadataReports(QLatin1String(key)), 1);
    }

    void tellsFactsAgainForTheNextItem()
    {
        renderer()->playUri(media(QStringLiteral("tone.mp3")));
        QTRY_COMPARE(heard().metadata(QStringLiteral("title")).toString(), QStringLiteral("tone"));
        renderer()->playUri(media(QStringLiteral("tone.mp3")));
        QTRY_COMPARE(heard().metadataReports(QStringLiteral("title")), 2);
    }

    void tellsBothCodecs()
    {
        renderer()->playUri(media(QStringLiteral("clip.mp4")));
        TRY_STATE(Playing);
        QTRY_VERIFY(
            heard().metadata(QStringLiteral("video-codec")).toString().contains(QLatin1String("H.264")));
        QVERIFY(heard().metadata(QStringLiteral("audio-codec")).toString().contains(QLatin1String("AAC")));
        QTRY_VERIFY(heard().metadata(QStringLiteral("codec")).toString().contains(QLatin1String(" / ")));
        QCOMPARE(heard().metadata(QStringLiteral("duration")), QVariant(2));
    }

    void echoesProperties_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QVariant>("reported");
        QTest::newRow("volume") << QString(R::PropertyVolume) << QVariant(42) << QVariant(42U);
        QTest::newRow("loudest") << QString(R::PropertyVolume) << QVariant(99) << QVariant(99U);
        QTest::newRow("silent") << QString(R::PropertyVolume) << QVariant(0) << QVariant(0U);
        QTest::newRow("xid") << QString(R::PropertyXid) << QVariant(123U) << QVariant(123U);
        QTest::newRow("autopaint") << QString(R::PropertyAutopaint) << QVariant(false) << QVariant(false);
        QTest::newRow("rectangle") << QString(R::PropertyRenderRectangle)
                                   << QVariant(QStringLiteral("0,10,320,240"))
                                   << QVariant(QStringLiteral("0,10,320,240"));
        QTest::newRow("pause frame") << QString(R::PropertyCurrentFrameOnPause) << QVariant(true)
                                     << QVariant(true);
        QTest::newRow("speed") << QString(R::PropertyPlaybackSpeed) << QVariant(2.0) << QVariant(2.0);
        QTest::newRow("auto-advance")
            << QString(R::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE) << QVariant(false) << QVariant(false);
    }

    void echoesProperties()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, value);
        QFETCH(QVariant, reported);
        for (int round = 1; round <= 2; ++round) { // also a value that it has already
            renderer()->setKelvoProperty(name, value);
            QTRY_COMPARE(heard().propertyReports(name), round);
            QCOMPARE(heard().property(name), reported);
            QCOMPARE(heard().property(name).typeId(), reported.typeId());
        }
        QCOMPARE(heard().askProperty(name), reported);
    }

    void refusesProperties_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("error");
        const int invalid = KelvoError::InvalidValue;
        const int unsupported = KelvoError::NotSupported;
        QTest::newRow("too loud") << QString(R::PropertyVolume) << QVariant(100) << invalid;
        QTest::newRow("negative volume") << QString(R::PropertyVolume) << QVariant(-1) << invalid;
        QTest::newRow("volume text") << QString(R::PropertyVolume) << QVariant(QStringLiteral("loud"))
                                     << invalid;
        QTest::newRow("no speed") << QString(R::PropertyPlaybackSpeed) << QVariant(0.0) << invalid;
        QTest::newRow("speed that is no number")
            << QString(R::PropertyPlaybackSpeed) << QVariant(qQNaN()) << invalid;
        QTest::newRow("rectangle without numbers")
            << QString(R::PropertyRenderRectangle) << QVariant(QStringLiteral("a,b,c,d")) << invalid;
        QTest::newRow("no flag") << QString(R::PropertyAutopaint) << QVariant(QStringLiteral("maybe"))
                                 << invalid;
        QTest::newRow("no value") << QString(R::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE) << QVariant()
                                  << invalid;
        QTest::newRow("unknown") << QStringLiteral("no-such-property") << QVariant(1) << unsupported;
        QTest::newRow("reported only") << QString(R::PropertyColorKey) << QVariant(1U) << unsupported;
    }

    void refusesProperties()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, value);
        QFETCH(int, error);
        renderer()->setKelvoProperty(name, value);
        QTRY_COMPARE(heard().errors(), QList<int>{error});
        QCOMPARE(heard().propertyReports(name), 0);
    }

    void answersForProperties()
    {
        QCOMPARE(heard().askProperty(R::PropertyColorKey), QVariant(0U));
        QCOMPARE(heard().askProperty(R::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE), QVariant(false));
        QCOMPARE(heard().askProperty(R::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE), QVariant(true));
        QCOMPARE(heard().askProperty(QStringLiteral("no-such-property")), QVariant());
    }

    /// Whatever the pipeline does, the commands themselves return at once.
    void commandsDoNotBlock()
    {
        QList<qint64> times;
        QElapsedTimer time;
        const auto measure = [&](auto command) {
            time.start();
            command();
            times.append(time.nsecsElapsed());
        };
        for (int round = 0; round < 10; ++round) {
            measure([this] { renderer()->playUri(media(QStringLiteral("long.mp4"))); });
            TRY_STATE(Playing);
            measure([this] { renderer()->setPosition(5, R::SeekAbsolute); });
            measure([this] { renderer()->pause(); });
            measure([this] { renderer()->setKelvoProperty(R::PropertyVolume, 50); });
            TRY_STATE(Paused);
            measure([this] { renderer()->stop(); });
        }
        std::sort(times.begin(), times.end());
        QVERIFY2(times.at(times.size() * 9 / 10) < 5'000'000, qPrintable(QString::number(times.constLast())));
    }

    void startsManyTimes()
    {
        const QStringList files{"tone.mp3", "tone.ogg", "tone.flac", "tone.m4a", "clip.mp4", "clip.webm"};
        for (int i = 0; i < 60; ++i) {
            renderer()->playUri(media(files.at(i % files.size())));
            if (i % 3 == 0)
                renderer()->stop();
            else
                TRY_STATE(Playing);
        }
        renderer()->stop();
        TRY_STATE(Stopped);
        QCOMPARE(heard().errors(), QList<int>());
    }
};

KELVO_TEST(GstPlaybackTest)
#include "GstPlaybackTest.moc"

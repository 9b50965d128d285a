// SPDX-License-Identifier: MIT
#include "TestGroup.h"
#include "TrackerIndexCase.h"
#include "index/StoreWriter.h"
#include "store/StoreSession.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <functional>

/// What an indexer leaves that was killed between two of its steps, and what the next one makes of it.
class TrackerKilledTest : public TrackerIndexCase
{
    Q_OBJECT

    /// Steps of an indexer that goes no further; the store is closed before and after.
    bool partly(const std::function<bool(StoreWriter &, StoreError *)> &steps)
    {
        if (!openStore())
            return false;
        StoreError error;
        StoreSession::Entry entry = store().session()->enter([] {}, &error);
        bool done = false;
        if (entry) {
            StoreWriter writer(entry.connection());
            done = steps(writer, &error) && !error;
        }
        entry.leave();
        closeStore();
        return done;
    }

    static KnownFile onlyKnown(StoreWriter &writer, StoreError *error)
    {
        const auto files = writer.readKnown(error);
        return files.size() == 1 ? files.front().second : KnownFile();
    }

    bool play(const QString &path, int times)
    {
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        for (int i = 0; i < times; ++i)
            store().countPlay(QUrl::fromLocalFile(path));
        return QTest::qWaitFor([&] { return counted.size() == times; }, Patience);
    }

    int onlyCount()
    {
        const auto songs = result(Type::AllSongs);
        return songs && songs->rowCount() == 1 ? value(*songs, 0, "usageCounter").toInt() : -1;
    }

private Q_SLOTS:
    void aMovedFileKeepsItsMarks()
    {
        // Without tags it is called by its place, which has to be noticed as well.
        const QString path = addFile("before.mp3", "short.mp3");
        QVERIFY(index());
        QVERIFY(play(path, 2));
        QSignalSpy marked(&store(), &KelvoTrackerStore::marked);
        store().setFavorite(QUrl::fromLocalFile(path), true);
        QVERIFY(marked.wait());
        closeStore();
        const QString after = place("after.mp3");
        QVERIFY(QFile::rename(path, after));
        QVERIFY(partly([&](StoreWriter &writer, StoreError *error) {
            return writer.move({{onlyKnown(writer, error), local(after)}}, error);
        }));
        QVERIFY(index());
        const auto songs = result(Type::AllSongs);
        QCOMPARE(texts(*songs, "songTitle"), QStringList("after.mp3"));
        QCOMPARE(value(*songs, 0, "usageCounter").toInt(), 2);
        QCOMPARE(value(*songs, 0, "favorited").toBool(), true);
    }

    void filesChangePlacesAllOrNone()
    {
        addSong("a.mp3", {"A"});
        addSong("b.mp3", {"B"});
        QVERIFY(index());
        closeStore();
        QVERIFY(partly([&](StoreWriter &writer, StoreError *error) {
            const auto files = writer.readKnown(error);
            return files.size() == 2
                && writer.move({{files[0].second, files[1].first}, {files[1].second, files[0].first}}, error);
        }));
        QVERIFY(index());
        QCOMPARE(titles(Type::AllSongs), QStringList({"A", "B"}));
    }

    void aSongThatWasTakenOutKeepsItsCount()
    {
        const QString path = addSong("a.mp3", {"A"});
        QVERIFY(index());
        QVERIFY(play(path, 2));
        closeStore();
        QVERIFY(partly([&](StoreWriter &writer, StoreError *error) {
            return writer.remove({onlyKnown(writer, error)}, error);
        }));
        QVERIFY(index());
        QCOMPARE(onlyCount(), 2);
        // Its playings are not given twice.
        addSong("b.mp3", {"B"});
        QVERIFY(waitForFiles(2));
        QCOMPARE(value(*result(Type::MostPlayedSongs), 0, "usageCounter").toInt(), 2);
    }

    void playingsBeforeTheOthersAreGivenBackCount()
    {
        const QString path = addSong("a.mp3", {"A"});
        QVERIFY(index());
        QVERIFY(play(path, 2));
        closeStore();
        QVERIFY(partly([&](StoreWriter &writer, StoreError *error) {
            const KnownFile file = onlyKnown(writer, error);
            MediaItem item = song(0);
            item.number = file.number + 1;
            item.path = local(path);
            item.uri = QUrl::fromLocalFile(path).toEncoded();
            item.stamp = file.stamp;
            std::vector<bool> written;
            return writer.remove({file}, error) && writer.write({item}, &written, error);
        }));
        QVERIFY(openStore());
        QVERIFY(play(path, 1));
        closeStore();
        QVERIFY(index());
        QCOMPARE(onlyCount(), 3);
    }

    void whatWasNotTidiedUpIsTidiedUp()
    {
        addSong("a.mp3", {"A", "Artist", "Album"});
        QVERIFY(index());
        closeStore();
        // Another song came and went; nothing differs from the folder any more.
        QVERIFY(partly([&](StoreWriter &writer, StoreError *error) {
            std::vector<bool> written;
            const MediaItem item = song(5);
            return writer.write({item}, &written, error)
                && writer.remove({{{}, item.stamp, item.number, item.kind}}, error) && writer.isUntidy(error);
        }));
        QVERIFY(index());
        StoreError error;
        const StoreSession::Entry entry = store().session()->enter([] {}, &error);
        QVERIFY(entry);
        // And the one for songs without an album.
        QCOMPARE(entry.connection().selectOne(
                     "SELECT (COUNT(?x) AS ?n) { GRAPH <urn:kelvo:music> { ?x a nmm:MusicAlbum } }", &error),
            QByteArray("2"));
        QVERIFY(!StoreWriter(entry.connection()).isUntidy(&error));
    }
};

KELVO_TEST(TrackerKilledTest)
#include "TrackerKilledTest.moc"

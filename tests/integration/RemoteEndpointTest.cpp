// SPDX-License-Identifier: MIT
#include "TestGroup.h"
#include "TrackerTestCase.h"
#include "index/StoreWriter.h"
#include "remote/RemoteIds.h"
#include "store/StoreSession.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace {
constexpr int songs = 30;

MediaItem song(int number)
{
    MediaItem item;
    item.kind = MediaKind::Song;
    item.number = quint64(number);
    item.uri = "http://media.example/" + QByteArray::number(number) + ".mp3";
    item.title = QStringLiteral("Song %1 \"of\", \u00e4\n<&>").arg(number, 2, 10, QLatin1Char('0'));
    item.seconds = number % 5 ? 100 + number : 0;
    item.tags.artists = QStringList{QStringLiteral("Artist %1").arg(number % 4), QStringLiteral("Choir")};
    item.tags.album = number % 3 ? QStringLiteral("Album %1").arg(number % 3) : QString();
    item.tags.albumArtist = QStringLiteral("Choir");
    item.tags.genre = number % 2 ? QStringLiteral("Folk") : QString();
    item.tags.year = number % 7 ? 1990 + number : 0;
    item.tags.track = number;
    item.isDownloaded = number == 9;
    return item;
}

MediaItem playlist()
{
    MediaItem item;
    item.kind = MediaKind::Playlist;
    item.number = 1000;
    item.uri = "http://media.example/list.m3u";
    item.title = QStringLiteral("Mixed");
    item.entries = {{song(2).uri, QStringLiteral("two")},
        {"http://elsewhere.example/x.mp3", QStringLiteral("Elsewhere")},
        {song(1).uri, QStringLiteral("one")}};
    return item;
}
} // namespace

/// A store that is served by the endpoint of its own library answers as it does here.
class RemoteEndpointTest : public TrackerTestCase
{
    Q_OBJECT

    // What a result shows, without the numbers of resources.
    static QStringList shown(const KelvoTrackerModel *model)
    {
        QStringList rows;
        for (int row = 0; model && row < model->rowCount(); ++row) {
            QStringList values;
            for (int column = 0; column < model->columnCount(); ++column) {
                if (!model->headerData(column, Qt::Horizontal).toString().endsWith("Id"))
                    values.append(model->index(row, column).data().toString());
            }
            rows.append(values.join('|'));
        }
        return rows;
    }

    // Of all queries, and of those of the first row of each that something belongs to.
    QStringList all()
    {
        const auto part = [this](Type type, int id = 0) {
            return QStringList{QStringLiteral("== %1").arg(int(type))} + shown(result(type, id).get());
        };
        const auto firstId = [this](Type type) {
            const auto model = result(type);
            return model && model->rowCount() > 0 ? model->index(0, 0).data().toInt() : -1;
        };
        QStringList rows;
        for (const Type type : {Type::AllSongs, Type::RecentlyAddedSongs, Type::RecentlyPlayedSongs,
                 Type::MostPlayedSongs, Type::FavoriteSongs, Type::NeverPlayedSongs, Type::DownloadedSongs,
                 Type::AllAlbums, Type::AllArtists, Type::AllPlaylists})
            rows += part(type);
        rows += part(Type::AlbumsOfArtist, firstId(Type::AllArtists));
        rows += part(Type::SongsOfAlbum, firstId(Type::AllAlbums));
        rows += part(Type::SongsOfPlaylist, firstId(Type::AllPlaylists));
        rows += part(Type::RelatedSongs, firstId(Type::AllSongs));
        return rows;
    }

    bool fillOwn()
    {
        StoreError error;
        {
            const StoreSession::Entry entry = store().session()->enter([] {}, &error);
            StoreWriter writer(entry.connection());
            std::vector<MediaItem> items{playlist()};
            for (int number = 1; number <= songs; ++number)
                items.push_back(song(number));
            std::vector<bool> written;
            if (!writer.write(items, &written, &error) || !writer.tidyUp(&error))
                return false;
        }
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        QSignalSpy marked(&store(), &KelvoTrackerStore::marked);
        for (const int number : {3, 5, 3})
            store().countPlay(QUrl(QString::fromLatin1(song(number).uri)));
        store().setFavorite(QUrl(QString::fromLatin1(song(7).uri)), true);
        return QTest::qWaitFor([&] { return counted.size() == 3 && marked.size() == 1; }, Patience);
    }

    // The port that the store in the folder is served at; 0: none.
    quint16 serve(const QString &storeFolder)
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        const quint16 port = probe.serverPort();
        probe.close();
        m_endpoint.setProcessChannelMode(QProcess::MergedChannels);
        m_endpoint.start("tracker3",
            {"endpoint", "-d", storeFolder, "-o", "nepomuk", "--http-port", QString::number(port),
                "--loopback"});
        const bool isThere = QTest::qWaitFor(
            [port] {
                QTcpSocket socket;
                socket.connectToHost(QHostAddress::LocalHost, port);
                return socket.waitForConnected(100);
            },
            Patience);
        if (!isThere)
            qWarning().noquote() << m_endpoint.readAll();
        return isThere ? port : 0;
    }

    QProcess m_endpoint;

private Q_SLOTS:
    void cleanup()
    {
        m_endpoint.kill();
        m_endpoint.waitForFinished();
        TrackerTestCase::cleanup();
    }

    void answersAsTheStoreDoes()
    {
        QVERIFY(openStore());
        QVERIFY(fillOwn());
        const QStringList here = all();
        closeStore();
        const QString cellar = folder() + "/cellar";
        QVERIFY(QDir().rename(store().folder(), cellar));
        QVERIFY(openStore());
        const quint16 port = serve(cellar);
        QVERIFY(port);
        qputenv("KELVO_TRACKER", "http://127.0.0.1:" + QByteArray::number(port) + "/sparql");
        const QStringList there = all();
        QCOMPARE(there.join('\n'), here.join('\n'));
        QCOMPARE(there.filter("Song 01").size(), here.filter("Song 01").size());
        QVERIFY(there.filter("Song 01").size() > 3);
        const auto artists = result(Type::AllArtists);
        QVERIFY(RemoteIds::isRemote(artists->index(0, 0).data().toInt()));
    }

    void anotherStoreIsNoLibrary()
    {
        QVERIFY(openStore());
        const QString other = folder() + "/other";
        QVERIFY(QDir().mkpath(other));
        StoreError error;
        QVERIFY(StoreConnection::open(other, false, &error));
        const quint16 port = serve(other);
        QVERIFY(port);
        qputenv("KELVO_TRACKER", "http://127.0.0.1:" + QByteArray::number(port) + "/sparql");
        KelvoTrackerModelFactory factory("No album", "No artist", 50);
        const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(Type::AllSongs, 0, 0));
        QSignalSpy failed(model.get(), &KelvoTrackerModel::error);
        QVERIFY(failed.wait(Patience));
        QVERIFY2(failed.constFirst().constFirst().toString().endsWith("it holds no Kelvo library"),
            qPrintable(failed.constFirst().constFirst().toString()));
        QCOMPARE(model->rowCount(), 0);
    }
};

KELVO_TEST(RemoteEndpointTest)
#include "RemoteEndpointTest.moc"
